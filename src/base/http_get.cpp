#include "base/http_get.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace kibo {
namespace {

constexpr long kMostRedirects = 5;
constexpr int kGoOnMs = 30;

/// libcurl wants its global part set up once a process, before the first handle.
CURL* newHandle() {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    return ready == CURLE_OK ? curl_easy_init() : nullptr;
}

struct Answer {
    QByteArray body;
    qsizetype largest;
    bool tooLarge = false;
};

std::size_t append(char* data, std::size_t, std::size_t size, void* target) {
    auto& answer = *static_cast<Answer*>(target);
    const auto more = static_cast<qsizetype>(size);
    if (answer.body.size() + more > answer.largest) {
        answer.tooLarge = true;
        return 0;  // fewer than offered: libcurl gives up
    }
    answer.body.append(data, more);
    return size;
}

std::string seconds(int milliseconds) {
    return QString::number(milliseconds / 1000.0).toStdString() + " s";
}

Failure failureOf(CURLcode code, const char* errorText, const Answer& answer, const HttpLimits& limits) {
    if (answer.tooLarge)
        return {FailureKind::Protocol, "the answer is larger than " + std::to_string(limits.largestAnswer) + " bytes"};
    const std::string text = errorText[0] ? errorText : curl_easy_strerror(code);
    switch (code) {
        case CURLE_OPERATION_TIMEDOUT:
            return {FailureKind::Transport, "no complete answer in time (" + seconds(limits.connectMs) +
                                                " to connect, " + seconds(limits.wholeMs) + " in all)"};
        case CURLE_ABORTED_BY_CALLBACK:
            return {FailureKind::Transport, "broken off"};
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return {FailureKind::InvalidArgument, "not an address that begins with http:// or https://"};
        case CURLE_TOO_MANY_REDIRECTS:
        case CURLE_WEIRD_SERVER_REPLY:
            return {FailureKind::Protocol, text};
        default:
            return {FailureKind::Transport, text};
    }
}

/// As curl_easy_perform, with `goOn` in between.
CURLcode perform(CURL* curl, const std::function<bool()>& goOn) {
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi(curl_multi_init(), curl_multi_cleanup);
    if (!multi || curl_multi_add_handle(multi.get(), curl) != CURLM_OK) return CURLE_FAILED_INIT;
    CURLcode code = CURLE_ABORTED_BY_CALLBACK;
    for (int running = 1; running > 0;) {
        CURLMcode state = curl_multi_perform(multi.get(), &running);
        if (state == CURLM_OK && running > 0) state = curl_multi_poll(multi.get(), nullptr, 0, kGoOnMs, nullptr);
        if (state != CURLM_OK || (running > 0 && goOn && !goOn())) break;
    }
    int left = 0;
    if (const CURLMsg* message = curl_multi_info_read(multi.get(), &left)) code = message->data.result;
    curl_multi_remove_handle(multi.get(), curl);
    return code;
}

Result<QByteArray> get(CURL* curl, const QString& address, const HttpLimits& limits,
                       const std::function<bool()>& goOn) {
    // Without a scheme libcurl would guess one by the host's name.
    const QByteArray url = address.trimmed().toUtf8();
    if (!url.contains("://")) return failureOf(CURLE_URL_MALFORMAT, "", {}, limits);

    Answer answer{.body = {}, .largest = limits.largestAnswer};
    char errorText[CURL_ERROR_SIZE] = "";
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, kMostRedirects);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::min(limits.connectMs, limits.wholeMs)));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(limits.wholeMs));
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Kibo");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorText);
    const CURLcode code = perform(curl, goOn);
    if (code != CURLE_OK) return failureOf(code, errorText, answer, limits);

    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    if (status < 200 || status > 299) {
        return Failure{FailureKind::Remote, "the server answered with status " + std::to_string(status),
                       std::to_string(status)};
    }
    return answer.body;
}

}  // namespace

Result<QByteArray> httpGet(const QString& address, const HttpLimits& limits, const std::function<bool()>& goOn) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(newHandle(), curl_easy_cleanup);
    if (!handle) return Failure{FailureKind::Transport, "the HTTP library can't be set up"};
    return get(handle.get(), address, limits, goOn);
}

}  // namespace kibo
