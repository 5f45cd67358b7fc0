#include <unistd.h>

#include <QTemporaryDir>
#include <QThread>

#include "base/table_text.h"
#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "bench/process_figures.h"
#include "engine/outbox_queue.h"
#include "store/database.h"
#include "support/mariadb_server.h"

namespace kibo::bench {
namespace {

constexpr int kRows = 100'000;
constexpr int kFewRows = 100;
constexpr int kSamples = 11;
constexpr int kFastSamples = 101;
constexpr int kCopySamples = 7;
constexpr int kRefreshes = 3;
constexpr int kRefreshEveryMs = 500, kPacedRefreshes = 120;
constexpr double kTimeTarget = 1.5, kCopyTarget = 2;
constexpr double kGrowthLimitMb = 100;
constexpr double kLengthTarget = 1.25;
constexpr int kDueRows = 10;

// Rows as a campaign has them: a number and a text of some 120 characters.
const QString kFields = QStringLiteral(
    "0, %1, 'Good morning, this is the reminder that you asked for. Your appointment is "
    "on Monday at nine; answer this message to change it.'");

QString insertInMySql(const QString& database, int rows) {
    if (rows == 0) return {};  // seq_1_to_0 counts down
    return QStringLiteral("insert into %1.outbox (wa_mode, wa_no, wa_text) select %2 from seq_1_to_%3;")
        .arg(database, kFields.arg(QStringLiteral("concat('62812', lpad(seq, 8, '0'))")))
        .arg(rows);
}
QString insertInSqlite(int rows) {
    return QStringLiteral(
               "with recursive seq(n) as (select 1 union all select n + 1 from seq where n < %2) "
               "insert into outbox (wa_mode, wa_no, wa_text) select %1 from seq")
        .arg(kFields.arg(QStringLiteral("printf('62812%08d', n)")))
        .arg(rows);
}

/// Means of two refreshes at the rate that the program has: what only some of them do counts as often as it is done.
SideBySide paced(const std::function<void()>& measured, const std::function<void()>& reference) {
    SideBySide sums;
    for (int i = 0; i < kPacedRefreshes; ++i) {
        sums.measured += millisecondsOf(measured);
        sums.reference += millisecondsOf(reference);
        QThread::msleep(kRefreshEveryMs);
    }
    return {sums.measured / kPacedRefreshes, sums.reference / kPacedRefreshes};
}

/// A queue on a store, without engine and window around it.
class LoadedQueue {
 public:
    LoadedQueue(Settings settings, const QString& folder) : settings_(std::move(settings)) {
        const auto opened = database_.OpenDatabase(settings_, folder);
        require(opened.ok(), opened ? "" : opened.failure().text);
    }

    void refresh(int rows) {
        queue_.cmd_OutboxRefresh_Click();
        require(state_.Outbox_Cnt.caption == QString::number(rows), "the refresh counts other rows than there are");
        require(!state_.ms_out.text(1, OutboxQueue::Number).isEmpty(), "the refresh loads no rows");
    }
    /// The rows that are loaded as a table, as a copy of the grid puts them onto the clipboard.
    QString copied() const {
        QString table;
        const RowSource& rows = *state_.ms_out.rows;
        for (int row = 0; row < rows.rowCount(); ++row) appendTableLine(table, rows, OutboxQueue::Id + 1, row);
        return table;
    }
    Database& database() { return database_; }
    /// The statement that a refresh loads the rows with.
    QString statement() const {
        return queue_sql::selection(false, false, {}, {}, isYes(settings_.LimitSelect) ? queue_sql::kLimit : 0).rows;
    }

