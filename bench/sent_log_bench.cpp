#include <malloc.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <atomic>
#include <thread>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "bench/process_figures.h"
#include "screens/sent_log.h"
#include "support/mariadb_server.h"
#include "support/stores.h"

namespace kibo::bench {
namespace {

constexpr int kRows = 1'000'000;
constexpr int kRowsOfDay = 10'000;
constexpr int kCopied = 100'000;
constexpr int kSamples = 5;
constexpr int kOutcomes = 100;
constexpr double kOutcomeMs = 5, kDayMs = 300, kTextMs = 3000, kGrowthMb = 50, kCopyTarget = 2;
const QDate kFirst(2026, 3, 1);

// Rows as a campaign leaves them, a hundred days of ten thousand; one in ten thousand holds what is looked for.
const QString kFields = QStringLiteral(
    "%1, 0, %2, 'Good morning, this is the reminder that you asked for. Your appointment is on Monday at nine; answer "
    "this message to change it.', %3, case when %1 % 100 = 0 then 'fail' else '' end");
const QString kInsert = QStringLiteral("insert into sent (id, wa_mode, wa_no, wa_text, wa_time, status) select ");
// What became of each of them.
const QString kRecords = QStringLiteral(
    "; insert into kibo_message (source, outbox_id, taken, typed, sent, ended, result, reason, ms, page_id, ticks, "
    "ticks_time) select 'outbox', id, wa_time, wa_time, wa_time, wa_time, case when status = 'fail' then 'fail' else "
    "'sent' end, case when status = 'fail' then 'the number is not on WhatsApp' end, 3500, "
    "'true_6281212345678@c.us_3EB0123456789ABCDEF012', 2, wa_time from sent");

void fillSqlite(const QString& file) {
    test::sqlite(
        file,
        QStringLiteral("with recursive s(n) as (select 1 union all select n + 1 from s where n < %1) ").arg(kRows) +
            kInsert +
            kFields.arg(QStringLiteral("n"), QStringLiteral("printf('62812%08d', n)"),
                        QStringLiteral("datetime('2026-03-01 00:00:05', ((n - 1) / 10000) || ' days', "
                                       "((n - 1) % 10000 * 8) || ' seconds')")) +
            QStringLiteral(" from s; update sent set wa_text = wa_text || ' needle' where id % 10000 = 0") + kRecords);
}

void fillServer(test::MariaDbServer& server) {
    server.run(
        kInsert +
        kFields.arg(QStringLiteral("seq"), QStringLiteral("concat('62812', lpad(seq, 8, '0'))"),
                    QStringLiteral("'2026-03-01 00:00:05' + interval (seq - 1) div 10000 day + interval (seq - 1) "
                                   "% 10000 * 8 second")) +
        QStringLiteral(" from seq_1_to_%1; update sent set wa_text = concat(wa_text, ' needle') where id % 10000 = 0")
            .arg(kRows) +
        kRecords + QStringLiteral("; analyze table sent, kibo_message;"));
}

/// A search as the window does it: over a connection of its own, on a thread of its own.
struct Search {
    std::unique_ptr<FoundRows> rows = std::make_unique<FoundRows>();
    double firstMs = 0, allMs = 0;
};
Search searched(const StoreAddress& store, const SentQuery& query) {
    Search search;
    std::atomic<bool> ended = false;
    Result<bool> result = false;
    const auto begin = std::chrono::steady_clock::now();
    const auto elapsed = [&begin] {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    };
    std::jthread thread([&](const std::stop_token& stop) {
        const SystemClock clock;
        const ErrorPolicy policy;
        Database database(clock, policy);
        Result<void> opened = database.openToRead(store);
        if (opened) opened = search.rows->open();
        result = opened ? SentLog(database, query.multi, {}).search(query, *search.rows, stop) : opened.failure();
        ended = true;
    });
    while (!ended && search.rows->rowCount() == 0) usleep(500);
    search.firstMs = elapsed();
    thread.join();
    search.allMs = elapsed();
    require(result.ok(), result ? "" : result.failure().text);
    require(result.value(), "nothing was told of what became of the messages");
    return search;
}

void compare(Table& table, const char* store, Database& database, bool access, const QString& program,
             const QStringList& arguments) {
    const StoreAddress address = database.address();
    const QDate last = kFirst.addDays(kRows / kRowsOfDay - 1);
    const auto query = [access](const char* key, QDate first, QDate end) {
        return SentQuery{QLatin1String(key), first, end, access, false};
    };
    const std::string name = std::string("sent log of 1,000,000 rows, ") + store;
    std::vector<double> day, text;
    for (int i = 0; i < kSamples; ++i) {
        const QDate date = kFirst.addDays(20 + 10 * i);
        const Search ofDay = searched(address, query("", date, date));
        require(ofDay.rows->rowCount() > kRowsOfDay * 9 / 10, "not the rows of a day");
        day.push_back(ofDay.firstMs);
        const Search ofText = searched(address, query("needle", kFirst, last));
        require(ofText.rows->rowCount() == kRows / 10'000, "not the rows with the text");
        text.push_back(ofText.allMs);
    }
    table.add({name + ": a day, first lines", "ms", median(day), kDayMs, 1, kSamples});
    table.add({name + ": a text, all lines", "ms", median(text), kTextMs, 1, kSamples});

    // As a program asks that waits for its message.
    std::vector<double> outcome;
    for (int i = 1; i <= kOutcomes; ++i)
        outcome.push_back(millisecondsOf([&] {
            const Recordset told =
                database.OpenRecordset(QStringLiteral("select state, final, reason from kibo_outcome where id = ?"),
                                       {i * (kRows / kOutcomes)});
            require(told.recordCount() == 1 && !told.field(QStringLiteral("state")).isEmpty(), "nothing is told");
        }));
    table.add({name + ": kibo_outcome of a message", "ms", median(outcome), kOutcomeMs, 1, kOutcomes});

    (void)malloc_trim(0);  // what was freed before is not there to grow into
    const double before = processFigures(getpid()).residentMb;
    restartOwnPeak();
    {
        const Search all = searched(address, query("", kFirst, last));
        require(all.rows->rowCount() > kRows * 9 / 10, "not all rows");
        table.note("  " + name + ": every row found, first lines " + std::to_string(lround(all.firstMs)) +
                   " ms, all lines " + std::to_string(lround(all.allMs)) + " ms");
    }
    table.add({name + ": growth with every row found", "MB", processFigures(getpid()).peakResidentMb - before,
               kGrowthMb, 1, 1});

    // Ten days, from the search to the file, against the client's own query into one.
    const SentQuery some = query("", kFirst, kFirst.addDays(kCopied / kRowsOfDay - 1));
    const QTemporaryDir folder;
    const QStringList header(kSentColumns, QStringLiteral("column"));
    std::vector<double> exporting;
    const SideBySide copy = sideBySide(
        kSamples,
        [&] {
            const Search search = searched(address, some);
            std::atomic<int> lines = 0;
            exporting.push_back(millisecondsOf([&] {
                require(
                    exportLines(*search.rows, {}, header, folder.filePath(QStringLiteral("x.csv")), {{}, lines}).ok(),
                    "no file");
            }));
        },
        [&] {
            QString sql = QStringLiteral("select f.*, k.ended, k.ticks, k.ticks_time, k.reason from (") + some.sql() +
                          QStringLiteral(") f left join kibo_message k on k.outbox_id = f.id and k.source = 'outbox'");
            for (const QVariant& value : some.values())
                sql.replace(sql.indexOf(u'?'), 1, u'\'' + value.toString() + u'\'');
            runInto(folder.filePath(QStringLiteral("client")), program,
                    arguments + QStringList{withSqliteDateLiterals(sql)});
        });
    table.add({std::string("100,000 sent messages searched and exported, ") + store, "ms", copy.measured,
               copy.reference, kCopyTarget, kSamples});
    table.add({std::string("100,000 found messages exported, ") + store, "ms", median(exporting), copy.reference,
               kCopyTarget, kSamples});
}

void open(Database& database, const Settings& settings, const QString& folder) {
    const Result<void> opened = database.OpenDatabase(settings, folder);
    require(opened.ok(), opened ? "" : opened.failure().text);
}

}  // namespace

void measureSentLog(Table& table) {
    const SystemClock clock;
    const ErrorPolicy policy;
    {
        const QTemporaryDir folder;
        createStores(folder.path());
        const QString file = folder.filePath(QStringLiteral("kb.mdb"));
        fillSqlite(file);
        Settings settings;
        settings.UseMDB = QStringLiteral("Y");
        Database database(clock, policy);
        open(database, settings, folder.path());
        compare(table, "SQLite", database, true, QStringLiteral("sqlite3"), {file});
    }
    test::MariaDbServer& server = test::MariaDbServer::shared();
    server.empty();
    fillServer(server);
    Database database(clock, policy);
    open(database, server.settings(false), {});
    compare(table, "MySQL", database, false, QStringLiteral("mariadb"),
            {QStringLiteral("--no-defaults"), QStringLiteral("--protocol=tcp"), QStringLiteral("-h127.0.0.1"),
             QStringLiteral("-P%1").arg(server.port()), QStringLiteral("-ukibo"),
             QStringLiteral("--password=") + test::MariaDbServer::password(),
             QStringLiteral("--default-character-set=utf8mb4"), QStringLiteral("-Dkibo"), QStringLiteral("-e")});
}

}  // namespace kibo::bench
