#include "store/row_reader.h"

#include <QSqlRecord>
#include <cstring>

#include "store/query_rows.h"

namespace kibo {
namespace {

/// Most cells are, and short; asked here it costs less than a call.
bool isAscii(QByteArrayView bytes) {
    constexpr quint64 kHighBits = 0x8080808080808080;
    quint64 all = 0, eight = 0;
    qsizetype at = 0;
    for (; at + qsizetype{sizeof eight} <= bytes.size(); at += sizeof eight) {
        std::memcpy(&eight, bytes.data() + at, sizeof eight);
        all |= eight;
    }
    for (; at < bytes.size(); ++at) all |= static_cast<unsigned char>(bytes[at]);
    return (all & kHighBits) == 0;
}

}  // namespace

QString RowReader::text(int column) const {
    const QByteArrayView bytes = column >= 0 && column < columnCount() ? cell(column) : QByteArrayView();
    if (bytes.isNull()) return {};
    return bytes.isEmpty() ? QStringLiteral("") : QString::fromUtf8(bytes);
}

QStringList RowReader::row() const {
    QStringList row;
    row.reserve(columnCount());
    for (int column = 0; column < columnCount(); ++column) row.append(text(column));
    return row;
}

int RowReader::columnOf(const QString& name) const {
    for (int column = 0; column < columnCount(); ++column)
        if (names_[column].compare(name, Qt::CaseInsensitive) == 0) return column;
    return -1;
}

void RowReader::setColumns(const QStringList& names) {
    names_ = names;
    kept_.resize(static_cast<size_t>(names.size()));
}

QByteArrayView RowReader::readable(QByteArrayView bytes, int column) const {
    return isAscii(bytes) || bytes.isValidUtf8() ? bytes : kept(QString::fromUtf8(bytes).toUtf8(), column);
}

QByteArrayView RowReader::kept(QByteArray bytes, int column) const {
    QByteArray& place = kept_[static_cast<size_t>(column)];
    place = std::move(bytes);
    return place.isEmpty() ? QByteArrayView("", qsizetype{0}) : QByteArrayView(place);
}

QueryReader::QueryReader(QSqlQuery query) : query_(std::move(query)) {
    const QSqlRecord record = query_.record();
    QStringList names;
    for (int column = 0; column < record.count(); ++column) names.append(record.fieldName(column));
    setColumns(names);
}

bool QueryReader::next() {
    if (query_.next()) return true;
    error_ = query_.lastError();
    return false;
}

QByteArrayView QueryReader::cell(int column) const {
    const QString text = fieldText(query_, column);
    return text.isNull() ? QByteArrayView() : kept(text.toUtf8(), column);
}

}  // namespace kibo
