#include "browser/webdriver/client.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "browser/webdriver/curl_transport.h"
#include "browser/webdriver/error.h"
#include "raw_server.h"

namespace kibo::webdriver {
namespace {

using test::RawServer;
using Reply = RawServer::Reply;
using Then = RawServer::Reply::Then;

const std::string kSession = RawServer::answer(R"({"value":{"sessionId":"s1","capabilities":{"k":7}}})");
const std::string kOk = RawServer::answer(R"({"value":null})");

std::unique_ptr<CurlTransport> transportTo(const RawServer& server, const char* basePath = "") {
    return std::make_unique<CurlTransport>(QByteArray::fromStdString(server.address() + basePath));
}

template <class T>
Failure failureOf(const Result<T>& answer) {
    EXPECT_FALSE(answer) << "no failure";
    return answer ? Failure{} : answer.failure();
}

TEST(CurlTransport, KeepsOneConnectionAndItsBasePath) {
    RawServer server([](int) { return Reply{kOk}; });
    const auto transport = transportTo(server, "/wd/hub/");
    for (const Method method : {Method::Post, Method::Get, Method::Delete, Method::Post}) {
        const auto answer = transport->send(method, "/a", R"({"k":1})", 2000);
        ASSERT_TRUE(answer) << answer.failure().text;
        EXPECT_EQ(answer.value().status, 200);
        EXPECT_EQ(answer.value().body, R"({"value":null})");
    }
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(server.connections(), 1u);
    EXPECT_EQ(requests[0].find("POST /wd/hub/a HTTP/1.1\r\n"), 0u);
    EXPECT_TRUE(requests[0].ends_with("\r\n\r\n{\"k\":1}"));
    EXPECT_EQ(requests[2].find("DELETE /wd/hub/a "), 0u);
    // The verb of one command doesn't stick to the next.
    EXPECT_EQ(requests[3].find("POST /wd/hub/a "), 0u);
    EXPECT_TRUE(requests[1].ends_with("\r\n\r\n"));
}

TEST(CurlTransport, RepeatsWhatHasNoEffectWhenItsConnectionBreaksAndNothingElse) {
    for (const Method method : {Method::Post, Method::Delete, Method::Get}) {
        // The first answer keeps the connection; the second request is read, perhaps carried out, and never answered.
        RawServer server([](int number) { return number == 1 ? Reply{"", Then::Close} : Reply{kOk}; });
        const auto transport = transportTo(server);
        ASSERT_TRUE(transport->send(method, "/1", "{}", 2000));
        const auto broken = transport->send(method, "/2", "{}", 2000);
        EXPECT_EQ(broken.ok(), method == Method::Get);
        EXPECT_EQ(server.requests().size(), method == Method::Get ? 3u : 2u);
        if (broken) continue;
        EXPECT_EQ(broken.failure().kind, FailureKind::Transport);
        EXPECT_FALSE(isTimeout(broken.failure()));
        EXPECT_TRUE(transport->send(method, "/3", "{}", 2000)) << "the next command finds a new connection";
    }
    RawServer idle([](int) { return Reply{kOk, Then::Close}; });
    const auto transport = transportTo(idle);
    for (int i = 0; i < 3; ++i) {
        // Until the server's end of the connection is seen to be closed.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_TRUE(transport->send(Method::Post, "/a", "{}", 2000));
    }
    EXPECT_EQ(idle.requests().size(), 3u);
}

TEST(CurlTransport, FailsOnSilenceInTimeOnBrokenAnswersAndWhereNobodyListens) {
    RawServer silent([](int number) { return number == 0 ? Reply{} : Reply{kOk}; });
    const auto transport = transportTo(silent);
    EXPECT_TRUE(isTimeout(failureOf(transport->send(Method::Post, "/a", "{}", 150))));
    EXPECT_TRUE(transport->send(Method::Post, "/b", "{}", 2000)) << "a late answer isn't taken for the next one";

    const auto nowhere = transportTo(RawServer([](int) { return Reply{}; }));
    const Failure refused = failureOf(nowhere->send(Method::Get, "/a", {}, 2000));
    EXPECT_EQ(refused.kind, FailureKind::Transport);
    EXPECT_FALSE(isTimeout(refused));

    RawServer server([](int) {
        return Reply{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"value\"", Then::Close};
    });
    EXPECT_EQ(failureOf(transportTo(server)->send(Method::Post, "/a", "{}", 2000)).kind, FailureKind::Transport);
}

/// A client in a session whose further requests get `bytes`.
struct Session {
    explicit Session(std::string bytes)
        : server([bytes](int number) {
              return Reply{number == 0 ? kSession : number == 1 ? kOk : bytes};
          }),
          client(transportTo(server)),
          capabilities(client.start({})) {}

