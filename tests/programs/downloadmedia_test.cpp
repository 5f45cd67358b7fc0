// The downloader against servers that behave, break off, stall and lie.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "browser/raw_server.h"
#include "downloadmedia/download.h"
#include "platform/temporary_folder.h"

namespace kibo::downloadmedia {
namespace {

using platform::contentOf;
using platform::writeContent;
using test::RawServer;
using Reply = RawServer::Reply;
using enum RawServer::Reply::Then;

/// An answer as told: the first line, further header lines, a body and the length that is announced for it.
Reply reply(const std::string& status, const std::string& body, const std::string& headers = {},
            std::size_t announced = std::string::npos) {
    const std::size_t length = announced == std::string::npos ? body.size() : announced;
    return {"HTTP/1.1 " + status + "\r\n" + headers + "Content-Length: " + std::to_string(length) + "\r\n\r\n" + body,
            announced == std::string::npos ? KeepOpen : Close};
}

class Download : public testing::Test {
 protected:
    ExitCode fetch(const std::string& address) {
        options_.address = address;
        const auto begin = std::chrono::steady_clock::now();
        const Outcome outcome = download(options_, isInside_);
        took_ = std::chrono::steady_clock::now() - begin;
        line_ = outcome.line;
        EXPECT_EQ(outcome.line.empty(), outcome.code == ExitCode::Done);
        EXPECT_EQ(line_.find("secret"), std::string::npos) << "the address is private";
        EXPECT_EQ(std::filesystem::exists(options_.target), outcome.code == ExitCode::Done);
        return outcome.code;
    }
    ExitCode fetchFrom(const Reply& answer) {
        const RawServer server([&](int) { return answer; });
        return fetch(server.address() + "/a.jpg?key=secret");
    }

