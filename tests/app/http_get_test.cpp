#include "app/http_get.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace kibo {
namespace {

class HttpGetTest : public testing::Test {
 protected:
    HttpGetTest() {
        server_.Get("/text", [](const auto&, auto& answer) { answer.set_content("caf\xC3\xA9\n", "text/plain"); });
        server_.Get("/large", [](const auto&, auto& answer) { answer.set_content(std::string(3000, 'x'), "a/b"); });
        server_.Get("/error", [](const auto&, auto& answer) { answer.status = 503; });
        server_.Get("/moved", [](const auto&, auto& answer) { answer.set_redirect("/text"); });
        server_.Get("/loop", [](const auto&, auto& answer) { answer.set_redirect("/loop"); });
        server_.Get("/file", [](const auto&, auto& answer) { answer.set_redirect("file:///etc/hostname"); });
        // Bytes keep coming, so that only the limit for the whole can end it.
        server_.Get("/slow", [this](const auto&, auto& answer) {
            answer.set_content_provider("a/b", [this](std::size_t, httplib::DataSink& sink) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                return !ending_ && sink.write("x", 1);
            });
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
    }
    ~HttpGetTest() override {
        ending_ = true;
        server_.stop();
        thread_.join();
    }
    QString address(const char* path) const {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(port_).arg(QString::fromLatin1(path));
    }

    httplib::Server server_;
    std::atomic<bool> ending_ = false;
    int port_ = 0;
    std::thread thread_;
};

TEST_F(HttpGetTest, GivesTheBodyAlsoBehindARedirect) {
    for (const char* path : {"/text", "/moved"}) {
        const auto body = httpGet(address(path));
        ASSERT_TRUE(body.ok()) << path << ": " << body.failure().text;
        EXPECT_EQ(body.value(), QByteArray("caf\xC3\xA9\n")) << path;
    }
}

TEST_F(HttpGetTest, TellsFailuresApart) {
    const auto failing = [](const QString& asked, const HttpLimits& limits = {}) {
        const auto body = httpGet(asked, limits);
        EXPECT_FALSE(body.ok()) << asked.toStdString();
        return body.ok() ? Failure{} : body.failure();
    };
    const Failure refused = failing(address("/error"));
    EXPECT_EQ(refused.kind, FailureKind::Remote);
    EXPECT_EQ(refused.code, "503");
    EXPECT_EQ(failing(address("/large"), {.largestAnswer = 2999}).kind, FailureKind::Protocol);
    EXPECT_TRUE(httpGet(address("/large"), {.largestAnswer = 3000}).ok());
    EXPECT_EQ(failing(address("/loop")).kind, FailureKind::Protocol);
    EXPECT_EQ(failing(address("/file")).kind, FailureKind::InvalidArgument);
    for (const char* wrong : {"", "127.0.0.1/text", "file:///etc/hostname", "http://"})
        EXPECT_EQ(failing(QString::fromLatin1(wrong)).kind, FailureKind::InvalidArgument) << wrong;
    const Failure slow = failing(address("/slow?text=secret"), {.wholeMs = 300});
    EXPECT_EQ(slow.kind, FailureKind::Transport);
    EXPECT_EQ(slow.text.find("secret"), std::string::npos);
    int times = 0;
    const auto brokenOff = httpGet(address("/slow"), {}, [&times] { return ++times < 5; });
    EXPECT_EQ(brokenOff.ok() ? "answered" : brokenOff.failure().text, "broken off");
    EXPECT_EQ(times, 5);
    server_.stop();
    EXPECT_EQ(failing(address("/text?text=secret")).kind, FailureKind::Transport);
}

}  // namespace
}  // namespace kibo
