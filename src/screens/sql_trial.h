#pragma once

#include <QString>
#include <QStringList>
#include <atomic>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

#include "base/row_source.h"
#include "store/database.h"
#include "store/sql_script.h"

namespace kibo {

/// What came of statements that an operator tried out.
struct SqlOutcome {
    int done = 0;                           ///< so many of them, from the first on
    QString problem;                        ///< of the next one, in the database's words; empty: none
    bool stopped = false;                   ///< that is why it ended
    std::optional<qint64> changed;          ///< rows, by all of them; nothing where none of them changes rows
    QStringList header;                     ///< of the last one that gives rows; empty: none does
    std::shared_ptr<const RowSource> rows;  ///< the first of these
    qint64 found = 0;                       ///< how many these are, shown or not
    bool more = false;                      ///< more than that: the database doesn't count them

    /// All that as a sentence or two, for `all` statements.
    QString inWords(int all) const;
};

/// Rows of a SELECT that are kept, and how much their texts may hold.
inline constexpr int kTriedRows = 1000;
inline constexpr qsizetype kTriedCharacters = 4'000'000;

/// Runs statements one after the other over a connection of its own, up to the first that fails, and behind them
/// "commit" on a server. Rows are counted to the last, but only the first ones kept. Runs in any thread and
/// ends soon after `stop` was asked for; `read` counts the rows meanwhile.
SqlOutcome tryStatements(StoreAddress address, const std::vector<SqlStatement>& statements, const std::stop_token& stop,
                         std::atomic<qint64>& read);

}  // namespace kibo
