#include "store/statement_break.h"

#include <sqlite3.h>

#include <QSqlDatabase>
#include <QSqlDriver>
#include <chrono>
#include <mutex>

#include "base/log.h"

namespace kibo {
namespace {

/// Instructions of SQLite's engine between two looks, some tens of microseconds.
constexpr int kInstructions = 1000;
constexpr std::chrono::milliseconds kKillAgain(200);

/// Again and again, since a statement that is only about to begin isn't hit.
void kill(const StoreAddress& address, const QString& connection, const std::stop_token& over) {
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    while (!over.stop_requested()) {
        Result<qint64> done = qint64{0};
        if (!database.isOpen()) {
            if (const Result<void> opened = database.openSame(address); !opened) done = opened.failure();
        }
        if (done) done = database.attempt(QStringLiteral("KILL QUERY ") + connection);
        if (!done)
            log::warning("app", QStringLiteral("a statement can't be broken off: ") +
                                    QString::fromStdString(done.failure().text));
        (void)wake.wait_for(lock, over, kKillAgain, [] { return false; });
    }
}

int asked(void* stop) {
    return static_cast<const std::stop_token*>(stop)->stop_requested() ? 1 : 0;
}

}  // namespace

StatementBreak::StatementBreak(Database& database, std::stop_token stop) : stop_(std::move(stop)) {
    StoreAddress address = database.address();
    address.tables.clear();
    if (address.sqlite) {
        const QVariant handle = QSqlDatabase::database(database.name_, false).driver()->handle();
        local_ = *static_cast<sqlite3* const*>(handle.constData());
        sqlite3_progress_handler(local_, kInstructions, asked, &stop_);
    } else if (database.kind() == DatabaseKind::MySql) {
        const QString connection = database.OpenRecordset(QStringLiteral("select connection_id()")).field(0);
        asked_.emplace(stop_, [this, address, connection] {
            killer_ =
                std::jthread([address, connection](const std::stop_token& over) { kill(address, connection, over); });
        });
    }
}

StatementBreak::~StatementBreak() {
    if (local_) sqlite3_progress_handler(local_, 0, nullptr, nullptr);
    asked_.reset();
}

}  // namespace kibo
