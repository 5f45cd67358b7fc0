#include "base/table_text.h"

#include <QStringDecoder>
#include <algorithm>
#include <cstring>
#include <utility>

namespace kibo {
namespace {

/// A comma, unless the first line separates by semicolons alone, as where a comma is the decimal sign.
QChar separatorOf(const QString& text) {
    bool quoted = false, semicolon = false;
    for (const QChar c : text) {
        if (c == u'"') quoted = !quoted;
        if (quoted) continue;
        if (c == u',') return c;
        if (c == u'\n') break;
        semicolon = semicolon || c == u';';
    }
    return semicolon ? u';' : u',';
}

}  // namespace

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

Result<std::vector<QStringList>> csvRows(QByteArrayView file) {
    QStringDecoder decoder(QStringDecoder::Utf8);  // passes over kCsvStart
    const QString text = decoder.decode(file);
    if (decoder.hasError())
        return Failure{FailureKind::InvalidArgument, "the file isn't UTF-8; save it as \"CSV UTF-8\""};
    const QChar separator = separatorOf(text);
    std::vector<QStringList> rows;
    QStringList row;
    QString cell;
    bool quoted = false;
    const auto endRow = [&] {
        row.append(std::exchange(cell, {}));
        if (row.size() > 1 || !row.front().isEmpty()) rows.push_back(row);
        row.clear();
    };
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text[at];
        if (quoted) {
            if (c != u'"') {
                cell += c;
            } else if (at + 1 < text.size() && text[at + 1] == u'"') {
                cell += text[++at];
            } else {
                quoted = false;
            }
        } else if (c == u'"' && cell.isEmpty()) {
            quoted = true;
        } else if (c == separator) {
            row.append(std::exchange(cell, {}));
        } else if (c == u'\n') {
            endRow();
        } else if (c != u'\r') {
            cell += c;
        }
    }
    if (quoted)
        return Failure{FailureKind::InvalidArgument,
                       "a quotation mark is never closed, behind row " + std::to_string(rows.size())};
    if (!row.isEmpty() || !cell.isEmpty()) endRow();
    return rows;
}

}  // namespace kibo
