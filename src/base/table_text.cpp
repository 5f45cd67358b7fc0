#include "base/table_text.h"

#include <algorithm>
#include <cstring>

namespace kibo {

void appendTableLine(QString& table, const RowSource& rows, int columns, int row) {
    const QStringList cells = rows.cells(row, columns);
    for (int column = 0; column < columns; ++column) {
        if (column > 0) table += u'\t';
        if (column >= cells.size()) continue;
        const QString& text = cells[column];
        // All of them stand below the letters, so that most characters cost one comparison.
        const auto needsQuotes = [](QChar c) {
            return c <= u'"' && (c == u'"' || c == u'\t' || c == u'\n' || c == u'\r');
        };
        if (std::none_of(text.begin(), text.end(), needsQuotes)) {
            table += text;
        } else {
            table += u'"' + QString(text).replace(u'"', QStringLiteral("\"\"")) + u'"';
        }
    }
    table += u'\n';
}

void appendCsvCell(std::string& line, QByteArrayView cell) {
    const auto length = static_cast<size_t>(cell.size());
    const auto holds = [&](char c) { return length > 0 && std::memchr(cell.data(), c, length) != nullptr; };
    if (!holds(',') && !holds('"') && !holds('\n') && !holds('\r')) {
        line.append(cell.data(), length);
        return;
    }
    line += '"';
    for (QByteArrayView left = cell; !left.isEmpty();) {
        const qsizetype quote = left.indexOf('"');
        const qsizetype end = quote < 0 ? left.size() : quote + 1;
        line.append(left.data(), static_cast<size_t>(end));
        if (quote >= 0) line += '"';
        left = left.sliced(end);
    }
    line += '"';
}

}  // namespace kibo
