#include "browser/webdriver/curl_transport.h"

#include <curl/curl.h>

#include <algorithm>

#include "browser/webdriver/error.h"

namespace kibo::webdriver {
namespace {

// A full-page screenshot stays far below; more is not an answer of a driver.
constexpr qsizetype kLargestAnswer = 64 * 1024 * 1024;
constexpr int kConnectMs = 5'000;

/// libcurl wants its global part set up once a process, before the first handle.
CURL* newHandle() {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    return ready == CURLE_OK ? curl_easy_init() : nullptr;
}

std::size_t appendAnswer(char* data, std::size_t, std::size_t size, void* answer) {
    auto& body = *static_cast<QByteArray*>(answer);
    if (body.size() + static_cast<qsizetype>(size) > kLargestAnswer) return 0;
    body.append(data, static_cast<qsizetype>(size));
    return size;
}

/// Counts how often libcurl is about to send the request of one call.
struct Attempts {
    int begun = 0;
    bool repeatable = false;
};

// When a kept-alive connection breaks before the first byte of the answer, libcurl sends the request again over a new
// one, though the driver may have carried it out. It asks here before each sending: the second one is refused.
int beforeSending(void* attempts, char*, char*, int, int) {
    auto& count = *static_cast<Attempts*>(attempts);
    return count.begun++ == 0 || count.repeatable ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

}  // namespace

struct CurlTransport::Handle {
    Handle() {
        for (const char* header : {"Content-Type: application/json; charset=utf-8", "Accept: application/json",
                                   // Else libcurl waits a second for "100 Continue" before a large body.
                                   "Expect:"}) {
            headers = curl_slist_append(headers, header);
        }
    }
    ~Handle() {
        curl_easy_cleanup(curl);
        curl_slist_free_all(headers);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    CURL* curl = newHandle();
    curl_slist* headers = nullptr;
    Attempts attempts;
    char errorText[CURL_ERROR_SIZE] = "";
};

CurlTransport::CurlTransport(const QByteArray& address) : handle_(std::make_unique<Handle>()), address_(address) {
    while (address_.endsWith('/')) address_.chop(1);
    CURL* curl = handle_->curl;
    if (!curl) return;
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, handle_->headers);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_TCP_NODELAY, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, appendAnswer);
    curl_easy_setopt(curl, CURLOPT_PREREQFUNCTION, beforeSending);
    curl_easy_setopt(curl, CURLOPT_PREREQDATA, &handle_->attempts);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, handle_->errorText);
}

CurlTransport::~CurlTransport() = default;

Result<HttpAnswer> CurlTransport::send(Method method, const QByteArray& path, const QByteArray& body, int timeoutMs) {
    CURL* curl = handle_->curl;
    if (!curl) return Failure{FailureKind::Transport, "the HTTP library can't be set up"};

    const QByteArray url = address_ + path;
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, method == Method::Delete ? "DELETE" : nullptr);
    if (method == Method::Post) {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.constData());
    } else {
        curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L);
    }
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutMs));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::min(timeoutMs, kConnectMs)));

    HttpAnswer answer;
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer.body);
    handle_->attempts = {.begun = 0, .repeatable = method == Method::Get};
    handle_->errorText[0] = '\0';
    const CURLcode code = curl_easy_perform(curl);
    const int sendings = handle_->attempts.begun;

    if (code == CURLE_OPERATION_TIMEDOUT) {
        return Failure{FailureKind::Transport, "no answer within " + std::to_string(timeoutMs) + " ms",
                       std::string(kTimeoutCode)};
    }
    if (code == CURLE_ABORTED_BY_CALLBACK && sendings > 1) {
        return Failure{FailureKind::Transport, "the connection broke before the answer; the command isn't repeated"};
    }
    if (code != CURLE_OK) {
        return Failure{FailureKind::Transport, handle_->errorText[0] ? handle_->errorText : curl_easy_strerror(code)};
    }

    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    answer.status = static_cast<int>(status);
    curl_off_t microseconds = 0;
    curl_easy_getinfo(curl, CURLINFO_TOTAL_TIME_T, &microseconds);
    answer.durationUs = microseconds;
    return answer;
}

}  // namespace kibo::webdriver
