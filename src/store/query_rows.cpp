#include "store/query_rows.h"

#include <QDateTime>
#include <QSqlRecord>
#include <QUuid>

namespace kibo {
namespace {

constexpr size_t kPageRows = 64;
constexpr size_t kPagesKept = 8;

}  // namespace

QString fieldText(const QSqlQuery& query, int column) {
    const QVariant value = query.value(column);
    if (value.isNull()) return {};
    QString text;
    switch (value.typeId()) {
        case QMetaType::QString:
            text = *static_cast<const QString*>(value.constData());
            break;
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

QStringList rowText(const QSqlQuery& query, int columns) {
    QStringList row;
    row.reserve(columns);
    for (int column = 0; column < columns; ++column) row.append(fieldText(query, column));
    return row;
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
    QSqlQuery begin(connection);
    // The read transaction takes its state of the store with the first query and keeps it for all later ones.
    if (!begin.exec(kSqliteCache) || !begin.exec(QStringLiteral("BEGIN"))) {
        error_ = begin.lastError();
        return;
    }
    SqliteReader count(connection, QStringLiteral("select count(*) from (") + sql + QLatin1Char(')'), values_);
    if (count.next()) rowCount_ = count.text(0).toInt();
    error_ = count.error();
}

SnapshotRows::~SnapshotRows() {
    detach();
}

void SnapshotRows::detach() {
    pages_.clear();
    last_ = nullptr;
    running_.reset();
    if (!name_.isEmpty()) QSqlDatabase::removeDatabase(name_);
    name_.clear();
}

const SnapshotRows::Page& SnapshotRows::page(int number) const {
    if (last_ && number == lastNumber_) return *last_;
    lastNumber_ = number;
    if (const auto known = pages_.find(number); known != pages_.end()) return *(last_ = &known->second);
    if (pages_.size() >= kPagesKept) {  // a grid scrolls on: what is farthest away goes
        const bool first = number - pages_.begin()->first > pages_.rbegin()->first - number;
        pages_.erase(first ? pages_.begin() : std::prev(pages_.end()));
    }
    return *(last_ = &(pages_[number] = read(number)));
}

SnapshotRows::Page SnapshotRows::read(int number) const {
    // A page out of turn is cheapest with a limit, which spares sorting what is not shown. A page that follows the
    // last one announces many more, as when a grid is copied: one query then runs through all of them.
    const bool inTurn = number == nextPage_;
    if (!inTurn || !runs_) {
        running_ = std::make_unique<SqliteReader>(QSqlDatabase::database(name_, false),
                                                  sql_ + QStringLiteral(" limit %1 offset %2")
                                                             .arg(inTurn ? -1 : static_cast<int>(kPageRows))
                                                             .arg(static_cast<size_t>(number) * kPageRows),
                                                  values_);
        runs_ = inTurn;
    }
    Page page;
    while (page.size() < kPageRows && running_->next()) page.push_back(running_->row());
    nextPage_ = number + 1;
    return page;
}

QStringList SnapshotRows::cells(int row, int) const {
    if (name_.isEmpty() || row < 0 || row >= rowCount_) return {};
    const Page& rows = page(row / static_cast<int>(kPageRows));
    const auto at = static_cast<size_t>(row) % kPageRows;
    return at < rows.size() ? rows[at] : QStringList();
}

}  // namespace kibo
