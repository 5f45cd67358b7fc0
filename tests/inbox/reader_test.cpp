#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include "base/log.h"
#include "inbox/arrivals.h"
#include "inbox/chat_lister.h"
#include "inbox_fixture.h"

namespace kibo {
namespace {

const QString kAni = QStringLiteral("Ani");

class Reader : public test::Inbox {};

TEST_F(Reader, StoresTheLastMessageOfEachUnreadChatOnceAndLeavesIt) {
    page.list = {{QString(), QStringLiteral("3"), {u"All"_qs, u"Unread"_qs, u"3"_qs, u"Groups"_qs, u"3"_qs}},
                 {kAni, QString(), {kAni, u"15:09"_qs, u"read long ago"_qs}},
                 {u"Club"_qs, QString(), {u"Club"_qs, u"15:09"_qs, u"Budi"_qs, u":"_qs, u"4711"_qs}}};
    unread(QStringLiteral("+62 812-3456-7890"), QStringLiteral("hello"), {}, QStringLiteral("99+"));
    unread(QStringLiteral("Team"), QStringLiteral("12345"), QStringLiteral("Budi"));
    unread(QStringLiteral("Citra"), QStringLiteral("It's \"4\" o'clock 😀"));
    page.headerPicture = QStringLiteral("https://p/x?t=s&u=6285500%40c.us&i=1");
    reader->BACA_WA();
    EXPECT_EQ(rows(), QStringLiteral("6285500||It's \"4\" o'clock 😀\nTeam|Budi|12345\n6285500||hello"));
    EXPECT_EQ(rows("wa_time", "inbox where id = 1"), QStringLiteral("2026-03-14 15:09:26"));
    EXPECT_EQ(page.clicks, QStringList({kDummy, kDummy, kDummy})) << "each chat is left";
    EXPECT_EQ(state.ms.text(1, 1), QStringLiteral("hello")) << "newest first";
    EXPECT_EQ(state.ms.text(1, 2), QStringLiteral("14/3/26 15:09"));
    EXPECT_EQ(state.Inbox_Cnt.caption, QStringLiteral("3"));
    EXPECT_EQ(state.len1.text, QString::number(page.chatListLength));
    EXPECT_TRUE(journal->entries().empty());

    page.commands.clear();
    reader->BACA_WA();
    EXPECT_EQ(page.commands, QStringList(u"readChatList"_qs)) << "nothing unread costs one command";
    EXPECT_TRUE(state.Timer2.enabled());
    EXPECT_FALSE(state.busy || state.waitread.visible);
}

TEST_F(Reader, NumberComesFromPictureTitleOrMessagesInThisOrder) {
    const auto numberFor = [this](const char* picture, const char* title, const char* named) {
        page.headerPicture = QLatin1String(picture);
        page.namedNumber = QLatin1String(named);
        unread(QLatin1String(title), QStringLiteral("from ") + QLatin1String(title) + QLatin1String(picture));
        reader->BACA_WA();
        page.list.clear();
        return rows("wa_no", "inbox where id = (select max(id) from inbox)").toStdString();
    };
    EXPECT_EQ(numberFor("https://p/x?u=1&u=62811%40c.us", "Ani", "62899"), "62811");
    EXPECT_EQ(numberFor("https://p/x", "+62 812-3456-7890", "62899"), "6281234567890");
    EXPECT_EQ(numberFor("", "Ani", "62899"), "62899");
    EXPECT_EQ(numberFor("", "Ani", ""), "Ani");
    settings.GetNumberInbox = QStringLiteral("N");
    EXPECT_EQ(numberFor("https://p/x?u=1&u=62811%40c.us", "Ani", "62899"), "Ani");
}

TEST_F(Reader, TypingAndAnEmptyGroupLineEndThePass) {
    unread(kAni, QStringLiteral("later"));
    unread(QStringLiteral("Budi"), QStringLiteral("TYPING…"));
    reader->BACA_WA();
    EXPECT_EQ(rows(), QString());
    EXPECT_EQ(page.clicks, QStringList(kDummy));
    EXPECT_TRUE(state.Timer2.enabled());

    page.list[0] = {u"Club"_qs, u"1"_qs, {u"Club"_qs, u"15:09"_qs, u"Budi"_qs, u":"_qs, u"1"_qs}};
    reader->BACA_WA();
    EXPECT_EQ(rows(), QString());
    EXPECT_EQ(page.clicks.size(), 2);
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("later"));
}

TEST_F(Reader, ChatThatKeepsItsMarkIsStoredThreeTimesThenThePageIsLoadedAnew) {
    unread(kAni, QStringLiteral("hello"));
    page.stickyBadges = 100;
    for (int pass = 1; pass <= 3; ++pass) reader->BACA_WA();
    EXPECT_FALSE(page.commands.contains(QStringLiteral("refresh")));
    reader->BACA_WA();
    EXPECT_EQ(page.commands.count(QStringLiteral("refresh")), 1);
    unread(QStringLiteral("Budi"), QStringLiteral("hi"));
    page.list.move(0, 1);
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_no"), QStringLiteral("Ani\nAni\nAni\nBudi")) << "no fourth copy, and the others are read";
}

TEST_F(Reader, NothingIsReadWhileSomethingElseGoesOn) {
    unread(kAni, QStringLiteral("hello"));
    const auto reads = [this] {
        const qsizetype before = page.commands.size();
        reader->BACA_WA();
        return page.commands.size() > before;
    };
    settings.DisableRead = QStringLiteral("Y");
    EXPECT_FALSE(reads());
    EXPECT_TRUE(state.l_disableread.visible);
    settings.DisableRead.clear();
    for (bool* blocker : {&state.dboff.visible, &state.wait.visible, &state.stepRunning}) {
        *blocker = true;
        EXPECT_FALSE(reads());
        *blocker = false;
    }
    // The queue waits while a chat is read, and goes on afterwards.
    queue(QStringLiteral("6281234567890"), QStringLiteral("x"));
    page.openDelay = [](const QString&) { return 300; };
    clock.at(clock.monotonicMs() + 50, [this] {
        EXPECT_TRUE(state.waitread.visible);
        gateway.machine.Timer_KIBO_Timer();
        EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    });
    EXPECT_TRUE(reads());
    EXPECT_FALSE(state.l_disableread.visible);
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].number, QStringLiteral("6281234567890"));
}

