#pragma once

#include <QString>
#include <QStringList>

#include "base/row_source.h"

namespace kibo {

// Cells as other programs take them over, such as spreadsheets: whole texts, whatever they hold.

/// A cell of a table on the clipboard. In double quotes, which are doubled inside, where it holds what would end it, a
/// tab or a line break, or what would be taken for such a quote.
QString quotedCell(const QString& text);

/// `cells` as one line of a table on the clipboard, without its end.
QString tabSeparated(const QStringList& cells);

/// Rows `first` to `last` of `rows`, each line ended by a line break; for one cell or a million.
QString tabSeparated(const RowSource& rows, int columns, int first, int last);

/// `cells` as one line of a CSV file with commas, its end included.
QString csvLine(const QStringList& cells);

/// What a CSV file begins with, so that spreadsheets take it for UTF-8.
inline constexpr char kCsvStart[] = "\xEF\xBB\xBF";

}  // namespace kibo
