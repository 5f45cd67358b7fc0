#include "standin/stand_in.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <future>
#include <nlohmann/json.hpp>

namespace kibo::standin {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

class StandInTest : public testing::Test {
 protected:
    StandIn standIn_;
    httplib::Client client_{"127.0.0.1", standIn_.port()};

    json get(const std::string& path) {
        const auto answer = client_.Get(path);
        return answer ? json::parse(answer->body) : json("no answer");
    }
    int post(const std::string& path, const std::string& body) {
        const auto answer = client_.Post(path, body, "application/json");
        if (!answer) return 0;
        error_ = answer->status == 200 ? "" : json::parse(answer->body).value("error", "");
        return answer->status;
    }

    std::string error_;
};

TEST_F(StandInTest, ControlChangesSingleKeysAndRefusesTheRestByName) {
    json expected = toJson(Behaviour());
    expected["loggedIn"] = false;
    expected["chatOpenDelayMs"] = {{"min", 5}, {"max", 9}};
    expected["unknownNumbers"] = {"6281"};
    expected["messageIds"] = "lid";
    expected["swallowEnter"] = 2;
    EXPECT_EQ(post("/control/behaviour", expected.dump()), 200);
    EXPECT_EQ(toJson(standIn_.behaviour()), expected);
    EXPECT_EQ(post("/control/behaviour", R"({"chatOpenDelayMs": 5})"), 200);
    EXPECT_EQ(standIn_.behaviour().chatOpenDelayMs.max, 5) << "a number alone is both ends";

    expected = toJson(standIn_.behaviour());
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"behaviour", R"({"banner": "must not stay", "noSuchKey": 1})", "noSuchKey"},
        {"behaviour", R"({"banner": "must not stay", "loggedIn": "yes"})", "loggedIn"},
        {"behaviour", R"({"banner": "must not stay", "sendDelayMs": -1})", "sendDelayMs"},
        {"behaviour", R"({"chatOpenDelayMs": {"min": 9, "max": 5}})", "chatOpenDelayMs"},
        {"behaviour", "{broken", "JSON"},
        {"action/dance", "", "dance"},
        {"contacts", R"([{"number": "628", "name": "A"}, {"number": "62x", "name": "B"}])", ""},
    };
    for (const auto& [path, body, named] : cases) {
        EXPECT_EQ(post(std::string("/control/") + path, body), 400) << body;
        EXPECT_NE(error_.find(named), std::string::npos) << error_;
    }
    EXPECT_EQ(toJson(standIn_.behaviour()), expected);
    EXPECT_TRUE(get("/page/state")["contacts"].empty()) << "a list with a fault in it adds nobody";
    EXPECT_EQ(client_.Get("/page/file/../main.cpp")->status, 404);
}

TEST_F(StandInTest, KeepsMessagesUntilTheReset) {
    const std::string text = "a \"quoted\" \xF0\x9F\x98\x80";
    EXPECT_EQ(post("/page/message", json{{"number", "6281"}, {"kind", "text"}, {"text", text}}.dump()), 200);
    EXPECT_NE(client_.Get("/control/received.txt")->body.find(text), std::string::npos);
    EXPECT_EQ(get("/page/state")["messages"].size(), 1u) << "a reloaded page has them again";
    EXPECT_EQ(post("/control/reset", ""), 200);
    EXPECT_TRUE(standIn_.received().empty() && get("/page/state")["messages"].empty());
}

TEST(StandInLifeTest, EndsWhileAPageWaitsForNews) {
    auto standIn = std::make_unique<StandIn>();
    EXPECT_FALSE(StandIn::start(standIn->port())) << "the port is taken";
    httplib::Client client("127.0.0.1", standIn->port());
    client.set_read_timeout(30);
    const auto state = client.Get("/page/state");
    ASSERT_TRUE(state);
    const std::string path = "/page/updates/" + json::parse(state->body)["revision"].dump();
    const auto waiting = std::async(std::launch::async, [&] { client.Get(path); });
    EXPECT_EQ(waiting.wait_for(200ms), std::future_status::timeout) << "nothing is new";
    const auto began = std::chrono::steady_clock::now();
    standIn.reset();
    waiting.wait();
    EXPECT_LT(std::chrono::steady_clock::now() - began, 10s) << "the page's question stays open for 20 s by itself";
}

}  // namespace
}  // namespace kibo::standin