TEST_F(Reader, ReadsWhileTheFilesOfAMessageAreFetched) {
    page.openDelay = [](const QString& number) { return number == kDummy ? 1500 : 0; };
    page.previewDelay = 3000;
    tick();
    ChatListWatch watch(state, page, clock, [this] { reader->BACA_WA(); });
    QFile picture(folder.filePath(QStringLiteral("p.png")));
    ASSERT_TRUE(picture.open(QIODevice::WriteOnly) && picture.write("x") == 1 && picture.flush());
    fetch = [&](const QString&) -> Result<QString> {
        unread(kAni, QStringLiteral("hello"));
        watch.Timer2_Timer();
        EXPECT_EQ(rows("wa_text"), QStringLiteral("hello"));
        EXPECT_TRUE(state.step.startsWith(QStringLiteral("Preparing the files"))) << state.step.toStdString();
        return picture.fileName();
    };
    const qint64 id = queue(QStringLiteral("6281234567890"), QStringLiteral("x"), 0, QStringLiteral("https://h/p.png"));
    runQueue();
    ASSERT_EQ(page.delivered.size(), 1u) << "the dummy's chat, opened late by the reader, was waited for";
    EXPECT_EQ(page.delivered[0].number, QStringLiteral("6281234567890"));
    EXPECT_EQ(status(id), QString());
}

TEST_F(Reader, ListIsReadToItsEndAtTheStartAndUnderUnreadRowsLater) {
    page.rowsInSight = 5;
    for (int i = 0; i < 13; ++i)
        page.list.append({QString::number(i), QString(), {QString::number(i), u"15:09"_qs, u"old"_qs}});
    page.list[11] = {kAni, u"1"_qs, {kAni, u"Friday"_qs, u"waited"_qs, u"1"_qs}};
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("waited"));
    page.commands.clear();
    reader->BACA_WA();
    EXPECT_EQ(page.commands.count(QStringLiteral("readChatList")), 1);
    for (int i = 0; i < 7; ++i) page.list[i] = {kAni, u"1"_qs, {kAni, u"15:09"_qs, QString::number(i), u"1"_qs}};
    reader->BACA_WA();
    EXPECT_EQ(count(QStringLiteral("inbox")), 8);
}

