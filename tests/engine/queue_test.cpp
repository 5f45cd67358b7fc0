#include <QScopedValueRollback>

#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
/// Lets statements of a server go to the local store.
using AsOnServer = QScopedValueRollback<decltype(Database::onLocalStatement)>;

class Queue : public Engine {
 protected:
    void add(const char* table, const char* columns, const QVariantList& values) {
        QStringList marks;
        for (qsizetype i = 0; i < values.size(); ++i) marks.append(u"?"_qs);
        ASSERT_TRUE(database.execute(
            u"insert into %1 (%2) values (%3)"_qs.arg(QString::fromLatin1(table), QString::fromLatin1(columns),
                                                      marks.join(QLatin1Char(','))),
            values));
    }
    QueuedRow next() {
        gateway.queue.cmd_OutboxRefresh_Click();
        return gateway.queue.nextRow().value_or(QueuedRow{});
    }
    QStringList ids() {
        QStringList ids;
        for (int row = 1; row < state.ms_out.rowCount(); ++row) ids.append(state.ms_out.text(row, OutboxQueue::Id));
        return ids;
    }
};

TEST_F(Queue, ShowsDueRowsOldestFirst) {
    queue(u"6281"_qs, u"a\tb"_qs);
    queue(u"6282"_qs, u"kept back"_qs, 3);
    queue(u"6283"_qs, u"later"_qs);
    settings.LimitSelect = u"Y"_qs;  // no effect on the local store
    settings.Scheduled = u"Y"_qs;
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids(), QStringList({u"1"_qs, u"3"_qs}));
    EXPECT_EQ(state.Outbox_Cnt.caption, u"2"_qs);
    EXPECT_EQ(settings.Scheduled, u"N"_qs) << "the local store has no schedule";
    EXPECT_EQ(state.ms_out.text(1, OutboxQueue::Text), u"a b"_qs) << "a grid line is tab-separated";
    ASSERT_TRUE(gateway.queue.nextRow());
    EXPECT_EQ(gateway.queue.nextRow()->text, u"a\tb"_qs) << "but the stored text is sent";
}

TEST_F(Queue, IsLoadedAnewOnlyWhenSomebodyHasChangedTheStore) {
    queue(u"6281"_qs, u"a"_qs);
    const auto loadedAnew = [this] {
        const quint64 before = state.ms_out.revision;
        gateway.queue.cmd_OutboxRefresh_Click();
        return state.ms_out.revision != before;
    };
    EXPECT_TRUE(loadedAnew());
    EXPECT_FALSE(loadedAnew());
    queue(u"6282"_qs, u"b"_qs);
    EXPECT_TRUE(loadedAnew());
    test::sqlite(folder.filePath(u"kb.mdb"_qs), u"delete from outbox where id = 1"_qs);
    EXPECT_TRUE(loadedAnew()) << "by another program";
    EXPECT_EQ(ids(), QStringList(u"2"_qs));
    state.cb_Profil.text = u"8"_qs;
    settings.Multi = u"Y"_qs;
    EXPECT_TRUE(loadedAnew()) << "other rows are asked for";
    state.Outbox_Cnt.caption.clear();
    EXPECT_FALSE(loadedAnew());
    EXPECT_EQ(state.Outbox_Cnt.caption, u"0"_qs);
}

TEST_F(Queue, TakingMovesTheRowInOnePiece) {
    const qint64 id = queue(u"6281"_qs, u"O'Brien \"x\" \\ 😀"_qs);
    const QueuedRow row = next();
    EXPECT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    EXPECT_EQ(count("outbox"), 0);
    EXPECT_EQ(field("select wa_text from sent"), u"O'Brien \"x\" \\ 😀"_qs);
    EXPECT_EQ(gateway.queue.take(row), OutboxQueue::Taken::No) << "it has gone";
    EXPECT_EQ(count("sent"), 1);
    EXPECT_TRUE(gateway.queue.markFailed(QString::number(id)));
    EXPECT_EQ(status(id), u"fail"_qs);

    queue(u"6281"_qs, u"x"_qs);
    const QueuedRow kept = next();
    execute("create trigger refuse before delete on outbox begin select raise(abort, 'refused'); end");
    EXPECT_EQ(gateway.queue.take(kept), OutboxQueue::Taken::Refused);
    EXPECT_EQ(count("sent"), 1) << "a refused delete undoes the copy";
}

TEST_F(Queue, TakesARowOnlyAsItWasLoaded) {
    for (const char* change :
         {"update outbox set wa_no = '6289'", "update outbox set wa_mode = 3", "update outbox set wa_text = 'b'",
          "update outbox set wa_media = 'm'", "update outbox set wa_file = 'f'", "update outbox set wa_time = null",
          "delete from outbox"}) {
        execute("delete from outbox");
        queue(u"6281"_qs, u"a"_qs);
        const QueuedRow loaded = next();
        ASSERT_TRUE(database.Execute(QString::fromLatin1(change)));
        const int left = count("outbox");
        EXPECT_EQ(gateway.queue.take(loaded), OutboxQueue::Taken::No) << change;
        EXPECT_EQ(count("outbox"), left) << change;
    }
    EXPECT_EQ(count("sent"), 0);
    queue(u"6281"_qs, u"a"_qs);
    const QueuedRow old = next();
    execute("update outbox set wa_no = '6289'");
    EXPECT_EQ(gateway.queue.take(old), OutboxQueue::Taken::No);
    EXPECT_EQ(gateway.queue.take(next()), OutboxQueue::Taken::Yes) << "loaded anew";
    EXPECT_EQ(field("select wa_no from sent"), u"6289"_qs);
}