 private:
    SystemClock clock_;
    ErrorPolicy policy_;
    Settings settings_;
    GatewayState state_;
    Database database_{clock_, policy_};
    SendJournal journal_;
    MessageRecords records_{state_, settings_, database_, clock_, journal_};
    OutboxQueue queue_{state_, settings_, database_, clock_, records_};
};

void compare(Table& table, const char* store, LoadedQueue& queue, const QString& program,
             const QStringList& arguments) {
    const auto refresh = [&] { queue.refresh(kRows); };
    const double before = processFigures(getpid()).residentMb;
    restartOwnPeak();
    // Several, since the rows shown stay until the new ones are there.
    for (int i = 0; i < kRefreshes; ++i) refresh();
    const double growth = processFigures(getpid()).peakResidentMb - before;
    const SideBySide times = sideBySide(kSamples, refresh, [&] { runQuietly(program, arguments); });
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("client"));
    QString copied;
    const SideBySide copy = sideBySide(
        kCopySamples,
        [&] {
            refresh();
            copied = queue.copied();
        },
        [&] { runInto(file, program, arguments); });
    require(copied.count(u'\n') == kRows, "not all rows are copied");
    const std::string name = std::string("queue of 100,000 rows, ") + store;
    table.add({name + ": refresh", "ms", times.measured, times.reference, kTimeTarget, kSamples});
    table.add({name + ": growth at its peak", "MB", growth, kGrowthLimitMb, 1, 1});
    table.add({name + ": loaded and copied", "ms", copy.measured, copy.reference, kCopyTarget, kCopySamples});
}

void measureSqlite(Table& table) {
    const QTemporaryDir folder;
    createStores(folder.path());
    Settings settings;
    settings.UseMDB = QStringLiteral("Y");
    LoadedQueue queue(settings, folder.path());
    require(queue.database().execute(insertInSqlite(kRows)) == kRows, "the queue can't be filled");
    compare(table, "SQLite", queue, QStringLiteral("sqlite3"),
            {folder.filePath(QStringLiteral("kb.mdb")), queue.statement()});
}

/// A further queue on the server; all but the last `due` rows are meant for later. Filled as it stays: rows changed
/// afterwards would leave their old entries in the indexes for a while.
void addQueue(test::MariaDbServer& server, const QString& database, int rows, int due) {
    server.run(QStringLiteral("CREATE DATABASE %1; CREATE TABLE %1.outbox LIKE kibo.outbox;"
                              "GRANT ALL ON %1.* TO kibo@'%';"
                              "ALTER TABLE %1.outbox ALTER wa_time SET DEFAULT '2999-01-01';")
                   .arg(database) +
               insertInMySql(database, rows - due) +
               QStringLiteral("ALTER TABLE %1.outbox ALTER wa_time SET DEFAULT '2000-01-01';").arg(database) +
               insertInMySql(database, due) + QStringLiteral("ANALYZE TABLE %1.outbox;").arg(database));
}

/// Whether a refresh that takes at most ten rows costs the same whatever the length of the queue.
void compareLengths(Table& table, test::MariaDbServer& server) {
    addQueue(server, QStringLiteral("kibo_short"), kFewRows, kFewRows);
    addQueue(server, QStringLiteral("kibo_later"), kRows, kDueRows);
    addQueue(server, QStringLiteral("kibo_short_later"), kFewRows, kDueRows);
    const auto queueOf = [&](const char* database, const char* scheduled) {
        Settings settings = server.settings(false);
        settings.LimitSelect = QStringLiteral("Y");
        settings.Scheduled = QLatin1String(scheduled);
        settings.MySQL_DB = QLatin1String(database);
        return std::make_unique<LoadedQueue>(settings, QString());
    };
    const auto compare = [&](const char* what, const std::function<void()>& ofLong,
                             const std::function<void()>& ofShort, double target = kLengthTarget) {
        const SideBySide times = sideBySide(kFastSamples, ofLong, ofShort);
        table.add({std::string("LimitSelect, 100,000 rows over 100: ") + what, "ms", times.measured, times.reference,
                   target, kFastSamples});
    };

    const auto longQueue = queueOf("kibo", "N"), shortQueue = queueOf("kibo_short", "N");
    compare(
        "rows alone", [&] { (void)longQueue->database().openRows(longQueue->statement()); },
        [&] { (void)shortQueue->database().openRows(shortQueue->statement()); });
    const SideBySide refreshes = paced([&] { longQueue->refresh(kRows); }, [&] { shortQueue->refresh(kFewRows); });
    table.add({"LimitSelect, 100,000 rows over 100: mean refresh in a minute", "ms", refreshes.measured,
               refreshes.reference, kTimeTarget, kPacedRefreshes});
    const auto later = queueOf("kibo_later", "Y"), shortLater = queueOf("kibo_short_later", "Y");
    compare(
        "10 due", [&] { later->refresh(kDueRows); }, [&] { shortLater->refresh(kDueRows); });
}

void measureMySql(Table& table) {
    test::MariaDbServer& server = test::MariaDbServer::shared();
    server.empty();
    server.run(insertInMySql(QStringLiteral("kibo"), kRows) + QStringLiteral("ANALYZE TABLE kibo.outbox;"));
    LoadedQueue queue(server.settings(false), {});
    compare(table, "MySQL", queue, QStringLiteral("mariadb"),
            {QStringLiteral("--no-defaults"), QStringLiteral("--protocol=tcp"), QStringLiteral("-h127.0.0.1"),
             QStringLiteral("-P%1").arg(server.port()), QStringLiteral("-ukibo"),
             QStringLiteral("--password=") + test::MariaDbServer::password(),
             QStringLiteral("--default-character-set=utf8mb4"), QStringLiteral("-e"), queue.statement(),
             QStringLiteral("kibo")});
    compareLengths(table, server);
}

}  // namespace

void measureQueue(Table& table) {
    measureSqlite(table);
    measureMySql(table);
}

}  // namespace kibo::bench
