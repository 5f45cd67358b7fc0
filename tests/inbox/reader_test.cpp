#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include "base/log.h"
#include "inbox/arrivals.h"
#include "inbox/chat_lister.h"
#include "inbox_fixture.h"

namespace kibo {
namespace {

const QString kAni = u"Ani"_qs;

class Reader : public test::Inbox {
 protected:
    static ArrivedMessage message(const char* id, const QString& text) {
        ArrivedMessage message;
        message.key = message.messageId = QString::fromLatin1(id);
        message.title = kAni;
        message.number = u"62811"_qs;
        message.text = text;
        message.ageMs = 4'000;
        return message;
    }
    /// Reads; then the inbox holds these texts, one in each line.
    void read(const QString& texts) {
        reader->BACA_WA();
        EXPECT_EQ(rows("wa_text"), texts);
    }
    void readAfterRestart(const QString& texts) {
        begin();
        read(texts);
        EXPECT_TRUE(journal->entries().empty());
    }
};

TEST_F(Reader, StoresAndShowsWhatIsUnreadAndIsIdleAfterwards) {
    unread(u"Team"_qs, u"12345"_qs, u"Budi"_qs);
    unread(kAni, u"It's \"4\" o'clock 😀"_qs, {}, u"99+"_qs);
    reader->BACA_WA();
    EXPECT_EQ(rows(), u"Ani||It's \"4\" o'clock 😀\nTeam|Budi|12345"_qs);
    EXPECT_EQ(rows("wa_time", "inbox where id = 1"), u"2026-03-14 15:09:26"_qs);
    EXPECT_EQ(state.ms.text(1, 1), u"12345"_qs) << "newest first";
    EXPECT_EQ(state.ms.text(1, 2), u"14/3/26 15:09"_qs);
    EXPECT_EQ(state.Inbox_Cnt.caption, u"2"_qs);
    EXPECT_EQ(state.len1.text, QString::number(page.chatListLength));

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
        unread(QLatin1String(title), u"from "_qs + QLatin1String(title) + QLatin1String(picture));
        reader->BACA_WA();
        page.list.clear();
        return rows("wa_no", "inbox where id = (select max(id) from inbox)").toStdString();
    };
    EXPECT_EQ(numberFor("https://p/x?u=1&u=62811%40c.us", "Ani", "62899"), "62811");
    EXPECT_EQ(numberFor("https://p/x", "+62 812-3456-7890", "62899"), "6281234567890");
    EXPECT_EQ(numberFor("", "Ani", "62899"), "62899");
    EXPECT_EQ(numberFor("", "Ani", ""), "Ani");
    settings.GetNumberInbox = u"N"_qs;
    EXPECT_EQ(numberFor("https://p/x?u=1&u=62811%40c.us", "Ani", "62899"), "Ani");
}

TEST_F(Reader, EmptyGroupLineEndsThePass) {
    unread(kAni, u"later"_qs);
    page.list.prepend({u"Club"_qs, u"1"_qs, {u"Club"_qs, u"15:09"_qs, u"Budi"_qs, u":"_qs, u"1"_qs}});
    read({});
    EXPECT_EQ(page.clicks, QStringList(kDummy));
    EXPECT_TRUE(state.Timer2.enabled());
    read(u"later"_qs);
}

TEST_F(Reader, ChatThatKeepsItsMarkIsStoredThreeTimesThenThePageIsLoadedAnew) {
    unread(kAni, u"hello"_qs);
    page.stickyBadges = 100;
    for (int pass = 1; pass <= 3; ++pass) reader->BACA_WA();
    EXPECT_FALSE(page.commands.contains(u"refresh"_qs));
    reader->BACA_WA();
    EXPECT_EQ(page.commands.count(u"refresh"_qs), 1);
    unread(u"Budi"_qs, u"hi"_qs);
    page.list.move(0, 1);
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_no"), u"Ani\nAni\nAni\nBudi"_qs) << "no fourth copy, and the others are read";
}

/// A number that counts nothing, in a chat that the page has not marked.
TEST_F(Reader, NumberThatStaysWithoutAMarkEndsTheReadingUntilItIsGone) {
    unread(kAni, u"4711"_qs);
    page.list[0].marked = false;
    page.stickyBadges = 100;
    for (int pass = 0; pass < 8; ++pass) reader->BACA_WA();
    EXPECT_EQ(rows("wa_no"), u"Ani\nAni\nAni"_qs);
    EXPECT_EQ(state.readingChanged, u"XX_UnreadBadge"_qs);
    unread(u"Budi"_qs, u"hi"_qs);
    gateway.reading.observe({.filled = 2, .titled = 2, .counted = 2, .marked = 1});
    read(u"4711\n4711\n4711"_qs);
    page.list.removeLast();
    gateway.reading.observe({.filled = 1, .titled = 1, .counted = 1, .marked = 1});
    read(u"4711\n4711\n4711\nhi"_qs);
}

TEST_F(Reader, NothingIsReadWhileSomethingElseGoesOn) {
    unread(kAni, u"hello"_qs);
    const auto reads = [this] {
        const qsizetype before = page.commands.size();
        reader->BACA_WA();
        return page.commands.size() > before;
    };
    settings.DisableRead = u"Y"_qs;
    EXPECT_FALSE(reads());
    EXPECT_TRUE(state.l_disableread.visible);
    settings.DisableRead.clear();
    for (bool* blocker : {&state.dboff.visible, &state.wait.visible, &state.stepRunning}) {
        *blocker = true;
        EXPECT_FALSE(reads());
        *blocker = false;
    }
    // The queue waits while a chat is read, and goes on afterwards.
    queue(u"6281234567890"_qs, u"x"_qs);
    page.openDelay = [](const QString&) { return 300; };
    clock.at(clock.monotonicMs() + 50, [this] {
        EXPECT_TRUE(state.waitread.visible);
        gateway.machine.Timer_KIBO_Timer();
        EXPECT_EQ(count("outbox"), 1);
    });
    EXPECT_TRUE(reads());
    EXPECT_FALSE(state.l_disableread.visible);
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].number, u"6281234567890"_qs);
}