TEST_F(Reader, PassGivesWayToMessagesThatWait) {
    ChatListWatch watch(state, page, clock, [this] { reader->BACA_WA(); });
    watch.Timer2_Timer();
    for (int i = 0; i < 20; ++i) unread(QString::number(i), QStringLiteral("hello"));
    queue(QStringLiteral("6281234567890"), QStringLiteral("x"));
    gateway.queue.cmd_OutboxRefresh_Click();
    const qint64 began = clock.monotonicMs();
    watch.Timer2_Timer();
    EXPECT_LT(clock.monotonicMs() - began, 8'000);
    EXPECT_LT(count(QStringLiteral("inbox")), 20);
    runQueue();
    page.rowsInSight = 5;  // sending has moved the others up: nothing in sight is unread, and the length is known
    for (int i = 0; i < 5; ++i) page.list.prepend({kAni, QString(), {kAni, u"15:09"_qs, u"sent to"_qs}});
    for (int i = 0; i < 100 && count(QStringLiteral("inbox")) < 20; ++i) {
        state.len1.text = QString::number(page.chatListLength);
        clock.wait(500);
        watch.Timer2_Timer();
    }
    EXPECT_EQ(count(QStringLiteral("inbox")), 20);
}

TEST_F(Reader, ChatsOfThePageAreListedAndNothingIsStored) {
    ChatLister lister(state, page);
    page.listed = {
        {u"Ani"_qs, u"https://host/p?t=s&u=62811%40c.us"_qs}, {u"+62 812-3456-789"_qs, {}}, {u"Team 7"_qs, {}}};
    const auto line = [&](int row) { return state.ms.rows->text(row, 0) + u'\t' + state.ms.rows->text(row, 1); };
    lister.len2_Click();
    ASSERT_EQ(state.ms.rowCount(), 4) << "with the heading";
    EXPECT_EQ(line(0) + u'|' + line(1) + u'|' + line(2), u"62811\tAni|628123456789\t+62 812-3456-789|\tTeam 7"_qs);
    EXPECT_EQ(count(QStringLiteral("inbox")), 0);
    unread(kAni, QStringLiteral("hello"));
    reader->BACA_WA();
    EXPECT_EQ(line(0) + u'|' + line(1), u"Ani\thello|62811\tAni"_qs) << "a message joins them";
    grid.cmd_InboxRefresh_Click();
    EXPECT_EQ(line(0) + u'|' + line(1), u"Ani\thello|\t"_qs);
}

TEST_F(Reader, GridsOfManyRowsLetTheStoreCutBackItsLog) {
    const QString path = folder.filePath(u"kb.mdb"_qs);
    for (const char* filled : {"inbox", "outbox"})
        test::sqlite(path, QStringLiteral("insert into %1 (wa_no, wa_text) with recursive n(i) as (select 1 union all "
                                          "select i + 1 from n where i < 300) select i, '%2' from n")
                               .arg(QLatin1String(filled), QString(1000, u'x')));
    for (int i = 0; i < 60; ++i) {
        clock.wait(5000);
        ASSERT_TRUE(database.execute(u"update inbox set status = ?"_qs, {QString::number(i)}));
        const auto shown = std::pair(state.ms_out.rows, state.ms.rows);  // by the window, until it looks again
        gateway.queue.cmd_OutboxRefresh_Click();
        grid.keepFresh();
        ASSERT_FALSE(state.ms_out.text(300, OutboxQueue::Text).isEmpty() || state.ms.text(300, 1).isEmpty()) << i;
    }
    EXPECT_LT(QFileInfo(path + u"-wal"_qs).size(), 8 * 1024 * 1024);
}

TEST_F(Reader, MultiSessionRowsCarryTheProfile) {
    settings.Multi = QStringLiteral("Y");
    ASSERT_TRUE(
        database.Execute(QStringLiteral("insert into web_user (id, bot_url) values ('7', 'http://bot/seven')")));
    unread(kAni, QStringLiteral("a b?"));
    reader->BACA_WA();
    EXPECT_EQ(rows("tipe, PROFIL, wa_no, wa_text", "multi"), QStringLiteral("I|7|Ani|a b?"));
    EXPECT_EQ(count(QStringLiteral("inbox")), 0);
    EXPECT_EQ(toBots, QStringList(u"http://bot/seven?wa_no=Ani&wa_text=a+b%3F&profil=7&xxx=0.25"_qs));
    ASSERT_TRUE(database.Execute(QStringLiteral("update web_user set bot_url = ''")));
    unread(kAni, QStringLiteral("again"));
    reader->BACA_WA();
    EXPECT_EQ(toBots.size(), 1) << "a profile without an address has no web bot";
}

TEST_F(Reader, WhatTheDatabaseRefusesIsStoredLater) {
    unread(kAni, QStringLiteral("hello"));
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table inbox rename to away")));
    reader->BACA_WA();
    EXPECT_EQ(journal->entries().size(), 1u);
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table away rename to inbox")));
    clock.wait(10'000);
    settings.UseBotPHP = QStringLiteral("Y");
    settings.PHP = QStringLiteral("http://bot/ask");
    queue(QStringLiteral("6281234567890"), QStringLiteral("x"));
    whileBotIsAsked = [this] {
        unread(QStringLiteral("Budi"), QStringLiteral("second"));
        reader->BACA_WA();
        reader->storeWaiting();
        tick();
        EXPECT_EQ(count(QStringLiteral("outbox")), 1) << "both directions wait";
    };
    reader->storeWaiting();
    reader->storeWaiting();
    EXPECT_EQ(toBots.size(), 1);
    EXPECT_EQ(rows(), QStringLiteral("Ani||hello"));
    EXPECT_TRUE(journal->entries().empty());
}

TEST_F(Reader, MessageThatTheTableRefusesHoldsUpNoOther) {
    ASSERT_TRUE(
        database.Execute(QStringLiteral("create trigger refuse before insert on inbox when new.wa_text = 'no' "
                                        "begin select raise(abort, 'refused'); end")));
    unread(kAni, QStringLiteral("yes"));
    unread(QStringLiteral("Budi"), QStringLiteral("no"));
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("yes"));
    EXPECT_EQ(state.inboxNotice, QStringLiteral("1 received message is refused by the database: refused"));
    begin();
    unread(QStringLiteral("Citra"), QStringLiteral("yes too"));
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("yes\nyes too"));
    ASSERT_TRUE(database.Execute(QStringLiteral("drop trigger refuse")));
    clock.wait(10'000);
    reader->storeWaiting();
    EXPECT_EQ(count(QStringLiteral("inbox")), 2) << "not asked at once";
    clock.wait(RefusedRows<quint64>::kPauseMs);
    reader->storeWaiting();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("yes\nyes too\nno"));
    EXPECT_EQ(state.inboxNotice, QString());
}

