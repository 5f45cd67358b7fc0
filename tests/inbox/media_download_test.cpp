#include "inbox/media_download.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "browser/raw_server.h"
#include "inbox/helper_installation.h"
#include "inbox/media_file_name.h"
#include "platform/process.h"
#include "support/eventually.h"

namespace kibo {
namespace {

using test::RawServer;

std::string nameFor(const char* address) {
    return mediaFileName(QString::fromUtf8(address)).toStdString();
}

TEST(MediaFileName, StaysInItsFolderOnEverySystem) {
    EXPECT_EQ(nameFor("https://host/a/b/photo.jpg"), "photo.jpg");
    EXPECT_EQ(nameFor("https://host/photo.jpg?size=/../x#/y"), "photo.jpg");
    EXPECT_EQ(nameFor("https://host/sch%C3%B6n%20%F0%9F%99%82.png"), "schön 🙂.png");
    EXPECT_EQ(nameFor("https://host/..%2f..%5cetc%2fpasswd"), "....etcpasswd");
    EXPECT_EQ(nameFor("https://host/a%00b%0a:c|<>\"*.jpg. ."), "abc.jpg");
    EXPECT_EQ(nameFor("https://host/photo%E2%80%AEgpj.exe"), "photogpj.exe") << "no turned direction of writing";
    for (const char* address : {"https://host/", "https://host/..", "https://host/%2e%2e", "https://host/ .", "", "/"})
        EXPECT_EQ(nameFor(address), "download") << address;
    EXPECT_EQ(nameFor("https://host/con"), "_con");
    EXPECT_EQ(nameFor("https://host/Com1.tar.gz"), "_Com1.tar.gz");
    EXPECT_EQ(nameFor("https://host/console.txt"), "console.txt");
    const QString tooLong = mediaFileName(u"x/"_qs + QString(300, QChar(0xE4)) + u".jpg"_qs);
    EXPECT_LE(tooLong.toUtf8().size(), 200);
    EXPECT_TRUE(tooLong.endsWith(u"ä.jpg"_qs));
}

/// A program folder beside which the downloader stands, as in a build.
class Media : public testing::Test {
 protected:
    MediaDownload download(DownloadLimits limits = {}) { return {settings_, clock_, folder_.path(), limits}; }
    static QByteArray contentOf(const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QString& name, const QByteArray& content) const {
        QFile file(folder_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

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
    write(u"wget2"_qs, "#!/bin/sh\nprintf '[%s]' \"$@\" > '" + folder_.path().toUtf8() + "/said'\n");
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
    const QString helper = folder_.filePath(u"Downloadmedia.exe"_qs);
    installDownloadHelper(folder_.path());
    EXPECT_FALSE(QFile::exists(helper)) << "there is nothing to install";
    write(u"Downloadmedia.kb"_qs, "new");
    installDownloadHelper(folder_.path());
    EXPECT_EQ(contentOf(helper), "new");
    write(u"Downloadmedia.kb"_qs, "newer");
    installDownloadHelper(folder_.path());
    EXPECT_EQ(contentOf(helper), "newer") << "a helper of this spelling is renewed at every start";
    write(u"DownloadMedia.exe"_qs, "kept");
    write(u"Downloadmedia.kb"_qs, "newest");
    installDownloadHelper(folder_.path());
    EXPECT_EQ(contentOf(helper), "newer");
}

}  // namespace
}  // namespace kibo
