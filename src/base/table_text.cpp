#include "base/table_text.h"

#include <algorithm>

namespace kibo {
namespace {

QString quotedIf(const QString& text, char16_t separator) {
    const auto needsQuotes = [separator](QChar c) { return c == separator || c == u'"' || c == u'\n' || c == u'\r'; };
    if (std::none_of(text.begin(), text.end(), needsQuotes)) return text;
    QString inside = text;
    return u'"' + inside.replace(u'"', QStringLiteral("\"\"")) + u'"';
}

}  // namespace

QString quotedCell(const QString& text) {
    return quotedIf(text, u'\t');
}

QString tabSeparated(const QStringList& cells) {
    QString line;
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (i > 0) line += u'\t';
        line += quotedCell(cells[i]);
    }
    return line;
}

QString tabSeparated(const RowSource& rows, int columns, int first, int last) {
    QString text;
    for (int row = first; row <= last; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (column > 0) text += u'\t';
            text += quotedCell(rows.text(row, column));
        }
        text += u'\n';
    }
    return text;
}

QString csvLine(const QStringList& cells) {
    QString line;
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (i > 0) line += u',';
        line += quotedIf(cells[i], u',');
    }
    return line + QStringLiteral("\r\n");
}

}  // namespace kibo
