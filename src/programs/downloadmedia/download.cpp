#include "downloadmedia/download.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

#include "downloadmedia/partial_file.h"
#include "platform/machine.h"

namespace kibo::downloadmedia {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
constexpr const char* kSchemes = "http,https";
constexpr long kOk = 200;
constexpr long kPartialContent = 206;
constexpr long kRangeNotSatisfiable = 416;

struct CurlDeleter {
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

std::string lower(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char c) { return std::tolower(c); });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin == text.npos ? "" : text.substr(begin, text.find_last_not_of(" \t\r\n") + 1 - begin);
}

bool isWebAddress(const std::string& address) {
    const std::string start = lower(address.substr(0, 8));
    return start.starts_with("http://") || start.starts_with("https://");
}

/// What the headers of one answer say about the file.
struct Headers {
    std::string strongTag;
    std::string lastModified;
    std::int64_t rangeStart = -1;  ///< where a part begins; -1: not told
    std::int64_t wholeSize = -1;   ///< size of the file that the part belongs to; -1: not told

    /// What later tells whether the file is still the same; empty when nothing does for certain.
    const std::string& validator() const { return strongTag.empty() ? lastModified : strongTag; }

    void read(std::string_view line);

 private:
    void readRange(std::string_view value);
};

void Headers::read(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        *this = {};  // an answer of its own: after a redirect, or after "100 Continue"
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == line.npos) return;
    const std::string name = lower(line.substr(0, colon));
    const std::string_view value = trimmed(line.substr(colon + 1));
    if (name == "etag" && value.starts_with('"')) strongTag = value;
    if (name == "last-modified") lastModified = value;
    if (name == "content-range") readRange(value);
}

/// "bytes 100-199/200", the last number may be "*"; see RFC 9110, section 14.4.
void Headers::readRange(std::string_view value) {
    constexpr std::string_view kUnit = "bytes ";
    if (!lower(value).starts_with(kUnit)) return;
    const char* end = value.data() + value.size();
    std::int64_t number = -1;
    if (std::from_chars(value.data() + kUnit.size(), end, number).ec == std::errc()) rangeStart = number;
    const std::size_t slash = value.find('/');
    if (slash != value.npos && std::from_chars(value.data() + slash + 1, end, number).ec == std::errc())
        wholeSize = number;
}

/// One request, with its redirects.
class Transfer {
 public:
    Transfer(const Options& options, const IsInside& isInside, PartialFile& file, PartialFile::Rest rest, Seconds left);

    /// No value: the rest of an earlier attempt is of no use, and nothing has come; try without it.
    std::optional<Outcome> run();

 private:
    static std::size_t onHeader(char* data, std::size_t, std::size_t size, void* self);
    static std::size_t onBody(char* data, std::size_t, std::size_t size, void* self);
    static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t);
    static int onConnected(void* self, char* serverIp, char*, int, int);
    bool begin();
    bool isStalled();
    bool take(const char* data, std::size_t size);
    bool stop(ExitCode code, std::string line);
    long status() const;
    Outcome outcomeOf(CURLcode code) const;
    Outcome outOfTime() const;
    Outcome tooLarge() const;

    const Options& options_;
    const IsInside& isInside_;
    PartialFile& file_;
    const PartialFile::Rest rest_;
    const Seconds left_;
    std::unique_ptr<CURL, CurlDeleter> curl_{curl_easy_init()};
    std::unique_ptr<curl_slist, CurlDeleter> requestHeaders_;
    Headers headers_;
    Clock::time_point lastByte_ = Clock::now();
    bool ledFromOutside_ = false;
    bool begun_ = false;
    bool restUseless_ = false;
    Outcome stopped_;  ///< why a callback ended the transfer
};