    platform::TemporaryFolder folder_;
    Options options_{.address = {},
                     .target = folder_.file("ä 🙂.jpg"),
                     .limitBytes = 1000,
                     .seconds = 5,
                     .connectSeconds = 2,
                     .stallSeconds = 1,
                     .redirects = 3};
    IsInside isInside_ = isOwnNetwork;
    std::chrono::duration<double> took_{};
    std::string line_;
};

TEST_F(Download, WritesTheFileAfterRedirectsAndNothingElse) {
    const RawServer server([](int number) {
        return number < 3 ? reply("302 Found", "elsewhere", "Location: /next\r\n") : reply("200 OK", "picture");
    });
    EXPECT_EQ(fetch(server.address() + "/a.jpg"), ExitCode::Done);
    EXPECT_EQ(contentOf(options_.target), "picture");
    EXPECT_EQ(fetchFrom(reply("200 OK", "newer")), ExitCode::Done) << "an earlier file is replaced";
    EXPECT_EQ(contentOf(options_.target), "newer");
    EXPECT_EQ(folder_.entries(), 1);
    EXPECT_EQ(fetchFrom(reply("200 OK", "")), ExitCode::Done);
    options_.target = folder_.file("none/a.jpg");
    EXPECT_EQ(fetchFrom(reply("200 OK", "picture")), ExitCode::NotWritten);
}

TEST_F(Download, FollowsNothingButWebAddresses) {
    for (const char* address :
         {"file:///etc/passwd", "ftp://127.0.0.1/a", "127.0.0.1/a", "/etc/passwd", "http://", "-"})
        EXPECT_EQ(fetch(address), ExitCode::BadAddress) << address;
    EXPECT_EQ(fetchFrom(reply("302 Found", "", "Location: file:///etc/passwd\r\n")), ExitCode::BadAddress);
    EXPECT_EQ(fetchFrom(reply("302 Found", "", "Location: /again\r\n")), ExitCode::TooManyRedirects);
    EXPECT_EQ(fetchFrom(reply("302 Found", "no location")), ExitCode::Refused);
    EXPECT_EQ(fetchFrom(reply("404 Not Found", "page")), ExitCode::Refused);
    EXPECT_EQ(line_, "the server answers 404");
    EXPECT_EQ(folder_.entries(), 0);
}

TEST_F(Download, IsNotLedIntoTheOwnNetworkFromOutside) {
    for (const bool firstIsInside : {false, true}) {
        const RawServer server([](int number) {
            return number == 0 ? reply("302 Found", "", "Location: /next\r\n") : reply("200 OK", "router page");
        });
        isInside_ = [firstIsInside, asked = 0](std::string_view ip) mutable {
            EXPECT_EQ(ip, "127.0.0.1");
            return asked++ > 0 || firstIsInside;
        };
        EXPECT_EQ(fetch(server.address() + "/secret"), firstIsInside ? ExitCode::Done : ExitCode::LedInside);
        EXPECT_EQ(server.requests().size(), firstIsInside ? 2U : 1U);
    }
    for (const char* ip :
         {"127.0.0.1", "10.1.2.3", "172.16.0.1", "172.31.255.255", "192.168.1.1", "169.254.169.254", "100.64.0.1",
          "0.0.0.0", "::1", "::", "fe80::1", "fc00::1", "fd12:3456::1", "::ffff:10.0.0.1", "1.2.3", ""})
        EXPECT_TRUE(isOwnNetwork(ip)) << ip;
    for (const char* ip : {"93.184.216.34", "172.15.0.1", "172.32.0.1", "192.169.0.1", "11.0.0.1", "100.128.0.1",
                           "2606:2800:220:1::1", "::ffff:8.8.8.8"})
        EXPECT_FALSE(isOwnNetwork(ip)) << ip;
}

TEST_F(Download, DoesNotBelieveLengths) {
    const std::string large(1001, 'x');
    EXPECT_EQ(fetchFrom(reply("200 OK", "", {}, 1001)), ExitCode::TooLarge) << "announced";
    EXPECT_EQ(fetchFrom({"HTTP/1.1 200 OK\r\n\r\n" + large, Close}), ExitCode::TooLarge) << "not announced";
    EXPECT_EQ(fetchFrom({"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3e9\r\n" + large, Close}),
              ExitCode::TooLarge);
    EXPECT_EQ(fetchFrom(reply("200 OK", "short", {}, 100)), ExitCode::Incomplete);
    EXPECT_EQ(fetchFrom({"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n64\r\nshort", Close}),
              ExitCode::Incomplete);
    EXPECT_EQ(fetchFrom({"", Close}), ExitCode::Incomplete);
    EXPECT_EQ(folder_.entries(), 0) << "without a validator nothing can be gone on with";
    EXPECT_EQ(fetchFrom({"HTTP/1.1 200 OK\r\n\r\n" + std::string(1000, 'x'), Close}), ExitCode::Done)
        << "the limit itself";
}

TEST_F(Download, EndsWithinItsLimits) {
    EXPECT_EQ(fetchFrom({}), ExitCode::OutOfTime) << "never an answer";
    EXPECT_EQ(line_, "nothing came for 1 s");
    EXPECT_EQ(fetchFrom({"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nand then"}), ExitCode::OutOfTime) << "a pause";
    EXPECT_LT(took_.count(), 5);
    options_.stallSeconds = 60;
    options_.seconds = 1;
    EXPECT_EQ(fetchFrom({}), ExitCode::OutOfTime);
    EXPECT_EQ(line_, "not complete within 1 s");
    EXPECT_LT(took_.count(), 5);
}

TEST_F(Download, GoesOnWhereItBrokeOffIfTheFileIsTheSame) {
    const std::string tag = "ETag: \"1\"\r\n", range = "Content-Range: bytes 4-9/10\r\n";
    const struct {
        const char* status;
        std::string headers;
        const char* content;
    } cases[] = {{"206 Partial Content", tag + range, "0123456789"},
                 {"200 OK", tag, "456789"},  // the server sends all of a file that has changed
                 {"416 Range Not Satisfiable", tag, "afresh"},
                 {"206 Partial Content", tag + "Content-Range: bytes 3-9/10\r\n", "afresh"},
                 {"206 Partial Content", "ETag: \"2\"\r\n" + range, "afresh"}};
    for (const auto& c : cases) {
        const RawServer server([&](int number) {
            if (number == 0) return reply("200 OK", "0123", tag, 10);
            return number == 1 ? reply(c.status, "456789", c.headers) : reply("200 OK", "afresh", tag);
        });
        std::filesystem::remove(options_.target);
        EXPECT_EQ(fetch(server.address() + "/a.jpg"), ExitCode::Incomplete);
        EXPECT_EQ(folder_.entries(), 2) << "the part and whose it is";
        EXPECT_EQ(fetch(server.address() + "/a.jpg"), ExitCode::Done);
        EXPECT_EQ(folder_.entries(), 1);
        EXPECT_EQ(contentOf(options_.target), c.content) << c.status << c.headers;
        EXPECT_NE(server.requests()[1].find("Range: bytes=4-\r\n"), std::string::npos);
        EXPECT_NE(server.requests()[1].find("If-Range: \"1\"\r\n"), std::string::npos);
    }
    std::filesystem::remove(options_.target);
    EXPECT_EQ(fetchFrom(reply("200 OK", "0123", tag, 10)), ExitCode::Incomplete);
    EXPECT_EQ(fetchFrom(reply("200 OK", "other address", tag)), ExitCode::Done);
    EXPECT_EQ(contentOf(options_.target), "other address");
}

TEST(Options, AreReadOrRefused) {
    const auto parsed = parseOptions({"--limit", "5", "http://a", "--seconds", "7", "--", "--odd"});
    ASSERT_TRUE(parsed.ok()) << parsed.failure().text;
    EXPECT_EQ(parsed.value().limitBytes, 5);
    EXPECT_EQ(parsed.value().seconds, 7);
    EXPECT_EQ(parsed.value().target, "--odd");
    EXPECT_TRUE(parseOptions({"--help"}).value().help);
    const std::vector<std::string> refused[] = {{},
                                                {"a"},
                                                {"a", "b", "c"},
                                                {"a", ""},
                                                {"--limit"},
                                                {"--limit", "0", "a", "b"},
                                                {"--limit", "9x", "a", "b"},
                                                {"--seconds", "99999999999", "a", "b"},
                                                {"--fast", "a", "b"}};
    for (const auto& words : refused) EXPECT_FALSE(parseOptions(words).ok());
}

}  // namespace
}  // namespace kibo::downloadmedia