TEST_F(Reader, WithoutItsJournalNothingIsReadAndTheOperatorIsTold) {
    const QString file = folder.filePath(QStringLiteral("inbox.journal"));
    ASSERT_TRUE(QDir().mkdir(file));  // in the place of the file
    unread(kAni, QStringLiteral("hello"));
    const quint64 before = log::revision();
    for (int i = 0; i < 3; ++i) reader->BACA_WA();
    EXPECT_TRUE(state.inboxNotice.startsWith(QStringLiteral("The inbox is not read: "))) << "and not silently";
    EXPECT_EQ(log::revision() - before, 1u) << "the same trouble is told once";
    ASSERT_TRUE(QDir().rmdir(file));
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("hello"));
    EXPECT_EQ(state.inboxNotice, QString());
}

/// What a crash may leave: the message known to the journal only, to journal and page, or to journal and database.
TEST_F(Reader, AfterACrashEachMessageIsThereOnce) {
    struct Crash {};
    // Before the page has opened the chat: its mark is still there.
    unread(kAni, QStringLiteral("one"));
    page.beforeEntryOpens = [] { throw Crash(); };
    EXPECT_THROW(reader->BACA_WA(), Crash);
    page.beforeEntryOpens = nullptr;
    begin();
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("one"));

    // Opened, and not stored.
    unread(kAni, QStringLiteral("two"));
    clock.at(clock.monotonicMs() + 50, [] { throw Crash(); });
    EXPECT_THROW(reader->BACA_WA(), Crash);
    EXPECT_EQ(rows("wa_text"), QStringLiteral("one"));
    begin();
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("one\ntwo"));

    // Stored, and still in the journal.
    IncomingRow row{false, QStringLiteral("7"), kAni, kAni, QString(), QStringLiteral("two"), QString()};
    row.wa_time = rows("wa_time", "inbox where wa_text = 'two'");
    ASSERT_TRUE(journal->add(row).ok());
    begin();
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_text"), QStringLiteral("one\ntwo"));
    EXPECT_TRUE(journal->entries().empty());
}

/// What came in while its chat was open, as the watch in the page tells it.
TEST_F(Reader, MessagesTheListDoesNotTellOfBecomeRowsOnce) {
    Arrivals arrivals({state, settings, elements, page, clock, *journal});
    const auto arrived = [](const char* key, const QString& text) {
        return ArrivedMessage{QString::fromLatin1(key), kAni, u"62811"_qs, {}, false, {}, text, 4'000, {}, {}, {}};
    };
    page.arrived = {arrived("1", u"one"_qs), arrived("2", u"typing…"_qs), arrived("3", u"after typing"_qs),
                    arrived("4", QString())};
    page.arrived[1].badge = u"2"_qs;  // what the list showed over an unread message when its chat was opened
    page.arrived[1].lines = QStringList{kAni, u"15:09"_qs, u"typing…"_qs, u"2"_qs};
    page.arrived[1].text = u"two"_qs;
    page.arrived[2].previewBefore = u"typing…"_qs;
    page.silent = true;  // it doesn't forget them
    arrivals.take(page.arrived);
    arrivals.take(page.arrived);
    page.silent = false;
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_no, wa_text, wa_time"),
              QStringLiteral("62811|one|2026-03-14 15:09:22\n62811|two|2026-03-14 15:09:22\n"
                             "62811|(media)|2026-03-14 15:09:22"));
    settings.DisableRead = QStringLiteral("Y");
    page.arrived = {arrived("5", u"five"_qs)};
    arrivals.take(page.arrived);
    EXPECT_TRUE(page.arrived.isEmpty() && journal->entries().empty());
}

}  // namespace
}  // namespace kibo
