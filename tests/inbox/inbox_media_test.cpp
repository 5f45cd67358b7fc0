#include "inbox/inbox_media.h"

#include <QDir>

#include "inbox/media_file_name.h"
#include "inbox_fixture.h"

namespace kibo {
namespace {

/// Messages with files, on a page in memory whose downloads are the test's.
class ReceivedMedia : public test::Inbox {
 protected:
    ReceivedMedia() {
        settings.InboxMedia = u"Y"_qs;
        page.onSaveMedia = [this](const QString& id, const QString& kind, bool begins) {
            if (begins) asked << id;
            if (begins && onAsked) onAsked();
            return MediaStep{MediaStep::State::Asked, kind == u"document"_qs ? suffix : QString()};
        };
    }
    void come(std::initializer_list<const char*> kinds) {
        page.conversation.clear();
        for (const char* kind : kinds) {
            ArrivedMessage message;
            message.key = message.messageId = u"m%1"_qs.arg(++count_);
            message.title = u"Ani"_qs;
            message.kind = QLatin1String(kind);
            message.text = u"(%1)"_qs.arg(message.kind);
            page.conversation << message;
        }
        unread(u"Ani"_qs, u"Photo"_qs, {}, QString::number(kinds.size()));
        reader->BACA_WA();
    }
    void download(const QByteArray& content, const QString& name = u"5e0c"_qs) {
        QFile file(page.downloadFolder + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    /// Names of the saved files, as the table has them; "-" where there is none.
    std::string saved() {
        QStringList names;
        for (const QString& path : rows("file", "kibo_inbox").split(u'\n')) {
            EXPECT_TRUE(path.isEmpty() || QFile::exists(path)) << path.toStdString();
            names << (path.isEmpty() ? u"-"_qs : QFileInfo(path).fileName());
        }
        return names.join(u' ').toStdString();
    }
    QStringList downloadFolders() const {
        return QDir(folder.filePath(u"inbox"_qs)).entryList({u".download-*"_qs}, QDir::Dirs | QDir::Hidden);
    }

    QStringList asked;  // of which messages
    std::function<void()> onAsked;
    QString suffix;

 private:
    int count_ = 0;
};

const QByteArray kPng = QByteArray::fromHex("89504e470d0a1a0a0000000d49484452");

TEST_F(ReceivedMedia, IsSavedByWhatItIsAndNotedBesideItsRow) {
    onAsked = [this] { download(asked.size() < 3 ? kPng : QByteArrayLiteral("MZ")); };
    suffix = u"PDF"_qs;
    come({"photo", "document", "sticker", "text"});
    EXPECT_EQ(saved(), "7_2026-03-14_1.png 7_2026-03-14_2.pdf - -");
    EXPECT_EQ(rows("wa_text", "inbox where id = 1"), u"(photo)"_qs) << "as without";
    EXPECT_EQ(page.downloadFolder, QString()) << "where the operator's own downloads go";
    suffix = u"exe"_qs;
    QFile taken(folder.filePath(u"inbox/7_2026-03-14_5.file"_qs));
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    come({"document", "voice"});
    EXPECT_EQ(saved(), "7_2026-03-14_1.png 7_2026-03-14_2.pdf - - 7_2026-03-14_5 (2).file 7_2026-03-14_6.file");
    EXPECT_EQ(taken.size(), 0);
    EXPECT_EQ(downloadFolders(), QStringList());
    settings.InboxMedia = u"N"_qs;
    come({"photo"});
    EXPECT_EQ(asked.size(), 4);
}

TEST_F(ReceivedMedia, HoldsUpNoMessageAndTakesLateFilesForTheirOwn) {
    onAsked = [this] {
        clock.at(clock.monotonicMs() + 1'000, [this] { reader->storeWaiting(); });  // as the window's timer does
    };
    come({"photo", "video"});
    EXPECT_EQ(asked, QStringList(u"m1"_qs)) << "a second one could be mistaken for the first";
    const QString first = page.downloadFolder;
    EXPECT_FALSE(first.isEmpty());
    clock.wait(30'000);
    download(kPng, u"5e0c.crdownload"_qs);
    reader->storeWaiting();
    EXPECT_EQ(saved(), "- -");
    EXPECT_EQ(page.downloadFolder, QString());
    ASSERT_TRUE(QFile::rename(first + u"/5e0c.crdownload"_qs, first + u"/5e0c"_qs));
    reader->storeWaiting();
    EXPECT_EQ(saved(), "7_2026-03-14_1.png -");

    queue(u"6281234567890"_qs, u"x"_qs);
    gateway.queue.cmd_OutboxRefresh_Click();
    const qint64 before = clock.monotonicMs();
    come({"photo", "photo"});
    EXPECT_LT(clock.monotonicMs() - before, InboxMedia::kLongestWhileOthersWaitMs + 1'000);
    EXPECT_EQ(downloadFolders().size(), 1);
    clock.wait(InboxMedia::kMayBeginMs);
    reader->storeWaiting();
    EXPECT_EQ(downloadFolders().size(), 0) << "given up";
    EXPECT_EQ(saved(), "7_2026-03-14_1.png - - -");
    EXPECT_EQ(count("inbox"), 4);
}

TEST_F(ReceivedMedia, EndsWhereThereIsNoRoomAndTellsWhy) {
    onAsked = [this] { download(QByteArray(2'000, 'x'), u"5e0c.crdownload"_qs); };
    MediaFolder small(settings, clock, folder.path(), {.fileBytes = 1'000});
    InboxMedia limited({state, settings, page, clock, records, small});
    const auto add = [&] {
        IncomingRow row;
        row.messageId = u"m"_qs;
        row.kind = u"video"_qs;
        limited.add(row, {1, 1, {}});
        limited.save({});
    };
    add();
    EXPECT_TRUE(page.commands.contains(u"cancel 5e0c"_qs));
    EXPECT_EQ(state.mediaNotice, QString());

    asked.clear();
    settings.InboxMaxMB = u"1"_qs;
    QFile large(folder.filePath(u"inbox/large"_qs));
    ASSERT_TRUE(large.open(QIODevice::WriteOnly) && large.resize(1'100'000));
    come({"photo"});
    EXPECT_TRUE(state.mediaNotice.endsWith(u"holds more than InboxMaxMB, 1 MB"_qs)) << state.mediaNotice.toStdString();
    MediaFolder full(settings, clock, folder.path(), {.leftFreeBytes = 1LL << 60});
    EXPECT_TRUE(full.problem().contains(u"is full"_qs));
    settings.InboxFolder = folder.filePath(u"inbox/large/below"_qs);
    come({"photo"});
    EXPECT_TRUE(state.mediaNotice.endsWith(u"can't be made"_qs)) << state.mediaNotice.toStdString();
    EXPECT_EQ(count("inbox"), 2) << "reading goes on";
    EXPECT_EQ(asked.size(), 0);
    settings.InboxFolder.clear();
    large.remove();
    clock.wait(60'000);
    onAsked = [this] { download(kPng); };
    come({"photo"});
    EXPECT_EQ(state.mediaNotice, QString());
    EXPECT_EQ(saved(), "- - 7_2026-03-14_3.png");
}

TEST_F(ReceivedMedia, NothingThatRunsKeepsItsSuffix) {
    const char* expected[][2] = {{"pdf", "pdf"},  {"DOCX", "docx"},      {"", "file"},
                                 {"exe", "file"}, {"SCR", "file"},       {"../x", "file"},
                                 {"a b", "file"}, {"overlong1", "file"}, {"html", "file"}};
    for (const auto& [shown, stored] : expected)
        EXPECT_EQ(storableSuffix(QLatin1String(shown)).toStdString(), stored) << shown;
    EXPECT_EQ(storableName(u"../a:b*\u202Ec.txt"_qs), u"..abc.txt"_qs);
}

}  // namespace
}  // namespace kibo
