#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
using test::FakePage;
const QString kAni = QStringLiteral("6281111111111");
const QString kFamily = QStringLiteral("120363000000000001");

/// A connected gateway, with a picture and a document to send.
class FilesAndNames : public Engine {
 protected:
    FilesAndNames() {
        page.names = {{kAni, QStringLiteral("Ani")},
                      {kDummy, QStringLiteral("Dummy")},
                      {kFamily, QStringLiteral("Ani's Family")}};
        picture = write(QString::fromUtf8("the \"best\" 'pïcture' 😀.PNG"), "not empty");
        document = write(QStringLiteral("bill.pdf"), "not empty");
        tick();
    }
    QString write(const QString& name, const QByteArray& content) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    }
    QString sendOne(const QString& to, const QString& text, const QString& media = {}, const QString& file = {},
                    int mode = 0) {
        page.commands.clear();
        const qint64 id = queue(to, text, mode, media, file);
        runQueue();
        return status(id);
    }
    const FakePage::Delivered& last() const { return page.delivered.back(); }

    QString picture, document;
};

TEST_F(FilesAndNames, FilesGoOutWithTheTextAsCaptionOfTheFirst) {
    EXPECT_EQ(sendOne(kAni, QStringLiteral("for %name%"), picture, document), QString());
    ASSERT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(page.delivered[0].number + page.delivered[0].text + page.delivered[0].file,
              kAni + QStringLiteral("for Ani") + picture);
    EXPECT_EQ(page.delivered[0].input, FileInput::Media);
    EXPECT_EQ(last().text + last().file, document);
    EXPECT_EQ(last().input, FileInput::Document);
    EXPECT_EQ(page.commands.count(QStringLiteral("pressEnter")), 0);

    EXPECT_EQ(sendOne(kAni, {}, write(QStringLiteral("p.svg"), "<svg/>")), QString());
    EXPECT_EQ(last().input, FileInput::Document) << "the page can't show it as a picture";
}

TEST_F(FilesAndNames, FileThatCannotBeSentFailsBeforeTheChatIsOpened) {
    settings.MaxFileMB = QStringLiteral("1");
    const qsizetype clicks = page.clicks.count(kAni);
    const struct {
        QString path;
        const char* reason;
    } cases[] = {{folder.filePath(QStringLiteral("none.png")), "the media file is not there"},
                 {folder.path(), "the media file is a folder"},
                 {QStringLiteral("/dev/null"), "the media file is no ordinary file"},
                 {write(QStringLiteral("e.png"), {}), "the media file is empty"},
                 {picture + QLatin1Char('\n') + document, "the media file has a line break in its name"},
                 {write(QStringLiteral("big.png"), QByteArray(1024 * 1024 + 1, 'x')),
                  "the media file is too large: 2 MB, and 1 MB are allowed (MaxFileMB)"}};
    for (const auto& c : cases) {
        EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), c.path), QStringLiteral("fail")) << c.reason;
        EXPECT_EQ(lastReason(), QLatin1String(c.reason));
    }
    settings.ChromeDriver = QStringLiteral("http://192.0.2.1:9515");
    EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), picture), QStringLiteral("fail"));
    EXPECT_TRUE(lastReason().contains(QStringLiteral("another computer")));
    EXPECT_EQ(page.clicks.count(kAni), clicks);
}

TEST_F(FilesAndNames, AddressesAreFetchedAndOnlyWhatWasFetchedIsRemoved) {
    settings.ClearTmp = QStringLiteral("Y");
    const QString kept = write(QStringLiteral("kept.png"), "x");
    QString fetched;
    fetch = [&](const QString& address) -> Result<QString> {
        if (address.endsWith(QLatin1Char('2'))) return Failure{FailureKind::Remote, "no answer"};
        return fetched = write(QStringLiteral("fetched.png"), "y");
    };
    EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), QStringLiteral("hTTps://example.org/1"), document), QString());
    ASSERT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(page.delivered[0].file, fetched);
    EXPECT_FALSE(QFile::exists(fetched));
    EXPECT_TRUE(QFile::exists(kept) && QFile::exists(document));
    EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), {}, QStringLiteral("http://example.org/2")), QStringLiteral("fail"));
    EXPECT_EQ(lastReason(), QStringLiteral("the document could not be fetched: no answer"));
}

TEST_F(FilesAndNames, MessageWaitsInTheQueueWhileItsFilesAreFetched) {
    int fetches = 0;
    const qint64 id = queue(kAni, QStringLiteral("x"), 0, QStringLiteral("http://example.org/1"));
    fetch = [&](const QString&) -> Result<QString> {
        if (++fetches == 1) gateway.pacing.cmd_Pause_Click();
        EXPECT_EQ(count(QStringLiteral("outbox")), 1);
        EXPECT_TRUE(journal.entries().empty());
        return picture;
    };
    for (int i = 0; i < 5; ++i) tick();
    EXPECT_TRUE(page.delivered.empty()) << "paused during the download";
    gateway.pacing.cmd_Pause_Click();
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(fetches, 1);
    EXPECT_EQ(status(id), QString());

    // Ended in the middle of the next download.
    queue(kAni, QStringLiteral("x"), 0, {}, QStringLiteral("http://example.org/1"));
    fetch = [&](const QString&) -> Result<QString> {
        clock.stopWaiting();
        page.presence = PageLook::Presence::Gone;
        return Failure{FailureKind::Transport, "the program is about to end"};
    };
    tick();
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    EXPECT_EQ(state.failedCount, 0);
}

