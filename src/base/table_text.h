#pragma once

#include <QByteArrayView>
#include <QString>
#include <string>

#include "base/row_source.h"

namespace kibo {

// Cells as other programs take them over, such as spreadsheets: whole texts, whatever they hold.

/// Appends a row as a line of a table on the clipboard, with its end. Cells stand in double quotes, which are doubled
/// inside, where they hold what would end them, a tab or a line break, or what would be taken for such a quote.
void appendTableLine(QString& table, const RowSource& rows, int columns, int row);

/// A cell in UTF-8 as one of a CSV file with commas, appended to `line`.
void appendCsvCell(std::string& line, QByteArrayView cell);
inline constexpr char kCsvLineEnd[] = "\r\n";

/// What a CSV file begins with, so that spreadsheets take it for UTF-8.
inline constexpr char kCsvStart[] = "\xEF\xBB\xBF";

}  // namespace kibo
