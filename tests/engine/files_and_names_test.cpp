#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
using test::FakePage;
const QString kAni = u"6281111111111"_qs;

/// A connected gateway, with a picture and a document to send.
class FilesAndNames : public Engine {
 protected:
    FilesAndNames() {
        page.names = {{kAni, u"Ani"_qs}, {kDummy, u"Dummy"_qs}};
        picture = write(u"p.png"_qs, "not empty");
        document = write(u"bill.pdf"_qs, "not empty");
        tick();
    }
    QString write(const QString& name, const QByteArray& content) {
        return test::written(folder.filePath(name), content);
    }
    QString sendOne(const QString& to, const QString& text, const QString& media = {}, const QString& file = {},
                    int mode = 0) {
        page.commands.clear();
        const qint64 id = queue(to, text, mode, media, file);
        runQueue();
        return status(id);
    }

    QString picture, document;
};

TEST_F(FilesAndNames, FileThatCannotBeSentFailsBeforeTheChatIsOpened) {
    settings.MaxFileMB = u"1"_qs;
    const qsizetype clicks = page.clicks.count(kAni);
    const struct {
        QString path;
        const char* reason;
    } cases[] = {{folder.filePath(u"none.png"_qs), "the media file is not there"},
                 {folder.path(), "the media file is a folder"},
                 {u"/dev/null"_qs, "the media file is no ordinary file"},
                 {write(u"e.png"_qs, {}), "the media file is empty"},
                 {picture + QLatin1Char('\n') + document, "the media file has a line break in its name"},
                 {write(u"big.png"_qs, QByteArray(1024 * 1024 + 1, 'x')),
                  "the media file is too large: 2 MB, and 1 MB are allowed (MaxFileMB)"}};
    for (const auto& c : cases) {
        EXPECT_EQ(sendOne(kAni, u"x"_qs, c.path), u"fail"_qs) << c.reason;
        EXPECT_EQ(lastReason(), QLatin1String(c.reason));
    }
    settings.ChromeDriver = u"http://192.0.2.1:9515"_qs;
    EXPECT_EQ(sendOne(kAni, u"x"_qs, picture), u"fail"_qs);
    EXPECT_TRUE(lastReason().contains(u"another computer"_qs));
    EXPECT_EQ(page.clicks.count(kAni), clicks);
}

TEST_F(FilesAndNames, AddressesAreFetchedAndOnlyWhatWasFetchedIsRemoved) {
    settings.ClearTmp = u"Y"_qs;
    const QString kept = write(u"kept.png"_qs, "x");
    QString fetched;
    fetch = [&](const QString& address) -> Result<QString> {
        if (address.endsWith(QLatin1Char('2'))) return Failure{FailureKind::Remote, "no answer"};
        return fetched = write(u"fetched.png"_qs, "y");
    };
    QStringList released;
    release = [&](const QString& path) {
        EXPECT_FALSE(QFile::exists(path));
        released.append(path);
    };
    EXPECT_EQ(sendOne(kAni, u"x"_qs, u"hTTps://example.org/1"_qs, document), QString());
    ASSERT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(page.delivered[0].file, fetched);
    EXPECT_EQ(released, QStringList(fetched));
    EXPECT_TRUE(QFile::exists(kept) && QFile::exists(document));
    EXPECT_EQ(sendOne(kAni, u"x"_qs, {}, u"http://example.org/2"_qs), u"fail"_qs);
    EXPECT_EQ(lastReason(), u"the document could not be fetched: no answer"_qs);
}

TEST_F(FilesAndNames, MessageWaitsInTheQueueWhileItsFilesAreFetched) {
    int fetches = 0;
    const qint64 id = queue(kAni, u"x"_qs, 0, u"http://example.org/1"_qs);
    fetch = [&](const QString&) -> Result<QString> {
        if (++fetches == 1) gateway.pacing.cmd_Pause_Click();
        EXPECT_EQ(count("outbox"), 1);
        EXPECT_TRUE(journal.entries().empty());
        return picture;
    };
    ticks(5);
    EXPECT_TRUE(page.delivered.empty()) << "paused during the download";
    gateway.pacing.cmd_Pause_Click();
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(fetches, 1);
    EXPECT_EQ(status(id), QString());

    // Ended in the middle of the next download.
    queue(kAni, u"x"_qs, 0, {}, u"http://example.org/1"_qs);
    fetch = [&](const QString&) -> Result<QString> {
        clock.stopWaiting();
        page.presence = PageLook::Presence::Gone;
        return Failure{FailureKind::Transport, "the program is about to end"};
    };
    tick();
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_EQ(state.failedCount, 0);
}