Transfer::Transfer(const Options& options, const IsInside& isInside, PartialFile& file, PartialFile::Rest rest,
                   Seconds left)
    : options_(options), isInside_(isInside), file_(file), rest_(std::move(rest)), left_(left) {
    CURL* curl = curl_.get();
    if (curl == nullptr) return;
    curl_easy_setopt(curl, CURLOPT_URL, options.address.c_str());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, kSchemes);
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, kSchemes);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, static_cast<long>(options.redirects));
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Kibo");
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(left.count() * 1000)));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(options.connectSeconds));
    // Not libcurl's own limit for slow transfers: that one is a mean over seconds, which a pause hardly moves.
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, onProgress);
    curl_easy_setopt(curl, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(curl, CURLOPT_PREREQFUNCTION, onConnected);
    curl_easy_setopt(curl, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(options.limitBytes - rest_.bytes));
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
    if (rest_.bytes == 0) return;
    // A server whose file has changed answers with all of it instead of the part.
    requestHeaders_.reset(curl_slist_append(nullptr, ("If-Range: " + rest_.validator).c_str()));
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, requestHeaders_.get());
    curl_easy_setopt(curl, CURLOPT_RANGE, (std::to_string(rest_.bytes) + "-").c_str());
}

std::optional<Outcome> Transfer::run() {
    if (!curl_) return Outcome{ExitCode::Unreachable, "the HTTP library can't be set up"};
    const CURLcode code = curl_easy_perform(curl_.get());
    if (restUseless_ || (rest_.bytes > 0 && status() == kRangeNotSatisfiable)) return std::nullopt;
    if (stopped_.code != ExitCode::Done) return stopped_;
    if (code != CURLE_OK) return outcomeOf(code);
    if (!begun_ && !begin()) return restUseless_ ? std::nullopt : std::optional(stopped_);  // an empty file
    if (headers_.wholeSize >= 0 && status() == kPartialContent && file_.size() != headers_.wholeSize)
        return Outcome{ExitCode::Incomplete, "the server sent another part than it announced"};
    if (!file_.finish()) return Outcome{ExitCode::NotWritten, "the file can't be written"};
    return Outcome{};
}

std::size_t Transfer::onHeader(char* data, std::size_t, std::size_t size, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    transfer.lastByte_ = Clock::now();
    transfer.headers_.read({data, size});
    return size;
}

std::size_t Transfer::onBody(char* data, std::size_t, std::size_t size, void* self) {
    return static_cast<Transfer*>(self)->take(data, size) ? size : 0;
}

/// Called about once a second, whether anything comes or not.
int Transfer::onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<Transfer*>(self)->isStalled() ? 1 : 0;
}

/// Called before each request, of the first address and of every one that a server leads to. The connection tells where
/// it goes, whatever names say.
int Transfer::onConnected(void* self, char* serverIp, char*, int, int) {
    auto& transfer = *static_cast<Transfer*>(self);
    const bool inside = transfer.isInside_(serverIp);
    if (inside && transfer.ledFromOutside_) {
        transfer.stop(ExitCode::LedInside, "the server leads to an address of this computer's own network");
        return CURL_PREREQFUNC_ABORT;
    }
    transfer.ledFromOutside_ = !inside;
    return CURL_PREREQFUNC_OK;
}

bool Transfer::isStalled() {
    if (Clock::now() - lastByte_ < std::chrono::seconds(options_.stallSeconds)) return false;
    stop(ExitCode::OutOfTime, "nothing came for " + std::to_string(options_.stallSeconds) + " s");
    return true;
}

/// The answer's headers are complete: opens the file where this answer begins.
bool Transfer::begin() {
    begun_ = true;
    std::int64_t offset = 0;
    if (status() == kPartialContent) {
        const bool sameFile = headers_.validator().empty() || headers_.validator() == rest_.validator;
        restUseless_ = rest_.bytes == 0 || headers_.rangeStart != rest_.bytes || !sameFile;
        if (rest_.bytes == 0) return stop(ExitCode::Refused, "the server sends a part that was not asked for");
        if (restUseless_) return false;
        offset = rest_.bytes;
    } else if (status() != kOk) {
        return stop(ExitCode::Refused, "the server answers " + std::to_string(status()));
    }
    const std::string& validator = offset > 0 ? rest_.validator : headers_.validator();
    return file_.open(offset, validator) || stop(ExitCode::NotWritten, "the file can't be written");
}

