#include "base/table_text.h"

#include <algorithm>

namespace kibo {

QString tableLine(const RowSource& rows, int columns, int row) {
    QString line;
    for (int column = 0; column < columns; ++column) {
        if (column > 0) line += u'\t';
        const QString text = rows.text(row, column);
        const auto needsQuotes = [](QChar c) { return c == u'\t' || c == u'"' || c == u'\n' || c == u'\r'; };
        if (std::none_of(text.begin(), text.end(), needsQuotes)) {
            line += text;
        } else {
            line += u'"' + QString(text).replace(u'"', QStringLiteral("\"\"")) + u'"';
        }
    }
    return line + u'\n';
}

void appendCsvCell(std::string& line, QByteArrayView cell) {
    const auto needsQuotes = [](char c) { return c == ',' || c == '"' || c == '\n' || c == '\r'; };
    if (std::none_of(cell.begin(), cell.end(), needsQuotes)) {
        line.append(cell.data(), static_cast<size_t>(cell.size()));
        return;
    }
    line += '"';
    for (const char c : cell) line.append(c == '"' ? 2 : 1, c);
    line += '"';
}

}  // namespace kibo