TEST_F(FilesAndNames, PreviewThatGoesWrongFailsTheMessage) {
    using Preview = FakePage::Preview;
    const char* inDoubt = "in doubt: the message was being sent, and its chat doesn't tell";
    for (const auto& [preview, reason] :
         {std::pair{Preview::Vanishes, "the file's preview was closed before it was sent"},
          {Preview::Stays, inDoubt},
          {Preview::GoesUnsent, inDoubt}}) {
        page.preview = preview;
        EXPECT_EQ(sendOne(kAni, u"x"_qs, picture), u"fail"_qs);
        EXPECT_EQ(lastReason(), QLatin1String(reason));
        EXPECT_EQ(page.commands.count(u"sendPreview"_qs), 1);
        EXPECT_LE(page.commands.count(u"lookAtPreview"_qs), 200);
    }
    EXPECT_TRUE(page.delivered.empty());
    page.preview = Preview::Comes;
    page.previewDelay = 5000;
    page.uploadDelay = 60'000;
    EXPECT_EQ(sendOne(kAni, u"slow"_qs, picture), QString());
}

TEST_F(FilesAndNames, FileNeverReachesAChatThatCameUpMeanwhile) {
    page.previewDelay = 3000;
    clock.at(clock.monotonicMs() + 2500, [this] { page.open(u"6283333333333"_qs); });
    EXPECT_EQ(sendOne(kAni, u"x"_qs, picture, document), u"fail"_qs);
    EXPECT_EQ(lastReason(), u"another chat came up before the file was sent"_qs);
    page.previewDelay = 0;
    EXPECT_EQ(sendOne(kAni, u"x"_qs, picture), QString());
    // It comes up between the two files.
    page.uploadDelay = 10'000;
    clock.at(clock.monotonicMs() + 13'500, [this] { page.open(u"6283333333333"_qs); });
    page.previewDelay = 3000;
    EXPECT_EQ(sendOne(kAni, u"x"_qs, picture, document), u"fail"_qs);
    EXPECT_TRUE(lastReason().contains(u"the media file has arrived"_qs)) << lastReason().toStdString();
    for (const auto& message : page.delivered) EXPECT_EQ(message.number, kAni);
}

TEST_F(FilesAndNames, NameIsTypedOnlyIntoTheChatWithThisTitle) {
    page.openDelay = [this](const QString& number) {
        if (number == kAni) clock.at(clock.monotonicMs() + 500, [this] { page.open(u"6283333333333"_qs); });
        return number == kAni ? 60'000 : 0;
    };
    EXPECT_EQ(sendOne(u"Ani"_qs, u"x"_qs), u"fail"_qs);
    EXPECT_EQ(lastReason(), u"the chat did not open in time"_qs);
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(FilesAndNames, DwellFollowsTheSpeedAndModeNineLeavesItOut) {
    const auto waited = [this](int mode) {
        const qint64 before = clock.waited();
        EXPECT_EQ(sendOne(kAni, u"x"_qs, {}, {}, mode), QString());
        return clock.waited() - before;
    };
    for (const auto& [speed, dwell] : {std::pair{"NORMAL", 300}, {"SLOW", 5000}, {"VERYSLOW", 12000}, {"slow", 0}}) {
        settings.Speed = QLatin1String(speed);
        EXPECT_EQ(waited(0) - waited(9), dwell) << speed;
    }
}

TEST_F(FilesAndNames, ClipboardIsUsedAndGivenBack) {
    page.clipboard = u"the operator's"_qs;
    settings.SendUsingClipboard = u"Y"_qs;
    const auto waited = [this](int characters) {
        const qint64 before = clock.waited();
        EXPECT_EQ(sendOne(kAni, QString(characters, QLatin1Char('x'))), QString());
        EXPECT_EQ(page.commands.count(u"pressPaste"_qs), 1);
        return clock.waited() - before;
    };
    EXPECT_EQ(waited(1000) - waited(999), 2000);
    EXPECT_EQ(page.clipboard, u"the operator's"_qs);
    settings.Headless = u"Y"_qs;
    EXPECT_EQ(sendOne(kAni, u"typed"_qs), QString());
    EXPECT_EQ(page.commands.count(u"pressPaste"_qs), 0);
    EXPECT_EQ(settings.SendUsingClipboard, u"N"_qs);
}

}  // namespace
}  // namespace kibo
