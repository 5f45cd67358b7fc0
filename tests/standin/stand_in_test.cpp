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
    json update = json::parse(R"({"loggedIn": false, "chatOpenDelayMs": {"min": 5, "max": 9},
        "unknownNumbers": ["6281"], "messageIds": "lid", "swallowEnter": 2})");
    json expected = toJson(Behaviour());
    expected.update(update);
    EXPECT_EQ(post("/control/behaviour", update.dump()), 200);
    EXPECT_EQ(toJson(standIn_.behaviour()), expected);
    EXPECT_EQ(standIn_.behaviour().chatOpenDelayMs.max, 9);
    EXPECT_EQ(post("/control/behaviour", R"({"chatOpenDelayMs": 5})"), 200);
    EXPECT_EQ(standIn_.behaviour().chatOpenDelayMs.max, 5) << "a number alone is both ends";

    expected = toJson(standIn_.behaviour());
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"behaviour", R"({"banner": "must not stay", "noSuchKey": 1})", "noSuchKey"},
        {"behaviour", R"({"banner": "must not stay", "loggedIn": "yes"})", "loggedIn"},
        {"behaviour", R"({"banner": "must not stay", "sendDelayMs": -1})", "sendDelayMs"},
        {"behaviour", R"({"banner": "must not stay", "messageIds": "fax"})", "messageIds"},
        {"behaviour", R"({"banner": "must not stay", "unknownNumbers": [628]})", "unknownNumbers"},
        {"behaviour", R"({"chatOpenDelayMs": {"min": 9, "max": 5}})", "chatOpenDelayMs"},
        {"behaviour", "[1]", "object"},
        {"behaviour", "{broken", "JSON"},
        {"action/dance", "", "dance"},
        {"action/incoming", R"({"number": "628"})", ""},
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

TEST_F(StandInTest, KeepsMessagesWithTheContactsNameUntilTheReset) {
    EXPECT_EQ(post("/control/contacts", R"({"number": "6281", "name": "Ayu"})"), 200);
    const std::string text = "a \"quoted\" \xF0\x9F\x98\x80";
    EXPECT_EQ(post("/page/message", json{{"number", "6281"}, {"kind", "text"}, {"text", text}}.dump()), 200);
    const json received = get("/control/received");
    EXPECT_EQ(received[0]["name"], "Ayu");
    EXPECT_EQ(received[0]["text"], text);
    EXPECT_NE(client_.Get("/control/received.txt")->body.find(text), std::string::npos);
    EXPECT_EQ(get("/page/state")["messages"].size(), 1u) << "a reloaded page has them again";
    EXPECT_EQ(post("/control/reset", ""), 200);
    EXPECT_TRUE(standIn_.received().empty());
    EXPECT_TRUE(get("/page/state")["messages"].empty());
}

TEST(StandInLifeTest, TellsAWaitingPageOfEachChangeOnceAndEndsWhileItWaits) {
    auto standIn = std::make_unique<StandIn>();
    const auto get = [port = standIn->port()](const std::string& path) {
        httplib::Client client("127.0.0.1", port);
        client.set_read_timeout(30);
        const auto answer = client.Get(path);
        return answer ? json::parse(answer->body) : json();
    };
    const auto awaitNews = [&](const json& revision) {
        return std::async(std::launch::async, [&, path = "/page/updates/" + revision.dump()] { return get(path); });
    };
    auto waiting = awaitNews(get("/page/state")["revision"]);
    ASSERT_TRUE(standIn->act("openChat", R"({"number": "6281"})"));
    json news = waiting.get();
    ASSERT_EQ(news["actions"].size(), 1u);
    EXPECT_EQ(news["actions"][0]["number"], "6281");
    EXPECT_FALSE(news.contains("behaviour"));
    standIn->setBehaviour({});
    news = get("/page/updates/" + news["revision"].dump());
    EXPECT_TRUE(news["actions"].empty());
    EXPECT_TRUE(news.contains("behaviour"));
    EXPECT_EQ(get("/page/updates/999999")["actions"][0]["name"], "reload") << "a page of an earlier server";

    EXPECT_FALSE(StandIn::start(standIn->port())) << "the port is taken";
    waiting = awaitNews(news["revision"]);
    const auto began = std::chrono::steady_clock::now();
    standIn.reset();
    waiting.wait();
    EXPECT_LT(std::chrono::steady_clock::now() - began, 10s) << "the page's question stays open for 20 s by itself";
}

}  // namespace
}  // namespace kibo::standin
