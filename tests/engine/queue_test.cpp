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
        for (qsizetype i = 0; i < values.size(); ++i) marks.append(QStringLiteral("?"));
        ASSERT_TRUE(database.execute(
            QStringLiteral("insert into %1 (%2) values (%3)")
                .arg(QString::fromLatin1(table), QString::fromLatin1(columns), marks.join(QLatin1Char(','))),
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
    queue(QStringLiteral("6281"), QStringLiteral("a\tb"));
    queue(QStringLiteral("6282"), QStringLiteral("kept back"), 3);
    queue(QStringLiteral("6283"), QStringLiteral("later"));
    settings.LimitSelect = QStringLiteral("Y");  // no effect on the local store
    settings.Scheduled = QStringLiteral("Y");
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids(), QStringList({QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(state.Outbox_Cnt.caption, QStringLiteral("2"));
    EXPECT_EQ(settings.Scheduled, QStringLiteral("N")) << "the local store has no schedule";
    EXPECT_EQ(state.ms_out.text(1, OutboxQueue::Text), QStringLiteral("a b")) << "a grid line is tab-separated";
    ASSERT_TRUE(gateway.queue.nextRow());
    EXPECT_EQ(gateway.queue.nextRow()->text, QStringLiteral("a\tb")) << "but the stored text is sent";
}

TEST_F(Queue, IsLoadedAnewOnlyWhenSomebodyHasChangedTheStore) {
    queue(QStringLiteral("6281"), QStringLiteral("a"));
    const auto loadedAnew = [this] {
        const quint64 before = state.ms_out.revision;
        gateway.queue.cmd_OutboxRefresh_Click();
        return state.ms_out.revision != before;
    };
    EXPECT_TRUE(loadedAnew());
    EXPECT_FALSE(loadedAnew());
    queue(QStringLiteral("6282"), QStringLiteral("b"));
    EXPECT_TRUE(loadedAnew());
    test::sqlite(folder.filePath(QStringLiteral("kb.mdb")), QStringLiteral("delete from outbox where id = 1"));
    EXPECT_TRUE(loadedAnew()) << "by another program";
    EXPECT_EQ(ids(), QStringList(QStringLiteral("2")));
    state.cb_Profil.text = QStringLiteral("8");
    settings.Multi = QStringLiteral("Y");
    EXPECT_TRUE(loadedAnew()) << "other rows are asked for";
    state.Outbox_Cnt.caption.clear();
    EXPECT_FALSE(loadedAnew());
    EXPECT_EQ(state.Outbox_Cnt.caption, QStringLiteral("0"));
}

TEST_F(Queue, TakingMovesTheRowInOnePiece) {
    const qint64 id = queue(QStringLiteral("6281"), QStringLiteral("O'Brien \"x\" \\ 😀"));
    const QueuedRow row = next();
    EXPECT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    EXPECT_EQ(count(QStringLiteral("outbox")), 0);
    EXPECT_EQ(database.OpenRecordset(QStringLiteral("select wa_text from sent")).field(0),
              QStringLiteral("O'Brien \"x\" \\ 😀"));
    EXPECT_EQ(gateway.queue.take(row), OutboxQueue::Taken::No) << "it has gone";
    EXPECT_EQ(count(QStringLiteral("sent")), 1);
    EXPECT_TRUE(gateway.queue.markFailed(QString::number(id)));
    EXPECT_EQ(status(id), QStringLiteral("fail"));

    queue(QStringLiteral("6281"), QStringLiteral("x"));
    const QueuedRow kept = next();
    ASSERT_TRUE(database.Execute(
        QStringLiteral("create trigger refuse before delete on outbox begin select raise(abort, 'refused'); end")));
    EXPECT_EQ(gateway.queue.take(kept), OutboxQueue::Taken::Refused);
    EXPECT_EQ(count(QStringLiteral("sent")), 1) << "a refused delete undoes the copy";
}

TEST_F(Queue, TakesARowOnlyAsItWasLoaded) {
    for (const char* change :
         {"update outbox set wa_no = '6289'", "update outbox set wa_mode = 3", "update outbox set wa_text = 'b'",
          "update outbox set wa_media = 'm'", "update outbox set wa_file = 'f'", "update outbox set wa_time = null",
          "delete from outbox"}) {
        ASSERT_TRUE(database.Execute(QStringLiteral("delete from outbox")));
        queue(QStringLiteral("6281"), QStringLiteral("a"));
        const QueuedRow loaded = next();
        ASSERT_TRUE(database.Execute(QString::fromLatin1(change)));
        const int left = count(QStringLiteral("outbox"));
        EXPECT_EQ(gateway.queue.take(loaded), OutboxQueue::Taken::No) << change;
        EXPECT_EQ(count(QStringLiteral("outbox")), left) << change;
    }
    EXPECT_EQ(count(QStringLiteral("sent")), 0);
    queue(QStringLiteral("6281"), QStringLiteral("a"));
    const QueuedRow old = next();
    ASSERT_TRUE(database.Execute(QStringLiteral("update outbox set wa_no = '6289'")));
    EXPECT_EQ(gateway.queue.take(old), OutboxQueue::Taken::No);
    EXPECT_EQ(gateway.queue.take(next()), OutboxQueue::Taken::Yes) << "loaded anew";
    EXPECT_EQ(database.OpenRecordset(QStringLiteral("select wa_no from sent")).field(0), QStringLiteral("6289"));
}

TEST_F(Queue, RowsThatTheSentLogRefusesHoldUpNoOthers) {
    for (const char* text : {"too long", "a", "too long", "b"}) queue(QStringLiteral("628111"), QLatin1String(text));
    ASSERT_TRUE(
        database.Execute(QStringLiteral("create trigger narrow before insert on sent when length(new.wa_text) > 5 "
                                        "begin select raise(abort, 'column too narrow'); end")));
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(count(QStringLiteral("outbox")), 2);
    EXPECT_EQ(state.refusedOut,
              QStringLiteral("Message 1 and 1 more can't be moved to the sent log: column too narrow"));
    EXPECT_FALSE(state.dboff.visible || state.wait.visible);

    ASSERT_TRUE(database.Execute(QStringLiteral("update outbox set wa_text = 'c' where id = 1")));
    queue(QStringLiteral("628111"), QStringLiteral("d"));
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_EQ(page.delivered.size(), 3u) << "a mended row isn't tried at once";
    clock.wait(RefusedRows<qint64>::kPauseMs);
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_EQ(page.delivered.back().text, QStringLiteral("c"));
    ASSERT_TRUE(database.Execute(QStringLiteral("delete from outbox")));
    for (int i = 0; i < 60; ++i) queue(QStringLiteral("628111"), QStringLiteral("too long"));
    for (int i = 0; i < 80; ++i) tick();
    EXPECT_TRUE(state.refusedOut.startsWith(QStringLiteral("Message 6 and 49 more"))) << "then it is the table's fault";
    EXPECT_TRUE(journal.entries().empty());
}

TEST_F(Queue, UnderALimitIsCountedOnceASecondAtMost) {
    const AsOnServer server(Database::onLocalStatement, nullptr);
    settings.UseMDB = QStringLiteral("N");
    settings.LimitSelect = QStringLiteral("Y");
    const auto counted = [this] {
        gateway.queue.cmd_OutboxRefresh_Click();
        return state.Outbox_Cnt.caption.toInt();
    };
    for (int i = 0; i < 20; ++i) queue(QStringLiteral("628111"), QStringLiteral("a"));
    EXPECT_EQ(counted(), 20);
    queue(QStringLiteral("628111"), QStringLiteral("a"));
    EXPECT_EQ(counted(), 20);
    clock.wait(1000);
    EXPECT_EQ(counted(), 21);
    ASSERT_TRUE(database.Execute(QStringLiteral("delete from outbox where id > 3")));
    EXPECT_EQ(counted(), 3) << "all are loaded";
    for (int i = 0; i < 20; ++i) queue(QStringLiteral("628111"), QStringLiteral("a"));
    EXPECT_EQ(counted(), 23);
    Database::onLocalStatement = [this](const QString& sql, const Database::Values&) {
        if (sql.startsWith(QStringLiteral("select count(1)"))) clock.wait(20);
    };
    clock.wait(1000);
    EXPECT_EQ(counted(), 23);
    queue(QStringLiteral("628111"), QStringLiteral("a"));
    clock.wait(39'000);
    EXPECT_EQ(counted(), 23) << "what takes long is done less often";
    EXPECT_EQ(gateway.queue.take(next()), OutboxQueue::Taken::Yes);
    EXPECT_EQ(counted(), 22) << "what was taken is known";
    clock.wait(1000);
    EXPECT_EQ(counted(), 23);
    settings.Multi = QStringLiteral("Y");
    EXPECT_EQ(counted(), 0) << "other rows are asked for";
}

TEST_F(Queue, TenRefusedRowsDoNotFillTheLimit) {
    for (int i = 0; i < queue_sql::kLimit; ++i) queue(QStringLiteral("628111"), QStringLiteral("too long"));
    queue(QStringLiteral("628111"), QStringLiteral("a"));
    ASSERT_TRUE(
        database.Execute(QStringLiteral("create trigger narrow before insert on sent when length(new.wa_text) > 5 "
                                        "begin select raise(abort, 'column too narrow'); end")));
    const AsOnServer server(Database::onLocalStatement, nullptr);
    settings.UseMDB = QStringLiteral("N");
    settings.LimitSelect = QStringLiteral("Y");
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids().size(), queue_sql::kLimit);
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count(QStringLiteral("outbox")), queue_sql::kLimit);
}

TEST_F(Queue, InstancesOfOneDatabaseSeeTheirOwnRowsOnly) {
    settings.Multi = QStringLiteral("Y");
    const char* columns = "tipe, profil, wa_mode, wa_no, wa_text";
    add("multi", columns,
        {QStringLiteral("O"), QStringLiteral("7"), 0, QStringLiteral("6281"), QStringLiteral("mine")});
    add("multi", columns,
        {QStringLiteral("O"), QStringLiteral("8"), 0, QStringLiteral("6282"), QStringLiteral("other")});
    add("multi", columns, {QStringLiteral("I"), QStringLiteral("7"), 0, QStringLiteral("6283"), QStringLiteral("in")});
    gateway.queue.cmd_OutboxRefresh_Click();
    EXPECT_EQ(ids(), QStringList(QStringLiteral("1")));
    const QueuedRow mine = next();
    EXPECT_EQ(mine.text, QStringLiteral("mine"));
    EXPECT_EQ(gateway.queue.take(mine), OutboxQueue::Taken::Yes);
    EXPECT_TRUE(gateway.queue.markFailed(mine.id));
    const auto sent = database.OpenRecordset(QStringLiteral("select * from multi where tipe = 'S'"));
    EXPECT_EQ(sent.recordCount(), 1);
    EXPECT_EQ(sent.field(QStringLiteral("id_outbox")), QStringLiteral("1"));
    EXPECT_EQ(sent.field(QStringLiteral("PROFIL")), QStringLiteral("7"));
    EXPECT_EQ(sent.field(QStringLiteral("status")), QStringLiteral("fail"));

    // Given to another instance in that moment, and sent by it: nothing of it is ours.
    add("multi", columns, {QStringLiteral("O"), QStringLiteral("7"), 0, QStringLiteral("6281"), QStringLiteral("x")});
    const QueuedRow given = next();
    ASSERT_TRUE(journal.taken(given));
    ASSERT_TRUE(database.Execute(QStringLiteral("update multi set profil = '8' where tipe = 'O' and profil = '7'")));
    EXPECT_EQ(gateway.queue.take(given), OutboxQueue::Taken::No);
    ASSERT_TRUE(database.execute(
        QStringLiteral("update multi set tipe = 'S', id_outbox = id where tipe = 'O' and id = ?"), {given.id}));
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_TRUE(journal.entries().empty());
    EXPECT_TRUE(gateway.queue.markFailed(given.id));
    const auto copies =
        database.OpenRecordset(QStringLiteral("select profil, status from multi where id_outbox = ?"), {given.id});
    EXPECT_EQ(copies.recordCount(), 1);
    EXPECT_EQ(copies.field(0), QStringLiteral("8"));
    EXPECT_EQ(copies.field(1), QString());
}

}  // namespace
}  // namespace kibo
