#include "standin/stand_in.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "standin/received_table.h"

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
    int postMessage(const std::string& number, const std::string& text) {
        return post("/page/message", json{{"number", number}, {"kind", "text"}, {"text", text}}.dump());
    }

    std::string error_;
};

TEST(BehaviourTest, UpdatesSingleKeysAndKeepsTheRest) {
    const json update = json::parse(R"({"loggedIn": false, "chatOpenDelayMs": {"min": 5, "max": 9},
        "unknownNumbers": ["6281"], "messageIds": "lid", "swallowEnter": 2})");
    json expected = toJson(Behaviour());
    expected.update(update);
    Behaviour behaviour;
    ASSERT_TRUE(applyUpdate(behaviour, update));
    EXPECT_EQ(toJson(behaviour), expected);
    EXPECT_EQ(behaviour.chatOpenDelayMs.max, 9);
    ASSERT_TRUE(applyUpdate(behaviour, json{{"chatOpenDelayMs", 30}})) << "a number alone is both ends";
    EXPECT_EQ(behaviour.chatOpenDelayMs.min + behaviour.chatOpenDelayMs.max, 60);
}

TEST(BehaviourTest, RefusesWhatDoesNotFitNamesItAndChangesNothing) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({"noSuchKey": 1})", "noSuchKey"},
        {R"({"loggedIn": "yes"})", "loggedIn"},
        {R"({"sendDelayMs": -1})", "sendDelayMs"},
        {R"({"messageIds": "fax"})", "messageIds"},
        {R"({"unknownNumbers": [628]})", "unknownNumbers"},
        {R"({"chatOpenDelayMs": {"min": 9, "max": 5}})", "chatOpenDelayMs"},
        {R"([1])", "object"},
        {"{broken", "object"},
    };
    for (const auto& [update, named] : cases) {
        Behaviour behaviour;
        json parsed = json::parse(update, nullptr, false);
        if (parsed.is_object()) parsed["banner"] = "must not stay";
        const auto applied = applyUpdate(behaviour, parsed);
        ASSERT_FALSE(applied) << update;
        EXPECT_EQ(applied.failure().kind, FailureKind::InvalidArgument);
        EXPECT_NE(applied.failure().text.find(named), std::string::npos) << applied.failure().text;
        EXPECT_EQ(behaviour.banner, "") << update;
    }
}

TEST(ReceivedTableTest, AlignsByCharactersAndKeepsEachMessageOnItsLine) {
    ReceivedMessage text{1, "6281200000001", "Ayu é", "one\ntwo\t\r\nthree", "text", "", "", 0, false, 0};
    ReceivedMessage file{10, "628", "B", "", "document", "a\nb", "bill.pdf", 2048, false, 0};
    const std::string time = localTime(0).substr(11);
    EXPECT_EQ(receivedTable({text, file}),
              "#   time          number         name   message\n"
              "1   " +
                  time +
                  "  6281200000001  Ayu é  one⏎two ⏎three\n"
                  "10  " +
                  time + "  628            B      [document bill.pdf, 2048 bytes] a⏎b\n");
}

TEST_F(StandInTest, ControlChangesBehaviourAndRefusesWithTheReason) {
    EXPECT_EQ(post("/control/behaviour", R"({"banner": "Phone not connected"})"), 200);
    EXPECT_EQ(standIn_.behaviour().banner, "Phone not connected");
    EXPECT_EQ(post("/control/behaviour", R"({"baner": ""})"), 400);
    EXPECT_NE(error_.find("baner"), std::string::npos);
    EXPECT_EQ(post("/control/behaviour", "{"), 400);
    EXPECT_EQ(post("/control/action/dance", ""), 400);
    EXPECT_NE(error_.find("dance"), std::string::npos);
    EXPECT_EQ(post("/control/action/incoming", R"({"number": "628"})"), 400);
    EXPECT_EQ(client_.Get("/page/file/../main.cpp")->status, 404);
    EXPECT_EQ(post("/control/contacts", R"([{"number": "628", "name": "A"}, {"number": "62x", "name": "B"}])"), 400);
    EXPECT_TRUE(get("/page/state")["contacts"].empty()) << "a list with a fault in it adds nobody";
}

TEST_F(StandInTest, KeepsMessagesInOrderOfArrivalWithTheContactsName) {
    EXPECT_EQ(post("/control/contacts", R"({"number": "6281", "name": "Ayu"})"), 200);
    EXPECT_EQ(postMessage("6281", "first"), 200);
    EXPECT_EQ(postMessage("6282", "second \"quoted\" \xF0\x9F\x98\x80"), 200);
    const auto received = standIn_.received();
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].name, "Ayu");
    EXPECT_EQ(received[0].seq, 1);
    EXPECT_EQ(received[1].text, "second \"quoted\" \xF0\x9F\x98\x80");
    EXPECT_EQ(get("/control/received")[1]["text"], received[1].text);
    EXPECT_NE(client_.Get("/control/received.txt")->body.find("second"), std::string::npos);
    EXPECT_EQ(get("/page/state")["messages"].size(), 2u) << "a reloaded page has them again";

    EXPECT_EQ(post("/control/reset", ""), 200);
    EXPECT_TRUE(standIn_.received().empty());
    EXPECT_TRUE(get("/page/state")["messages"].empty());
}

TEST_F(StandInTest, TellsAWaitingPageOfEachChangeOnce) {
    const auto revision = get("/page/state")["revision"].get<int64_t>();
    json news;
    std::thread page([&] {
        httplib::Client other("127.0.0.1", standIn_.port());
        news = json::parse(other.Get("/page/updates/" + std::to_string(revision))->body);
    });
    ASSERT_TRUE(standIn_.act("openChat", R"({"number": "6281"})"));
    page.join();
    ASSERT_EQ(news["actions"].size(), 1u);
    EXPECT_EQ(news["actions"][0]["number"], "6281");
    EXPECT_FALSE(news.contains("behaviour"));

    standIn_.setBehaviour({});
    const json later = get("/page/updates/" + news["revision"].dump());
    EXPECT_TRUE(later["actions"].empty());
    EXPECT_TRUE(later.contains("behaviour"));
    EXPECT_EQ(get("/page/updates/999999")["actions"][0]["name"], "reload") << "a page of an earlier server";
}

TEST(StandInLifeTest, EndsWhileAPageWaitsForNews) {
    auto standIn = std::make_unique<StandIn>();
    httplib::Client client("127.0.0.1", standIn->port());
    client.set_read_timeout(30);
    const auto revision = json::parse(client.Get("/page/state")->body)["revision"];
    std::thread page([&] { (void)client.Get("/page/updates/" + revision.dump()); });
    const auto began = std::chrono::steady_clock::now();
    EXPECT_FALSE(StandIn::start(standIn->port())) << "the port is taken";
    standIn.reset();
    page.join();
    EXPECT_LT(std::chrono::steady_clock::now() - began, 10s) << "the page's question stays open for 20 s by itself";
}

}  // namespace
}  // namespace kibo::standin