TEST_F(FilesAndNames, PreviewThatGoesWrongFailsTheMessage) {
    using Preview = FakePage::Preview;
    const struct {
        Preview preview;
        const char* reason;
    } cases[] = {
        {Preview::NeverComes, "the page showed no preview of the file"},
        {Preview::Vanishes, "the file's preview was closed before it was sent"},
        {Preview::Stays, "in doubt: the file was sent, but its preview did not close"},
        {Preview::GoesUnsent, "in doubt: the file's preview has gone, but the file did not appear in the chat"}};
    for (const auto& c : cases) {
        page.preview = c.preview;
        EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), picture), QStringLiteral("fail")) << c.reason;
        EXPECT_EQ(lastReason(), QLatin1String(c.reason));
        EXPECT_LE(page.commands.count(QStringLiteral("sendPreview")), 1);
        EXPECT_LE(page.commands.count(QStringLiteral("lookAtPreview")), 200);
    }
    EXPECT_TRUE(page.delivered.empty());
    page.preview = Preview::Comes;
    page.previewDelay = 5000;
    page.uploadDelay = 60'000;
    EXPECT_EQ(sendOne(kAni, QStringLiteral("slow"), picture), QString());
}

TEST_F(FilesAndNames, FileNeverReachesAChatThatCameUpMeanwhile) {
    page.previewDelay = 3000;
    clock.at(clock.monotonicMs() + 2500, [this] { page.open(QStringLiteral("6283333333333")); });
    EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), picture, document), QStringLiteral("fail"));
    EXPECT_EQ(lastReason(), QStringLiteral("another chat came up before the file was sent"));
    page.previewDelay = 0;
    EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), picture), QString());
    // It comes up between the two files.
    page.uploadDelay = 10'000;
    clock.at(clock.monotonicMs() + 13'500, [this] { page.open(QStringLiteral("6283333333333")); });
    page.previewDelay = 3000;
    EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), picture, document), QStringLiteral("fail"));
    EXPECT_TRUE(lastReason().contains(QStringLiteral("the media file has arrived"))) << lastReason().toStdString();
    for (const auto& message : page.delivered) EXPECT_EQ(message.number, kAni);
}

TEST_F(FilesAndNames, ContactsAndGroupsAreFoundByTheirWholeName) {
    EXPECT_EQ(sendOne(QStringLiteral("\u00a0aNI \u200e"), QStringLiteral("for %NAME%"), {}, {}, 2), QString());
    EXPECT_EQ(last().number + last().text, kAni + QStringLiteral("for ANI"));
    EXPECT_EQ(sendOne(QStringLiteral("ani's family"), QStringLiteral("all"), picture), QString());
    EXPECT_EQ(last().number + last().text, kFamily + QStringLiteral("all"));
    EXPECT_EQ(sendOne(kAni, QStringLiteral("by number"), {}, {}, 9), QString());
    EXPECT_EQ(sendOne(QStringLiteral("Family"), QStringLiteral("x")), QStringLiteral("fail"));
    EXPECT_EQ(lastReason(), QStringLiteral("no chat has this name")) << "a part of a name is none";
    page.names[QStringLiteral("6282222222222")] = QStringLiteral("ANI ");
    page.searchDelay = 1000;
    EXPECT_EQ(sendOne(QStringLiteral("Ani"), QStringLiteral("x")), QStringLiteral("fail"));
    EXPECT_EQ(lastReason(), QStringLiteral("ambiguous: 2 chats have this name"));
    EXPECT_EQ(page.delivered.size(), 3u);
    EXPECT_TRUE(page.box(Box::Search).isEmpty());
}

TEST_F(FilesAndNames, NameIsTypedOnlyIntoTheChatWithThisTitle) {
    page.openDelay = [this](const QString& number) {
        if (number == kAni) clock.at(clock.monotonicMs() + 500, [this] { page.open(QStringLiteral("6283333333333")); });
        return number == kAni ? 60'000 : 0;
    };
    EXPECT_EQ(sendOne(QStringLiteral("Ani"), QStringLiteral("x")), QStringLiteral("fail"));
    EXPECT_EQ(lastReason(), QStringLiteral("the chat did not open in time"));
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(FilesAndNames, ModeNineLeavesTheDwellOut) {
    settings.Speed = QStringLiteral("SLOW");
    const auto waited = [this](int mode) {
        const qint64 before = clock.waited();
        EXPECT_EQ(sendOne(kAni, QStringLiteral("x"), {}, {}, mode), QString());
        return clock.waited() - before;
    };
    EXPECT_EQ(waited(0) - waited(9), 5000);
}

TEST_F(FilesAndNames, ClipboardIsUsedAndGivenBack) {
    page.clipboard = QStringLiteral("the operator's");
    settings.SendUsingClipboard = QStringLiteral("Y");
    const auto waited = [this](int characters) {
        const qint64 before = clock.waited();
        EXPECT_EQ(sendOne(kAni, QString(characters, QLatin1Char('x'))), QString());
        EXPECT_EQ(page.commands.count(QStringLiteral("pressPaste")), 1);
        return clock.waited() - before;
    };
    EXPECT_EQ(waited(1000) - waited(999), 2000);
    EXPECT_EQ(page.clipboard, QStringLiteral("the operator's"));
    settings.Headless = QStringLiteral("Y");
    EXPECT_EQ(sendOne(kAni, QStringLiteral("typed")), QString());
    EXPECT_EQ(page.commands.count(QStringLiteral("pressPaste")), 0);
    EXPECT_EQ(settings.SendUsingClipboard, QStringLiteral("N"));
}

}  // namespace
}  // namespace kibo
