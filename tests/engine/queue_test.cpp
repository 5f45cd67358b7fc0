#include <QScopedValueRollback>

#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
/// Lets statements of a server go to the local store.
using AsOnServer = QScopedValueRollback<decltype(Database::onLocalStatement)>;

class Queue : public Engine {
 protected:
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
    EXPECT_TRUE(gateway.queue.markFailed(QString::number(id), {}));
    EXPECT_EQ(status(id), u"fail"_qs);

    queue(u"6281"_qs, u"x"_qs);
    const QueuedRow kept = next();
    refuse("delete on outbox");
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
        execute(change);
        const int left = count("outbox");
        EXPECT_EQ(gateway.queue.take(loaded), OutboxQueue::Taken::No) << change;
        EXPECT_EQ(count("outbox"), left) << change;
    }
    EXPECT_EQ(count("sent"), 0);
}

TEST_F(Queue, RowsThatTheSentLogRefusesHoldUpNoOthers) {
    for (const char* text : {"too long", "a", "too long", "b"}) queue(u"628111"_qs, QLatin1String(text));
    refuse("insert on sent when length(new.wa_text) > 5");
    ticks(20);
    EXPECT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(count("outbox"), 2);
    EXPECT_EQ(state.refusedOut, u"Message 1 and 1 more can't be moved to the sent log: refused"_qs);
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

TEST_F(Queue, UnderALimitIsCountedOnceASecondAndRefusedRowsDoNotFillIt) {
    const AsOnServer server(Database::onLocalStatement, nullptr);
    settings.UseMDB = u"N"_qs;
    settings.LimitSelect = u"Y"_qs;
    const auto counted = [this] {
        gateway.queue.cmd_OutboxRefresh_Click();
        return state.Outbox_Cnt.caption.toInt();
    };
    const auto add = [this](int rows, const QString& text) {
        for (; rows > 0; --rows) queue(u"628111"_qs, text);
    };
    add(20, u"a"_qs);
    EXPECT_EQ(counted(), 20);
    add(1, u"a"_qs);
    EXPECT_EQ(counted(), 20);
    clock.wait(1000);
    EXPECT_EQ(counted(), 21);
    execute("delete from outbox where id > 3");
    EXPECT_EQ(counted(), 3) << "all are loaded";
    for (int i = 0; i < 20; ++i) queue(u"628111"_qs, u"a"_qs);
    EXPECT_EQ(counted(), 23);
    Database::onLocalStatement = [this](const QString& sql, const Database::Values&) {
        if (sql.startsWith(u"select count(1)"_qs)) clock.wait(20);
    };
    clock.wait(1000);
    EXPECT_EQ(counted(), 23);
    queue(u"628111"_qs, u"a"_qs);
    clock.wait(39'000);
    EXPECT_EQ(counted(), 23) << "what takes long is done less often";
    EXPECT_EQ(gateway.queue.take(next()), OutboxQueue::Taken::Yes);
    EXPECT_EQ(counted(), 22) << "what was taken is known";
    clock.wait(1000);
    EXPECT_EQ(counted(), 23);
    Database::onLocalStatement = nullptr;
    clock.wait(60'000);
    refuse("insert on sent when length(new.wa_text) > 5");
    execute("delete from outbox");
    add(queue_sql::kLimit, u"too long"_qs);
    add(1, u"a"_qs);
    EXPECT_EQ(counted(), queue_sql::kLimit + 1);
    EXPECT_EQ(ids().size(), queue_sql::kLimit);
    ticks(20);
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count("outbox"), queue_sql::kLimit);
    settings.Multi = u"Y"_qs;
    EXPECT_EQ(counted(), 0) << "other rows are asked for";
}

TEST_F(Queue, InstancesOfOneDatabaseSeeTheirOwnRowsOnly) {
    settings.Multi = u"Y"_qs;
    const auto add = [this](const char* kind, const char* profile) {
        execute("insert into multi (tipe, profil, wa_mode, wa_no, wa_text) values (?, ?, 0, '6281', 'x')",
                {QLatin1String(kind), QLatin1String(profile)});
    };
    add("O", "7");
    add("O", "8");
    add("I", "7");
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids(), QStringList(u"1"_qs));
    const QueuedRow mine = next();
    EXPECT_EQ(gateway.queue.take(mine), OutboxQueue::Taken::Yes);
    EXPECT_TRUE(gateway.queue.markFailed(mine.id, {}));
    const auto sent = database.OpenRecordset(u"select * from multi where tipe = 'S'"_qs);
    EXPECT_EQ(sent.recordCount(), 1);
    EXPECT_EQ(sent.field(u"id_outbox"_qs), u"1"_qs);
    EXPECT_EQ(sent.field(u"PROFIL"_qs), u"7"_qs);
    EXPECT_EQ(sent.field(u"status"_qs), u"fail"_qs);

    // Given to another instance in that moment, and sent by it: nothing of it is ours.
    add("O", "7");
    const QueuedRow given = next();
    ASSERT_TRUE(journal.taken(given));
    execute("update multi set profil = '8' where tipe = 'O' and profil = '7'");
    EXPECT_EQ(gateway.queue.take(given), OutboxQueue::Taken::No);
    execute("update multi set tipe = 'S', id_outbox = id where tipe = 'O' and id = ?", {given.id});
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_TRUE(journal.entries().empty());
    EXPECT_TRUE(gateway.queue.markFailed(given.id, {}));
    const auto copies = database.OpenRecordset(u"select profil, status from multi where id_outbox = ?"_qs, {given.id});
    EXPECT_EQ(copies.recordCount(), 1);
    EXPECT_EQ(copies.field(0), u"8"_qs);
    EXPECT_EQ(copies.field(1), QString());
}

}  // namespace
}  // namespace kibo
