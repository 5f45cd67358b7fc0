#pragma once

#include <QString>
#include <vector>

#include "store/database.h"

namespace kibo {

/// What a person should be asked about before a statement runs.
enum class SqlDanger {
    None,
    ChangesAllRows,  ///< an UPDATE without WHERE
    DeletesAllRows,  ///< a DELETE without WHERE
    Drops,           ///< tables, columns or the like go, with what they hold
    Truncates,
    Unseen  ///< a block or a text that is run: what it does doesn't show
};

/// One statement of a text that holds several.
struct SqlStatement {
    QString text;  ///< as it was written, without the delimiter
    QString verb;  ///< "DELETE", also where WITH or the like stands before it
    SqlDanger danger = SqlDanger::None;
    bool selects = false;  ///< rows that are given here, not into a file, a variable or a table
};

/// The statements of `text` as `kind` of store reads it: what stands in quotes and comments ends none and counts for
/// nothing. The body of a trigger or routine belongs to its statement; lines as "DELIMITER $$" are understood as the
/// client programs of MySQL do. Parts that hold nothing but comments are left out.
std::vector<SqlStatement> sqlStatements(const QString& text, DatabaseKind kind);

}  // namespace kibo
