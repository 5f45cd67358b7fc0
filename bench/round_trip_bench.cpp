#include <curl/curl.h>

#include <QJsonDocument>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "browser/driver_process.h"
#include "browser/launch.h"
#include "browser/page/page_module.h"
#include "browser/webdriver/client.h"
#include "browser/webdriver/curl_transport.h"

namespace kibo::bench {
namespace {

using namespace webdriver;

constexpr int kSamples = 301;
constexpr double kTarget = 1.10;
constexpr double kLookTarget = 1.05;
constexpr double kLookBytes = 1024;
constexpr int kOpenedChats = 30;

/// The bytes of one request and of its answer.
struct Sent {
    Method method = Method::Get;
    QByteArray path;
    QByteArray body;
    QByteArray answer = {};
};

/// Passes requests on and keeps the last one, so that it can be sent again by other means.
class RecordingTransport : public Transport {
 public:
    RecordingTransport(const QByteArray& address, Sent& last) : transport_(address), last_(last) {}

    Result<HttpAnswer> send(Method method, const QByteArray& path, const QByteArray& body, int timeoutMs) override {
        last_ = {method, path, body};
        auto answer = transport_.send(method, path, body, timeoutMs);
        if (answer) last_.answer = answer.value().body;
        return answer;
    }

 private:
    CurlTransport transport_;
    Sent& last_;
};

size_t append(char* data, size_t, size_t size, void* body) {
    static_cast<std::string*>(body)->append(data, size);
    return size;
}

/// The least that libcurl needs: one handle, its connection kept, the answer's bytes left as they are.
class BareCurl {
 public:
    explicit BareCurl(QByteArray address) : address_(std::move(address)) {
        headers_ = curl_slist_append(headers_, "Content-Type: application/json");
        curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
        curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, append);
        curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &answer_);
    }
    ~BareCurl() {
        curl_easy_cleanup(curl_);
        curl_slist_free_all(headers_);
    }
    BareCurl(const BareCurl&) = delete;
    BareCurl& operator=(const BareCurl&) = delete;

    void send(const Sent& request) {
        answer_.clear();
        const QByteArray url = address_ + request.path;
        curl_easy_setopt(curl_, CURLOPT_URL, url.constData());
        if (request.method == Method::Post) {
            curl_easy_setopt(curl_, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
            curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, request.body.constData());
        } else {
            curl_easy_setopt(curl_, CURLOPT_HTTPGET, 1L);
        }
        require(curl_easy_perform(curl_) == CURLE_OK && !answer_.empty(), "bare libcurl gets no answer");
    }

 private:
    CURL* curl_ = curl_easy_init();
    curl_slist* headers_ = nullptr;
    std::string answer_;
    QByteArray address_;
};

/// The look of every tick, on a page that has had its chats opened, beside a script that does nothing but answer the
/// same.
void measureLook(Table& table, Client& client, Sent& last, const ElementTable& elements, const QString& chatAddress) {
    const auto call = [&](const char* name, const QJsonArray& arguments, const page_module::Heard& heard = {}) {
        const auto answer = client.send(page_module::call(elements, heard, QLatin1String(name), arguments));
        require(answer.ok() && !answer.value().isString(), std::string(name) + " is refused");
        return answer.value();
    };
    require(client.send(ExecuteScript{page_module::script()}) && client.send(page_module::handOver(elements)),
            "the page does not take its script");
    for (int i = 0; i < kOpenedChats; ++i) {
        const QString address = chatAddress + QString::number(6281234000000 + i);
        call("plantLink", {address});
        call("pointLink", {address});
        call("clickLink", {address});
        SystemClock().wait(20);
    }
    const QString next = chatAddress + QStringLiteral("6281200009999"), title = QStringLiteral("[1]");
    const QJsonValue chat = call("look", {next, title})[QStringLiteral("chat")];
    const page_module::Heard heard{chat[QStringLiteral("serial")].toInt(), chat[QStringLiteral("clicks")].toInt()};
    require(heard.serial > 0 && heard.clicks == kOpenedChats, "no chat was opened");
    const ExecuteScript same{QStringLiteral("return arguments[0]"), {call("look", {next, title}, heard)}};
    const auto bytes = static_cast<double>(last.body.size() + last.answer.size());
    const SideBySide times = sideBySide(
        kSamples,
        [&] {
            call("look", {next, title}, heard);
        },
        [&] { require(client.send(same).ok(), "a command is refused"); });
    table.add({"the look of every tick, over a bare script of the same answer", "ms", times.measured, times.reference,
               kLookTarget, kSamples});
    table.add({"the look of every tick: bytes there and back", "", bytes, kLookBytes, 1, 1});
}

}  // namespace

void measureRoundTrips(Table& table) {
    const QTemporaryDir folder;
    standin::StandIn standIn;
    const Settings settings = standInSettings(standIn);
    DriverProcess driver(QStringLiteral("chromedriver"));
    const auto address = driver.start();
    require(address.ok(), "chromedriver does not start");

    Sent last;
    Client client(std::make_unique<RecordingTransport>(address.value(), last));
    require(client.start(launchCapabilities(settings, folder.filePath(QStringLiteral("profile")))).ok(),
            "no browser session");
    struct Quit {
        Client& client;
        ~Quit() { (void)client.quit(); }
    } const quit{client};
    require(client.send(NavigateTo{settings.StartAddress}).ok(), "the page does not load");
    SystemClock().wait(1000);

    const struct {
        const char* what;
        Command command;
    } commands[] = {
        {"round trip: window handles", GetWindowHandles{}},
        {"round trip: title", GetTitle{}},
        {"round trip: a small script", ExecuteScript{QStringLiteral("return arguments[0] + 1;"), {1}}},
    };
    BareCurl bare(address.value());
    for (const auto& [what, command] : commands) {
        require(client.send(command).ok(), std::string(what) + " is refused");
        const Sent same = last;
        const SideBySide times = sideBySide(
            kSamples, [&] { require(client.send(command).ok(), "a command is refused"); }, [&] { bare.send(same); });
        table.add({what, "ms", times.measured, times.reference, kTarget, kSamples});
    }
    measureLook(table, client, last, elementsIn(folder.path()), settings.ChatAddress);
}

}  // namespace kibo::bench