bool Transfer::take(const char* data, std::size_t size) {
    lastByte_ = Clock::now();
    if (!begun_ && !begin()) return false;
    if (file_.size() + static_cast<std::int64_t>(size) > options_.limitBytes) {
        stopped_ = tooLarge();
        return false;
    }
    return file_.append(data, size) || stop(ExitCode::NotWritten, "the file can't be written: is the disk full?");
}

bool Transfer::stop(ExitCode code, std::string line) {
    stopped_ = {code, std::move(line)};
    return false;
}

long Transfer::status() const {
    long status = 0;
    curl_easy_getinfo(curl_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status;
}

Outcome Transfer::outcomeOf(CURLcode code) const {
    long redirects = 0;
    curl_easy_getinfo(curl_.get(), CURLINFO_REDIRECT_COUNT, &redirects);
    switch (code) {
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_URL_MALFORMAT:
            return {ExitCode::BadAddress, redirects > 0 ? "the server leads to an address that is no web address"
                                                        : "the address is no web address"};
        case CURLE_COULDNT_RESOLVE_HOST:
            return {ExitCode::Unreachable, "there is no such server"};
        case CURLE_COULDNT_CONNECT:
            return {ExitCode::Unreachable, "the server can't be reached"};
        case CURLE_PEER_FAILED_VERIFICATION:
            return {ExitCode::Unreachable, "the server's certificate is not valid"};
        case CURLE_OPERATION_TIMEDOUT:
            return outOfTime();
        case CURLE_HTTP_RETURNED_ERROR:
            return {ExitCode::Refused, "the server answers " + std::to_string(status())};
        case CURLE_FILESIZE_EXCEEDED:
            return tooLarge();
        case CURLE_TOO_MANY_REDIRECTS:
            return {ExitCode::TooManyRedirects, "more than " + std::to_string(options_.redirects) + " redirects"};
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
            return {ExitCode::Incomplete,
                    "the connection ended after " + std::to_string(file_.size()) + " bytes, before the file's end"};
        default:
            return {ExitCode::Unreachable, curl_easy_strerror(code)};
    }
}

Outcome Transfer::outOfTime() const {
    double connected = 0, total = 0;
    curl_easy_getinfo(curl_.get(), CURLINFO_CONNECT_TIME, &connected);
    curl_easy_getinfo(curl_.get(), CURLINFO_TOTAL_TIME, &total);
    if (connected <= 0 && total < left_.count())
        return {ExitCode::OutOfTime, "no connection within " + std::to_string(options_.connectSeconds) + " s"};
    return {ExitCode::OutOfTime, "not complete within " + std::to_string(options_.seconds) + " s"};
}

Outcome Transfer::tooLarge() const {
    return {ExitCode::TooLarge, "the file is larger than " + std::to_string(options_.limitBytes) + " bytes"};
}

Outcome fetch(const Options& options, const IsInside& isInside, PartialFile& file) {
    const auto begin = Clock::now();
    PartialFile::Rest rest = file.rest();
    if (rest.bytes >= options.limitBytes) rest = {};
    for (;;) {
        const Seconds left = Seconds(options.seconds) - (Clock::now() - begin);
        if (std::optional<Outcome> outcome = Transfer(options, isInside, file, rest, left).run()) return *outcome;
        rest = {};
    }
}

}  // namespace

Outcome download(const Options& options, const IsInside& isInside) {
    if (!isWebAddress(options.address)) return {ExitCode::BadAddress, "only http and https addresses can be fetched"};
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
        return {ExitCode::Unreachable, "the HTTP library can't be set up"};
    PartialFile file(platform::pathFromUtf8(options.target), options.address);
    const Outcome outcome = fetch(options, isInside, file);
    if (outcome.code == ExitCode::TooLarge || outcome.code == ExitCode::NotWritten) {
        file.discard();
    } else if (outcome.code != ExitCode::Done) {
        file.suspend();
    }
    curl_global_cleanup();
    return outcome;
}

}  // namespace kibo::downloadmedia
