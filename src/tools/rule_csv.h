#pragma once

#include <QByteArray>
#include <vector>

#include "platform/result.h"
#include "responder/rule.h"

namespace kibo {

/// Rules as a CSV file with a line of column names, those of the table, for spreadsheets and for `rulesFromCsv`.
QByteArray rulesToCsv(const std::vector<Rule>& rules);

/// The rules of such a file, their texts as they are stored. Columns may stand in any order; all but `keyword` and
/// `answer` may be missing. A failure names the row, counted from the line of names as 1, as spreadsheets do.
Result<std::vector<Rule>> rulesFromCsv(const QByteArray& file);

}  // namespace kibo
