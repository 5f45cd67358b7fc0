#include "app/query_rows.h"

#include <QDateTime>
#include <QSqlRecord>
#include <QUuid>
#include <QVariant>

namespace kibo {
namespace {

constexpr int kPageRows = 64;
constexpr size_t kPagesKept = 8;

}  // namespace

QString fieldText(const QSqlQuery& query, int column) {
    if (query.isNull(column)) return {};
    const QVariant value = query.value(column);
    QString text;
    switch (value.typeId()) {
        case QMetaType::QDateTime:
            text = value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
            break;
        case QMetaType::QByteArray:
            text = QString::fromUtf8(value.toByteArray());
            break;
        default:
            text = value.toString();
    }
    return text.isNull() ? QStringLiteral("") : text;
}

QStringList rowText(const QSqlQuery& query) {
    QStringList row;
    const int columns = query.record().count();
    row.reserve(columns);
    for (int column = 0; column < columns; ++column) row.append(fieldText(query, column));
    return row;
}

QString CursorRows::text(int row, int column) const {
    return query_.isActive() && query_.seek(row) ? fieldText(query_, column) : QString();
}

SnapshotRows::SnapshotRows(const QString& uri, const QString& sql, const QVariantList& values)
    : name_(QUuid::createUuid().toString()), sql_(sql), values_(values) {
    QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_);
    connection.setDatabaseName(uri);
    connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_OPEN_READONLY"));
    if (!connection.open()) {
        error_ = connection.lastError();
        return;
    }
    QSqlQuery count(connection);
    count.setForwardOnly(true);
    // The read transaction takes its state of the store with the first query and keeps it for all later ones.
    if (count.exec(QStringLiteral("BEGIN")) &&
        run(count, QStringLiteral("select count(*) from (") + sql + QLatin1Char(')')) && count.next())
        rowCount_ = count.value(0).toInt();
    error_ = count.lastError();
}

SnapshotRows::~SnapshotRows() {
    detach();
}

void SnapshotRows::detach() {
    pages_.clear();
    if (!name_.isEmpty()) QSqlDatabase::removeDatabase(name_);
    name_.clear();
}

bool SnapshotRows::run(QSqlQuery& query, const QString& sql) const {
    if (!query.prepare(sql)) return false;
    for (const QVariant& value : values_) query.addBindValue(value);
    return query.exec();
}

const SnapshotRows::Page& SnapshotRows::page(int number) const {
    if (const auto known = pages_.find(number); known != pages_.end()) return known->second;
    if (pages_.size() >= kPagesKept) {  // a grid scrolls on: what is farthest away goes
        const bool first = number - pages_.begin()->first > pages_.rbegin()->first - number;
        pages_.erase(first ? pages_.begin() : std::prev(pages_.end()));
    }
    Page& page = pages_[number];
    QSqlQuery query(QSqlDatabase::database(name_, false));
    query.setForwardOnly(true);
    if (run(query, sql_ + QStringLiteral(" limit %1 offset %2").arg(kPageRows).arg(qint64(number) * kPageRows)))
        while (query.next()) page.push_back(rowText(query));
    return page;
}

QString SnapshotRows::text(int row, int column) const {
    if (name_.isEmpty() || row < 0 || row >= rowCount_) return {};
    const Page& rows = page(row / kPageRows);
    const auto at = static_cast<size_t>(row % kPageRows);
    return at < rows.size() ? rows[at].value(column) : QString();
}

}  // namespace kibo