    RawServer server;
    Client client;
    Result<QJsonObject> capabilities;
};

TEST(Client, ABusyDriverCostsTheFullTimeLimitOnce) {
    // Requests from 2 on (the first ones open the session) stay without an answer until `busy` ends.
    std::atomic<bool> busy = true;
    RawServer server([&busy](int number) {
        if (number == 0) return Reply{kSession};
        return number == 1 || !busy ? Reply{kOk} : Reply{};
    });
    Client client(transportTo(server));
    ASSERT_TRUE(client.start({}));
    EXPECT_TRUE(isTimeout(failureOf(client.send(GetTitle{}))));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(isTimeout(failureOf(client.send(ElementClick{{QStringLiteral("e")}}))));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    for (const std::string& request : server.requests()) {
        EXPECT_EQ(request.find("/click"), std::string::npos) << "would be carried out whenever the driver is free";
    }
    EXPECT_EQ(client.unansweredInARow(), 2);
    busy = false;
    EXPECT_TRUE(client.send(GetWindowHandles{}));
    EXPECT_EQ(client.unansweredInARow(), 2) << "the driver is free, the page has said nothing yet";
    EXPECT_TRUE(client.send(ElementClick{{QStringLiteral("e")}}));
    EXPECT_EQ(client.unansweredInARow(), 0);
}

TEST(Client, TellsTheDriversErrorsFromAnswersThatArentAnyWithoutQuotingPageOrLocator) {
    const std::pair<std::string, const char*> cases[] = {
        {RawServer::answer(R"({"value":{"error":"no such element","message":"no //a[@href='62811']"}})", 404),
         "no such element"},
        {RawServer::answer("<html>Bad gateway 62811</html>", 502), ""},
        {RawServer::answer(R"({"status":0})", 200), ""},
        {RawServer::answer(R"({"value":null})", 500), ""},
        {RawServer::answer(R"([1,2])", 200), ""},
    };
    for (const auto& [bytes, code] : cases) {
        Session session(bytes);
        const FindElement find{{Using::XPath, QStringLiteral("//a[@href='62811']")}};
        const Failure failure = failureOf(session.client.send(find));
        EXPECT_EQ(failure.kind, *code ? FailureKind::Remote : FailureKind::Protocol) << bytes;
        EXPECT_EQ(failure.code, code);
        EXPECT_EQ(failure.text.find("62811"), std::string::npos) << failure.text;
    }
    // A page's own object is a value, whatever its members are called.
    Session session(RawServer::answer(R"({"value":{"error":"x"}})", 200));
    EXPECT_TRUE(session.client.send(ExecuteScript{}));

    // What keeps the browser from starting is the operator's business.
    const std::string body =
        R"({"value":{"error":"session not created","message":"unknown error:\n  only Chrome 115"}})";
    RawServer server([&body](int) { return Reply{RawServer::answer(body, 500)}; });
    Client client(transportTo(server));
    EXPECT_EQ(failureOf(client.start({})).text, "NewSession: session not created: unknown error: only Chrome 115");
    EXPECT_FALSE(client.isOpen());
}

TEST(Client, ATimeOutAndALostSessionAreOurs) {
    EXPECT_TRUE(isSessionGone({FailureKind::Remote, "", "invalid session id"}));
    EXPECT_FALSE(isSessionGone({FailureKind::Remote, "", "no such window"}));
    EXPECT_FALSE(isSessionGone({FailureKind::Transport, "", "timeout"}));
    // The same word means two things: the driver's time limit, and ours.
    EXPECT_FALSE(isTimeout({FailureKind::Remote, "", "timeout"}));
}

}  // namespace
}  // namespace kibo::webdriver