TEST_F(Reader, ReadsWhileTheFilesOfAMessageAreFetched) {
    page.openDelay = [](const QString& number) { return number == kDummy ? 1500 : 0; };
    page.previewDelay = 3000;
    tick();
    ChatListWatch watch(state, page, clock, gateway.ticks, gateway.reading, [this] { reader->BACA_WA(); });
    fetch = [&](const QString&) -> Result<QString> {
        unread(kAni, u"hello"_qs);
        watch.Timer2_Timer();
        EXPECT_EQ(rows("wa_text"), u"hello"_qs);
        EXPECT_TRUE(state.step.startsWith(u"Preparing the files"_qs)) << state.step.toStdString();
        return test::written(folder.filePath(u"p.png"_qs), "x");
    };
    const qint64 id = queue(u"6281234567890"_qs, u"x"_qs, 0, u"https://h/p.png"_qs);
    runQueue();
    ASSERT_EQ(page.delivered.size(), 1u) << "the dummy's chat, opened late by the reader, was waited for";
    EXPECT_EQ(page.delivered[0].number, u"6281234567890"_qs);
    EXPECT_EQ(status(id), QString());
}

TEST_F(Reader, ListIsReadToItsEndAtTheStartAndUnderUnreadRowsLater) {
    page.rowsInSight = 5;
    for (int i = 0; i < 13; ++i)
        page.list.append({QString::number(i), QString(), {QString::number(i), u"15:09"_qs, u"old"_qs}});
    page.list[11] = {kAni, u"1"_qs, {kAni, u"Friday"_qs, u"waited"_qs, u"1"_qs}};
    ChatListWatch watch(state, page, clock, gateway.ticks, gateway.reading, [this] { reader->BACA_WA(); });
    state.len1.text = QString::number(page.chatListLength);
    watch.Timer2_Timer();
    EXPECT_EQ(rows("wa_text"), u"waited"_qs) << "whatever the length";
    page.commands.clear();
    watch.Timer2_Timer();
    EXPECT_FALSE(page.commands.contains(u"readChatList"_qs)) << "once, without a change";
    for (int i = 0; i < 7; ++i) page.list[i] = {kAni, u"1"_qs, {kAni, u"15:09"_qs, QString::number(i), u"1"_qs}};
    state.stepRunning = true;
    watch.Timer2_Timer();
    EXPECT_EQ(page.commands, QStringList(u"watchChatList"_qs)) << "no look during a send";
    state.stepRunning = false;
    watch.Timer2_Timer();
    EXPECT_EQ(count("inbox"), 8) << "the length is the same";
}

