#include "inbox/inbox_table.h"

#include <QDateTime>

#include "store/transaction.h"

namespace kibo {
namespace {

// They match no row and open an empty set to add to. (Plain ??' would be a trigraph.)
const QString kEmptyInbox = QStringLiteral("select * from inbox where wa_no='?\?\?' ");
const QString kEmptyMulti = QStringLiteral("select * from multi where wa_no='?\?\?' ");
const QString kLineOfInbox = QStringLiteral("select wa_no, wa_text, wa_time, status from inbox where id = ?");
const QString kLineOfMulti = QStringLiteral("select wa_no, wa_text, wa_time, status from multi where id = ?");
const QString kSame = QStringLiteral(" wa_time = ? and wa_text = ? and SUB_NO = ? and wa_no in (?, ?)");
const QString kCountInbox = QStringLiteral("select count(1) as cnt from inbox where") + kSame;
const QString kCountMulti =
    QStringLiteral("select count(1) as cnt from multi where tipe = 'I' and profil = ? and") + kSame;

}  // namespace

Result<InboxTable::Stored> InboxTable::insert(const IncomingRow& row) {
    qint64 id = 0;
    if (records_.areKept()) {
        const Result<qint64> record = addWithRecord(row, id);
        if (record) return Stored{id, record.value(), shownLine(row, id)};
        if (records_.areKept()) return record.failure();  // else it is the record that was refused
        // A table that knows no transactions has kept the row.
        const Recordset left = lineOf(row, id);
        if (left.state() == Recordset::State::Closed) return record.failure();
        if (!left.eof()) return Stored{id, 0, shownLine(row, id)};
    }
    const Result<qint64> added = add(row);
    if (!added) return added.failure();
    return Stored{added.value(), 0, shownLine(row, added.value())};
}

/// The record's id; `id` becomes that of the row.
Result<qint64> InboxTable::addWithRecord(const IncomingRow& row, qint64& id) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    const Result<qint64> added = add(row);
    if (!added) return added;
    id = added.value();
    Result<qint64> record = records_.add(row, id);
    if (!record) return record;
    if (const Result<void> done = transaction.value().commit(); !done) return done.failure();
    return record;
}

Result<qint64> InboxTable::add(const IncomingRow& row) {
    Recordset set = database_.OpenRecordset(row.multi ? kEmptyMulti : kEmptyInbox);
    set.addNew();
    if (row.multi) {
        set.set(QStringLiteral("tipe"), QStringLiteral("I"));
        set.set(QStringLiteral("PROFIL"), row.PROFIL);
    }
    set.set(QStringLiteral("wa_no"), row.wa_no);
    set.set(QStringLiteral("SUB_NO"), row.SUB_NO);
    set.set(QStringLiteral("wa_text"), row.wa_text);
    set.set(QStringLiteral("wa_time"), QVariant::fromValue(StoredTime{row.wa_time}));
    if (const Result<void> added = set.update(); !added) return added.failure();
    return set.lastInsertId();
}

Recordset InboxTable::lineOf(const IncomingRow& row, qint64 id) {
    return database_.OpenRecordset(row.multi ? kLineOfMulti : kLineOfInbox, {id});
}

/// As it stands in the table, since a database may complete a row by itself.
QStringList InboxTable::shownLine(const IncomingRow& row, qint64 id) {
    const Recordset stored = lineOf(row, id);
    if (stored.eof()) return {row.wa_no, row.wa_text, gridTime(row.wa_time), QString()};
    return {stored.field(0), stored.field(1), gridTime(stored.field(2)), stored.field(3)};
}

void InboxTable::report(const IncomingRow& row, const Failure& failure) const {
    database_.report(row.multi ? QStringLiteral("insert into multi") : QStringLiteral("insert into inbox"), failure);
}

std::optional<int> InboxTable::countLike(const IncomingRow& row) {
    Database::Values values{QVariant::fromValue(StoredTime{row.wa_time}), row.wa_text, row.SUB_NO, row.wa_no,
                            row.title};
    if (row.multi) values.prepend(row.PROFIL);
    const Recordset count = database_.OpenRecordset(row.multi ? kCountMulti : kCountInbox, values);
    if (count.eof()) return std::nullopt;
    return count.field(0).toInt();
}

QString InboxTable::gridTime(const QString& storedTime) {
    const QDateTime time = QDateTime::fromString(storedTime, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return time.isValid() ? time.toString(QStringLiteral("d/M/yy HH:mm")) : storedTime;
}

}  // namespace kibo
