#include "base/http_get.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace kibo {
namespace {

TEST(HttpGetTest, GivesTheBodyAlsoBehindARedirectAndTellsFailuresApart) {
    httplib::Server server;
    std::atomic<bool> ending = false;
    server.Get("/text", [](const auto&, auto& answer) { answer.set_content("caf\xC3\xA9\n", "text/plain"); });
    server.Get("/large", [](const auto&, auto& answer) { answer.set_content(std::string(3000, 'x'), "a/b"); });
    server.Get("/error", [](const auto&, auto& answer) { answer.status = 503; });
    server.Get("/moved", [](const auto&, auto& answer) { answer.set_redirect("/text"); });
    server.Get("/loop", [](const auto&, auto& answer) { answer.set_redirect("/loop"); });
    server.Get("/file", [](const auto&, auto& answer) { answer.set_redirect("file:///etc/hostname"); });
    // Bytes keep coming, so that only the limit for the whole can end it.
    server.Get("/slow", [&ending](const auto&, auto& answer) {
        answer.set_content_provider("a/b", [&ending](std::size_t, httplib::DataSink& sink) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            return !ending && sink.write("x", 1);
        });
    });
    const QString base = QStringLiteral("http://127.0.0.1:%1").arg(server.bind_to_any_port("127.0.0.1"));
    std::thread thread([&server] { server.listen_after_bind(); });
    const auto get = [&base](const char* path, const HttpLimits& limits = {}, const std::function<bool()>& goOn = {}) {
        return httpGet(*path == '/' ? base + QLatin1String(path) : QLatin1String(path), limits, goOn);
    };
    const auto failing = [&get](const char* path, const HttpLimits& limits = {}) {
        const auto body = get(path, limits);
        EXPECT_FALSE(body.ok()) << path;
        return body.ok() ? Failure{} : body.failure();
    };
    for (const char* path : {"/text", "/moved"}) EXPECT_EQ(get(path).valueOr({}), QByteArray("caf\xC3\xA9\n")) << path;
    EXPECT_EQ(failing("/error").kind, FailureKind::Remote);
    EXPECT_EQ(failing("/error").code, "503");
    EXPECT_EQ(failing("/large", {.largestAnswer = 2999}).kind, FailureKind::Protocol);
    EXPECT_TRUE(get("/large", {.largestAnswer = 3000}).ok());
    EXPECT_EQ(failing("/loop").kind, FailureKind::Protocol);
    for (const char* wrong : {"/file", "", "127.0.0.1/text", "file:///etc/hostname", "http://"})
        EXPECT_EQ(failing(wrong).kind, FailureKind::InvalidArgument) << wrong;
    const Failure slow = failing("/slow?text=secret", {.wholeMs = 300});
    EXPECT_EQ(slow.kind, FailureKind::Transport);
    EXPECT_EQ(slow.text.find("secret"), std::string::npos);
    int times = 0;
    const auto brokenOff = get("/slow", {}, [&times] { return ++times < 5; });
    EXPECT_EQ(brokenOff.ok() ? "answered" : brokenOff.failure().text, "broken off");
    EXPECT_EQ(times, 5);
    ending = true;
    server.stop();
    thread.join();
    const Failure gone = failing("/text?text=secret");
    EXPECT_EQ(gone.kind, FailureKind::Transport);
    EXPECT_EQ(gone.text.find("secret"), std::string::npos);
}

}  // namespace
}  // namespace kibo