TEST_F(Reader, PassGivesWayToMessagesThatWait) {
    ChatListWatch watch(state, page, clock, gateway.ticks, gateway.reading, [this] { reader->BACA_WA(); });
    watch.Timer2_Timer();
    for (int i = 0; i < 20; ++i) unread(QString::number(i), u"hello"_qs);
    queue(u"6281234567890"_qs, u"x"_qs);
    gateway.queue.cmd_OutboxRefresh_Click();
    const qint64 began = clock.monotonicMs();
    watch.Timer2_Timer();
    EXPECT_LT(clock.monotonicMs() - began, 8'000);
    EXPECT_LT(count("inbox"), 20);
    runQueue();
    page.rowsInSight = 5;  // sending has moved the others up: nothing in sight is unread, and the length is known
    for (int i = 0; i < 5; ++i) page.list.prepend({kAni, QString(), {kAni, u"15:09"_qs, u"sent to"_qs}});
    for (int i = 0; i < 100 && count("inbox") < 20; ++i) {
        state.len1.text = QString::number(page.chatListLength);
        clock.wait(500);
        watch.Timer2_Timer();
    }
    EXPECT_EQ(count("inbox"), 20);
}

TEST_F(Reader, ChatsOfThePageAreListedAndNothingIsStored) {
    ChatLister lister(state, page);
    page.listed = {{kAni, u"https://host/p?t=s&u=62811%40c.us"_qs}, {u"+62 812-3456-789"_qs, {}}, {u"Team 7"_qs, {}}};
    const auto line = [&](int row) { return state.ms.rows->text(row, 0) + u'\t' + state.ms.rows->text(row, 1); };
    lister.len2_Click();
    ASSERT_EQ(state.ms.rowCount(), 4) << "with the heading";
    EXPECT_EQ(line(0) + u'|' + line(1) + u'|' + line(2), u"62811\tAni|628123456789\t+62 812-3456-789|\tTeam 7"_qs);
    EXPECT_EQ(count("inbox"), 0);
    unread(kAni, u"hello"_qs);
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
    settings.Multi = u"Y"_qs;
    execute("insert into web_user (id, bot_url) values ('7', 'http://bot/seven')");
    unread(kAni, u"a b?"_qs);
    reader->BACA_WA();
    EXPECT_EQ(rows("tipe, PROFIL, wa_no, wa_text", "multi"), u"I|7|Ani|a b?"_qs);
    EXPECT_EQ(count("inbox"), 0);
    EXPECT_EQ(toBots, QStringList(u"http://bot/seven?wa_no=Ani&wa_text=a+b%3F&profil=7&xxx=0.25"_qs));
    execute("update web_user set bot_url = ''");
    unread(kAni, u"again"_qs);
    reader->BACA_WA();
    EXPECT_EQ(toBots.size(), 1) << "a profile without an address has no web bot";
}

TEST_F(Reader, WhatTheDatabaseRefusesIsStoredLater) {
    unread(kAni, u"hello"_qs);
    execute("alter table inbox rename to away");
    reader->BACA_WA();
    EXPECT_EQ(journal->entries().size(), 1u);
    execute("alter table away rename to inbox");
    clock.wait(10'000);
    settings.UseBotPHP = u"Y"_qs;
    settings.PHP = u"http://bot/ask"_qs;
    queue(u"6281234567890"_qs, u"x"_qs);
    whileBotIsAsked = [this] {
        unread(u"Budi"_qs, u"second"_qs);
        reader->BACA_WA();
        reader->storeWaiting();
        tick();
        EXPECT_EQ(count("outbox"), 1) << "both directions wait";
    };
    reader->storeWaiting();
    reader->storeWaiting();
    EXPECT_EQ(toBots.size(), 1);
    EXPECT_EQ(rows(), u"Ani||hello"_qs);
    EXPECT_TRUE(journal->entries().empty());
}

TEST_F(Reader, MessageThatTheTableRefusesHoldsUpNoOther) {
    refuse("insert on inbox when new.wa_text = 'no'");
    unread(kAni, u"yes"_qs);
    unread(u"Budi"_qs, u"no"_qs);
    read(u"yes"_qs);
    EXPECT_EQ(state.inboxNotice, u"1 received message is refused by the database: refused"_qs);
    begin();
    unread(u"Citra"_qs, u"yes too"_qs);
    read(u"yes\nyes too"_qs);
    execute("drop trigger refuse");
    clock.wait(10'000);
    reader->storeWaiting();
    EXPECT_EQ(count("inbox"), 2) << "not asked at once";
    clock.wait(RefusedRows<quint64>::kPauseMs);
    reader->storeWaiting();
    EXPECT_EQ(rows("wa_text"), u"yes\nyes too\nno"_qs);
    EXPECT_EQ(state.inboxNotice, QString());
}

TEST_F(Reader, WithoutItsJournalNothingIsReadAndTheOperatorIsTold) {
    const QString file = folder.filePath(u"inbox.journal"_qs);
    ASSERT_TRUE(QDir().mkdir(file));  // in the place of the file
    unread(kAni, u"hello"_qs);
    const quint64 before = log::revision();
    for (int i = 0; i < 3; ++i) reader->BACA_WA();
    EXPECT_TRUE(state.inboxNotice.startsWith(u"The inbox is not read: "_qs)) << "and not silently";
    EXPECT_EQ(log::revision() - before, 1u) << "the same trouble is told once";
    ASSERT_TRUE(QDir().rmdir(file));
    read(u"hello"_qs);
    EXPECT_EQ(state.inboxNotice, QString());
}

/// What a crash may leave: the message known to the journal only, to journal and page, or to journal and database.
TEST_F(Reader, AfterACrashEachMessageIsThereOnce) {
    struct Crash {};
    // Before the page has opened the chat: its mark is still there.
    unread(kAni, u"one"_qs);
    page.beforeEntryOpens = [] { throw Crash(); };
    EXPECT_THROW(reader->BACA_WA(), Crash);
    page.beforeEntryOpens = nullptr;
    readAfterRestart(u"one"_qs);

    // Opened, and not stored.
    unread(kAni, u"two"_qs);
    clock.at(clock.monotonicMs() + 50, [] { throw Crash(); });
    EXPECT_THROW(reader->BACA_WA(), Crash);
    EXPECT_EQ(rows("wa_text"), u"one"_qs);
    readAfterRestart(u"one\ntwo"_qs);

    // Stored, and still in the journal.
    IncomingRow row{false, u"7"_qs, kAni, kAni, QString(), u"two"_qs, QString()};
    row.wa_time = rows("wa_time", "inbox where wa_text = 'two'");
    ASSERT_TRUE(journal->add(row).ok());
    readAfterRestart(u"one\ntwo"_qs);
}

TEST_F(Reader, EachUnreadMessageIsARowOnceAlsoAfterACrash) {
    page.conversation = {message("1", u"read long ago"_qs), message("2", u"two\nlines"_qs), message("3", u"1"_qs),
                         message("4", u"1"_qs)};
    unread(kAni, u"1"_qs, {}, u"3"_qs);
    refuse("insert on inbox when (select count(*) from inbox) = 2");  // a crash between two rows
    read(u"two\nlines\n1"_qs);
    execute("drop trigger refuse");
    EXPECT_TRUE(storedIds->contains(u"3"_qs) && journal->holds(u"4"_qs));
    begin();
    EXPECT_TRUE(storedIds->open().ok() && storedIds->contains(u"3"_qs));
    clock.wait(RefusedRows<quint64>::kPauseMs);
    read(u"two\nlines\n1\n1"_qs);
    EXPECT_TRUE(journal->entries().empty());

    // Its mark stays, and nothing new is in it.
    unread(kAni, u"1"_qs, {}, u"3"_qs);
    page.stickyBadges = 100;
    for (int pass = 0; pass < 4; ++pass) read(u"two\nlines\n1\n1"_qs);
    EXPECT_EQ(page.commands.count(u"refresh"_qs), 1);
    page.conversation.append(message("5", u"1"_qs));
    read(u"two\nlines\n1\n1\n1"_qs);

    settings.InboxRead = u"last"_qs;
    page.conversation.append({message("6", u"six"_qs), message("7", u"a long text with its end"_qs)});
    page.list[0].lines[2] = u"a long text"_qs;
    read(u"two\nlines\n1\n1\n1\na long text"_qs);
}

TEST_F(Reader, EachRowHasARecordOfWhatThePageTells) {
    const auto recorded = [this] {
        return rows("inbox_id, source, profil, message_id, chat_id, in_group, message_time, kind", "kibo_inbox");
    };
    ArrivedMessage photo = message("false_1203@g.us_3EB0", u"(photo)"_qs);
    photo.chatId = u"1203@g.us"_qs;
    photo.inGroup = true;
    photo.kind = u"photo"_qs;
    photo.time = u"2026-03-14 15:07"_qs;
    page.conversation = {photo};
    unread(kAni, u"Photo"_qs);
    refuse("insert on inbox");  // until after a crash
    read({});
    execute("drop trigger refuse");
    clock.wait(RefusedRows<quint64>::kPauseMs);
    readAfterRestart(u"(photo)"_qs);
    QString expected = u"1|inbox|7|false_1203@g.us_3EB0|1203@g.us|1|2026-03-14 15:07:00|photo"_qs;
    EXPECT_EQ(recorded(), expected);

    const quint64 before = log::revision();
    refuse("insert on kibo_inbox");
    page.conversation = {message("8", u"a"_qs), message("9", u"b"_qs)};
    unread(kAni, u"b"_qs, {}, u"2"_qs);
    read(u"(photo)\na\nb"_qs);
    EXPECT_EQ(recorded(), expected) << "the row counts, with or without a record";
    EXPECT_EQ(log::newestLines().filter(u"not noted in kibo_inbox"_qs).size(), 1) << log::revision() - before;
    execute("drop trigger refuse");
    clock.wait(60'000);
    page.conversation.clear();
    page.hideHistory = true;
    settings.Multi = u"Y"_qs;
    unread(u"Team"_qs, u"c"_qs, u"Budi"_qs);
    reader->BACA_WA();
    EXPECT_EQ(recorded(), expected + u"\n1|multi|7|||1||"_qs);
    execute("update kibo_inbox set stored = #2001-01-01 00:00:00# where id = 1");
    records.removeOld();
    EXPECT_EQ(rows("source", "kibo_inbox"), u"multi"_qs);
}

TEST_F(Reader, RowOfSomebodyWhoTypesWaitsForAMinuteAndHoldsUpNoOther) {
    unread(u"Budi"_qs, u"hello"_qs);
    unread(kAni, u"typing error?"_qs);
    read(u"hello"_qs);
    clock.wait(InboxReader::kTypingMs);
    read(u"hello\ntyping error?"_qs);
}

/// What came in while its chat was open, as the watch in the page tells it.
TEST_F(Reader, MessagesTheListDoesNotTellOfBecomeRowsOnce) {
    Arrivals arrivals({state, settings, elements, page, clock, *journal, *storedIds, *opened});
    page.shown.arrived = {message("1", u"one"_qs), message("2", QString()), message("3", u"typing error?"_qs)};
    page.shown.arrived[1].badge = u"2"_qs;  // what the list showed over an unread message when its chat was opened
    page.shown.arrived[1].lines = QStringList{kAni, u"15:09"_qs, u"typing…"_qs, u"2"_qs};
    page.silent = true;  // it doesn't forget them
    arrivals.take(page.shown.arrived);
    arrivals.take(page.shown.arrived);
    page.silent = false;
    reader->BACA_WA();
    EXPECT_EQ(rows("wa_no, wa_text"), u"62811|one\n62811|(media)\n62811|typing error?"_qs);
    EXPECT_EQ(rows("wa_time", "inbox where id = 1"), u"2026-03-14 15:09:22"_qs);
    settings.DisableRead = u"Y"_qs;
    page.shown.arrived = {message("5", u"five"_qs)};
    arrivals.take(page.shown.arrived);
    EXPECT_TRUE(page.shown.arrived.isEmpty() && journal->entries().empty());
}

}  // namespace
}  // namespace kibo
