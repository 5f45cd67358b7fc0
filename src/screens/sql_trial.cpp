#include "screens/sql_trial.h"

#include <QLocale>

#include "base/log.h"
#include "store/row_reader.h"
#include "store/statement_break.h"

namespace kibo {
namespace {

/// A cell of the grid shows one line; more of it is of no use there.
constexpr qsizetype kShownCharacters = 4000;

QString counted(qint64 number, const char* one) {
    const QString noun = QLatin1String(one);
    return number == 1 ? QStringLiteral("1 ") + noun
                       : QStringLiteral("%1 %2s").arg(QLocale(QLocale::English).toString(number), noun);
}

class Trial {
 public:
    Trial(Database& database, bool local, const std::stop_token& stop, std::atomic<qint64>& read)
        : database_(database), local_(local), stop_(stop), read_(read) {}

    SqlOutcome run(const std::vector<SqlStatement>& statements) {
        for (const SqlStatement& statement : statements) {
            if (!runs(statement)) return outcome_;
            ++outcome_.done;
        }
        if (database_.kind() != DatabaseKind::MySql) return outcome_;
        if (!database_.attempt(QStringLiteral("commit"))) outcome_.problem = database_.said();
        return outcome_;
    }

 private:
    bool runs(const SqlStatement& statement) {
        const bool server = database_.kind() == DatabaseKind::MySql;
        // MariaDB's driver holds all rows of a statement in memory, so it is given few; not where the rows go
        // elsewhere.
        if (server)
            (void)database_.attempt(QStringLiteral("set sql_select_limit = ") +
                                    (statement.selects ? QString::number(kTriedRows + 1) : QStringLiteral("default")));
        bool givesRows = false;
        const Result<void> done = database_.readThrough(
            statement.text, {}, [this](const RowReader& row) { return take(row); },
            [&](const RowReader& columns) {
                givesRows = columns.columnCount() > 0;
                if (givesRows) begin(columns);
            });
        outcome_.stopped = stop_.stop_requested();
        if (outcome_.stopped) return false;
        if (!done) {
            const QString said = database_.said();
            outcome_.problem = said.isEmpty() ? QString::fromStdString(done.failure().text) : said;
            return false;
        }
        if (server && statement.selects && outcome_.found == kTriedRows + 1) countAll(statement);
        countChanged(statement, givesRows);
        outcome_.stopped = stop_.stop_requested();
        return !outcome_.stopped;
    }

    /// A LIMIT of the statement's own counts instead of ours, and its rows were all read then.
    void countAll(const SqlStatement& statement) {
        (void)database_.attempt(QStringLiteral("set sql_select_limit = default"));
        qint64 all = 0;
        const Result<void> counted =
            database_.readThrough(QStringLiteral("select count(*) from (\n%1\n) counted").arg(statement.text), {},
                                  [&all](const RowReader& row) {
                                      all = row.number(0);
                                      return true;
                                  });
        // Two columns of one name, say, do as rows, but not as a table.
        outcome_.more = !counted;
        if (counted) outcome_.found = all;
    }

    void begin(const RowReader& columns) {
        kept_ = std::make_shared<ListRows>();
        outcome_.header = columns.names();
        outcome_.rows = kept_;
        outcome_.found = 0;
        outcome_.more = false;
        characters_ = 0;
        read_ = 0;
    }

    bool take(const RowReader& row) {
        read_ = ++outcome_.found;
        if (kept_->rowCount() < kTriedRows && characters_ < kTriedCharacters) {
            QStringList cells = row.row();
            for (QString& cell : cells) {
                if (cell.size() > kShownCharacters) cell = cell.left(kShownCharacters) + QChar(0x2026);
                characters_ += cell.size();
            }
            kept_->append(std::move(cells));
        }
        return !stop_.stop_requested();
    }

    /// Not every statement changes rows, and SQLite goes on telling of the last one that did. An Access file tells
    /// nothing.
    void countChanged(const SqlStatement& statement, bool givesRows) {
        static const QStringList kChanging{QStringLiteral("INSERT"), QStringLiteral("UPDATE"), QStringLiteral("DELETE"),
                                           QStringLiteral("REPLACE")};
        const bool server = database_.kind() == DatabaseKind::MySql;
        if ((server ? givesRows : !local_) || !kChanging.contains(statement.verb)) return;
        const Recordset count =
            database_.OpenRecordset(server ? QStringLiteral("select row_count()") : QStringLiteral("select changes()"));
        const qint64 rows = count.field(0).toLongLong();
        if (rows >= 0) outcome_.changed = outcome_.changed.value_or(0) + rows;
    }

    Database& database_;
    const bool local_;  // a SQLite file
    const std::stop_token& stop_;
    std::atomic<qint64>& read_;
    SqlOutcome outcome_;
    std::shared_ptr<ListRows> kept_;
    qsizetype characters_ = 0;
};

}  // namespace

SqlOutcome tryStatements(StoreAddress address, const std::vector<SqlStatement>& statements, const std::stop_token& stop,
                         std::atomic<qint64>& read) {
    address.tables.clear();  // one of them may be what a statement is to make
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    if (const Result<void> opened = database.openRowByRow(address); !opened) {
        SqlOutcome outcome;
        outcome.problem = QString::fromStdString(opened.failure().text);
        return outcome;
    }
    const StatementBreak breaks(database, stop);
    const SqlOutcome outcome = Trial(database, database.address().sqlite, stop, read).run(statements);
    log::info("screens", QStringLiteral("SQL tried: %1 of %2 statements ran, %3 rows")
                             .arg(outcome.done)
                             .arg(statements.size())
                             .arg(outcome.found));
    return outcome;
}

QString SqlOutcome::inWords(int all) const {
    QStringList told;
    if (!problem.isEmpty()) {
        told += done == all ? QStringLiteral("All ran, but the commit failed: %1.").arg(problem)
                : all == 1  ? QStringLiteral("The database refuses it: %1").arg(problem)
                            : QStringLiteral("Statement %1 of %2 is refused: %3").arg(done + 1).arg(all).arg(problem);
        if (done > 0 && done < all) told += QStringLiteral("What stands before it has run.");
    } else if (stopped) {
        told += QStringLiteral("Stopped.");
        if (all > 1) told += QStringLiteral("%1 had run.").arg(counted(done, "statement"));
    }
    if (changed) told += counted(*changed, "row") + QStringLiteral(" changed.");
    if (!header.isEmpty()) {
        const qint64 beyond = more ? 0 : found - (rows ? rows->rowCount() : 0);
        if (more) {
            told += QStringLiteral("More than %1 found; the first are shown.").arg(counted(found - 1, "row"));
        } else {
            told += counted(found, "row") + (stopped ? QStringLiteral(" read.") : QStringLiteral(" found."));
        }
        if (beyond > 0)
            told += QStringLiteral("%1 beyond those shown.").arg(QLocale(QLocale::English).toString(beyond));
    }
    return told.isEmpty() ? QStringLiteral("Done.") : told.join(u' ');
}

}  // namespace kibo
