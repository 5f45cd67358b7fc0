#include "inbox/media_download.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <QTimer>

#include "browser/raw_server.h"
#include "inbox/helper_installation.h"
#include "inbox/media_file_name.h"
#include "platform/process.h"
#include "support/eventually.h"
#include "support/files.h"

namespace kibo {
namespace {

using test::contentOf;
using test::RawServer;
using test::written;
using test::writtenScript;

TEST(MediaFileName, StaysInItsFolderOnEverySystem) {
    const std::pair<const char*, const char*> names[] = {
        {"https://host/a/b/photo.jpg", "photo.jpg"},
        {"https://host/photo.jpg?size=/../x#/y", "photo.jpg"},
        {"https://host/sch%C3%B6n%20%F0%9F%99%82.png", "schön 🙂.png"},
        {"https://host/..%2f..%5cetc%2fpasswd", "....etcpasswd"},
        {"https://host/a%00b%0a:c|<>\"*.jpg. .", "abc.jpg"},
        {"https://host/photo%E2%80%AEgpj.exe", "photogpj.exe"},  // no turned direction of writing
        {"https://host/..", "download"},
        {"https://host/%2e%2e", "download"},
        {"https://host/ .", "download"},
        {"", "download"},
        {"https://host/con", "_con"},
        {"https://host/Com1.tar.gz", "_Com1.tar.gz"},
        {"https://host/console.txt", "console.txt"},
    };
    for (const auto& [address, name] : names) EXPECT_EQ(mediaFileName(QString::fromUtf8(address)).toStdString(), name);
    const QString tooLong = mediaFileName(u"x/"_qs + QString(300, QChar(0xE4)) + u".jpg"_qs);
    EXPECT_LE(tooLong.toUtf8().size(), 200);
    EXPECT_TRUE(tooLong.endsWith(u"ä.jpg"_qs));
}

/// A program folder beside which the downloader stands, as in a build.
class Media : public testing::Test {
 protected:
    MediaDownload download(DownloadLimits limits = {}) { return {settings_, clock_, folder_.path(), limits}; }

    QTemporaryDir folder_;
    Settings settings_;
    SystemClock clock_;
};

TEST_F(Media, IsFetchedIntoTheFolderUnderANameOfItsOwn) {
    const RawServer server([](int number) {
        return RawServer::Reply{number < 3 ? RawServer::answer("file " + std::to_string(number))
                                           : RawServer::answer("page", 404)};
    });
    const QString address = QString::fromStdString(server.address());
    MediaDownload media = download();
    const auto first = media.fetch(address + u"/1/schön 1.jpg?key=geheim"_qs);
    ASSERT_TRUE(first.ok()) << first.failure().text;
    EXPECT_EQ(first.value(), folder_.filePath(u"tmp/schön 1.jpg"_qs));
    EXPECT_EQ(contentOf(first.value()), "file 0");
    EXPECT_TRUE(server.requests()[0].starts_with("GET /1/sch%C3%B6n%201.jpg?key=geheim ")) << server.requests()[0];

    const auto sameName = media.fetch(address + u"/2/schön 1.jpg"_qs);
    EXPECT_EQ(sameName.value(), folder_.filePath(u"tmp/schön 1 (2).jpg"_qs));
    EXPECT_EQ(contentOf(first.value()), "file 0") << "the message may still need it";
    MediaDownload instance = download();
    EXPECT_EQ(instance.fetch(address + u"/2/schön 1.jpg"_qs).value(), folder_.filePath(u"tmp/schön 1 (3).jpg"_qs));

    const auto missing = media.fetch(address + u"/none?key=geheim"_qs);
    EXPECT_EQ(missing.failure().text, "the file from 127.0.0.1 can't be fetched: the server answers 404");
    EXPECT_FALSE(QFile::exists(folder_.filePath(u"tmp/none"_qs)));

    for (const auto& file : {first, sameName}) media.release(file.value());
    EXPECT_EQ(QDir(folder_.filePath(u"tmp"_qs)).entryList({u"*.lock"_qs}), QStringList(u"schön 1 (3).jpg.lock"_qs))
        << "names are held for as long as a message needs them";
}

TEST_F(Media, EndsAtItsLimitAndWithTheProgram) {
    const RawServer silent([](int) { return RawServer::Reply{}; });
    const QString address = QString::fromStdString(silent.address()) + u"/a.jpg"_qs;
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(20);
    const auto late = download({.seconds = 1}).fetch(address);
    EXPECT_EQ(late.failure().text, "the file from 127.0.0.1 can't be fetched: not complete within 1 s");
    EXPECT_GT(ticks, 5) << "the window stays alive";

    QTimer::singleShot(100, [&] { clock_.stopWaiting(); });
    EXPECT_FALSE(download().fetch(address).ok());
    EXPECT_TRUE(platform::children(platform::ownProcessId()).empty()) << "no downloader is left";
}

TEST_F(Media, GoesToTheExternalDownloader) {
    writtenScript(folder_.filePath(u"wget2"_qs), "printf '[%s]' \"$@\" > '" + folder_.path().toUtf8() + "/said'\n");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder_.path().toUtf8() + ':' + path);
    settings_.TmpFolder = folder_.filePath(u"my tmp/"_qs);
    const auto said = [&](const char* address) {
        QFile::remove(folder_.filePath(u"said"_qs));
        if (!download().DownloadMedia(QString::fromUtf8(address)).ok()) return QByteArray("refused");
        const QString file = folder_.filePath(u"said"_qs);
        test::eventually([&] { return !contentOf(file).isEmpty(); });
        return contentOf(file);
    };
    const QByteArray begin = "[--max-threads][1][--output-document=" + folder_.path().toUtf8() + "/my tmp/";
    EXPECT_EQ(said("http://host/a/b/photo.jpg"), begin + "photo.jpg][http://host/a/b/photo.jpg]");
    EXPECT_EQ(said("http://host/a/b/"), begin + "][http://host/a/b/]");
    EXPECT_EQ(said("HTTPS://host/p.jpg?a=1"), begin + "p.jpg][HTTPS://host/p.jpg?a=1]");
    for (const char* address :
         {"http://host/a --execute=x", "http://host/\"", "http://host/..\\x", "--help", "ftp://a/b"})
        EXPECT_EQ(said(address), "refused") << address;
    qputenv("PATH", path);
}

TEST_F(Media, HelperIsPutInPlaceUnlessItsOwnSpellingIsThere) {
    const auto installed = [this](const QByteArray& shipped) {
        if (!shipped.isEmpty()) written(folder_.filePath(u"Downloadmedia.kb"_qs), shipped);
        installDownloadHelper(folder_.path());
        return contentOf(folder_.filePath(u"Downloadmedia.exe"_qs));
    };
    EXPECT_EQ(installed({}), QByteArray()) << "there is nothing to install";
    EXPECT_EQ(installed("new"), "new");
    EXPECT_EQ(installed("newer"), "newer") << "a helper of this spelling is renewed at every start";
    written(folder_.filePath(u"DownloadMedia.exe"_qs), "kept");
    EXPECT_EQ(installed("newest"), "newer");
}

}  // namespace
}  // namespace kibo
