#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "base/row_source.h"
#include "platform/result.h"

namespace kibo {

// Cells as other programs take them over, such as spreadsheets: whole texts, whatever they hold.

/// Appends a row as a line of a table on the clipboard, with its end. Cells stand in double quotes, which are doubled
/// inside, where they hold what would end them, a tab or a line break, or what would be taken for such a quote.
void appendTableLine(QString& table, const RowSource& rows, int columns, int row);

/// A cell in UTF-8 as one of a CSV file with commas, appended to `line`.
void appendCsvCell(std::string& line, QByteArrayView cell);
inline constexpr char kCsvLineEnd[] = "\r\n";

/// The rows of a CSV file in UTF-8 with their cells, separated by commas or, where the first line has none outside of
/// quotes, by semicolons; lines that hold nothing are left out. Fails for what isn't UTF-8 and for a quote that nothing
/// closes.
Result<std::vector<QStringList>> csvRows(QByteArrayView file);

/// What a CSV file begins with, so that spreadsheets take it for UTF-8.
inline constexpr char kCsvStart[] = "\xEF\xBB\xBF";

}  // namespace kibo
