#include "inbox/inbox_table.h"

#include <QDateTime>

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

Result<QStringList> InboxTable::insert(const IncomingRow& row) {
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
    // Read back, since a database may complete a row by itself.
    const Recordset stored = database_.OpenRecordset(row.multi ? kLineOfMulti : kLineOfInbox, {set.lastInsertId()});
    if (stored.eof()) return QStringList{row.wa_no, row.wa_text, gridTime(row.wa_time), QString()};
    return QStringList{stored.field(0), stored.field(1), gridTime(stored.field(2)), stored.field(3)};
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