TEST_F(Queue, RowsThatTheSentLogRefusesHoldUpNoOthers) {
    for (const char* text : {"too long", "a", "too long", "b"}) queue(u"628111"_qs, QLatin1String(text));
    execute(
        "create trigger narrow before insert on sent when length(new.wa_text) > 5 "
        "begin select raise(abort, 'column too narrow'); end");
    ticks(20);
    EXPECT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(count("outbox"), 2);
    EXPECT_EQ(state.refusedOut, u"Message 1 and 1 more can't be moved to the sent log: column too narrow"_qs);
    EXPECT_FALSE(state.dboff.visible || state.wait.visible);

    execute("update outbox set wa_text = 'c' where id = 1");
    queue(u"628111"_qs, u"d"_qs);
    ticks(20);
    EXPECT_EQ(page.delivered.size(), 3u) << "a mended row isn't tried at once";
    clock.wait(RefusedRows<qint64>::kPauseMs);
    ticks(20);
    EXPECT_EQ(page.delivered.back().text, u"c"_qs);
    execute("delete from outbox");
    for (int i = 0; i < 60; ++i) queue(u"628111"_qs, u"too long"_qs);
    ticks(80);
    EXPECT_TRUE(state.refusedOut.startsWith(u"Message 6 and 49 more"_qs)) << "then it is the table's fault";
    EXPECT_TRUE(journal.entries().empty());
}

TEST_F(Queue, UnderALimitIsCountedOnceASecond) {
    const AsOnServer server(Database::onLocalStatement, nullptr);
    settings.UseMDB = u"N"_qs;
    settings.LimitSelect = u"Y"_qs;
    const auto counted = [this] {
        gateway.queue.cmd_OutboxRefresh_Click();
        return state.Outbox_Cnt.caption.toInt();
    };
    for (int i = 0; i < 20; ++i) queue(u"628111"_qs, u"a"_qs);
    EXPECT_EQ(counted(), 20);
    queue(u"628111"_qs, u"a"_qs);
    EXPECT_EQ(counted(), 20);
    clock.wait(1000);
    EXPECT_EQ(counted(), 21);
    execute("delete from outbox where id > 3");
    EXPECT_EQ(counted(), 3) << "all are loaded";
    for (int i = 0; i < 20; ++i) queue(u"628111"_qs, u"a"_qs);
    EXPECT_EQ(counted(), 23);
    settings.Multi = u"Y"_qs;
    EXPECT_EQ(counted(), 0) << "other rows are asked for";
}

TEST_F(Queue, TenRefusedRowsDoNotFillTheLimit) {
    for (int i = 0; i < queue_sql::kLimit; ++i) queue(u"628111"_qs, u"too long"_qs);
    queue(u"628111"_qs, u"a"_qs);
    execute(
        "create trigger narrow before insert on sent when length(new.wa_text) > 5 "
        "begin select raise(abort, 'column too narrow'); end");
    const AsOnServer server(Database::onLocalStatement, nullptr);
    settings.UseMDB = u"N"_qs;
    settings.LimitSelect = u"Y"_qs;
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids().size(), queue_sql::kLimit);
    ticks(20);
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count("outbox"), queue_sql::kLimit);
}

TEST_F(Queue, InstancesOfOneDatabaseSeeTheirOwnRowsOnly) {
    settings.Multi = u"Y"_qs;
    const char* columns = "tipe, profil, wa_mode, wa_no, wa_text";
    add("multi", columns, {u"O"_qs, u"7"_qs, 0, u"6281"_qs, u"mine"_qs});
    add("multi", columns, {u"O"_qs, u"8"_qs, 0, u"6282"_qs, u"other"_qs});
    add("multi", columns, {u"I"_qs, u"7"_qs, 0, u"6283"_qs, u"in"_qs});
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids(), QStringList(u"1"_qs));
    const QueuedRow mine = next();
    EXPECT_EQ(mine.text, u"mine"_qs);
    EXPECT_EQ(gateway.queue.take(mine), OutboxQueue::Taken::Yes);
    EXPECT_TRUE(gateway.queue.markFailed(mine.id));
    const auto sent = database.OpenRecordset(u"select * from multi where tipe = 'S'"_qs);
    EXPECT_EQ(sent.recordCount(), 1);
    EXPECT_EQ(sent.field(u"id_outbox"_qs), u"1"_qs);
    EXPECT_EQ(sent.field(u"PROFIL"_qs), u"7"_qs);
    EXPECT_EQ(sent.field(u"status"_qs), u"fail"_qs);

    // Given to another instance in that moment, and sent by it: nothing of it is ours.
    add("multi", columns, {u"O"_qs, u"7"_qs, 0, u"6281"_qs, u"x"_qs});
    const QueuedRow given = next();
    ASSERT_TRUE(journal.taken(given));
    execute("update multi set profil = '8' where tipe = 'O' and profil = '7'");
    EXPECT_EQ(gateway.queue.take(given), OutboxQueue::Taken::No);
    execute("update multi set tipe = 'S', id_outbox = id where tipe = 'O' and id = ?", {given.id});
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_TRUE(journal.entries().empty());
    EXPECT_TRUE(gateway.queue.markFailed(given.id));
    const auto copies = database.OpenRecordset(u"select profil, status from multi where id_outbox = ?"_qs, {given.id});
    EXPECT_EQ(copies.recordCount(), 1);
    EXPECT_EQ(copies.field(0), u"8"_qs);
    EXPECT_EQ(copies.field(1), QString());
}

}  // namespace
}  // namespace kibo
