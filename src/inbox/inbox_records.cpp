#include "inbox/inbox_records.h"

#include <QDateTime>

#include "base/log.h"

namespace kibo {
namespace {

const QString kAdd = QStringLiteral(
    "insert into kibo_inbox (source, profil, inbox_id, message_id, chat_id, in_group, message_time, kind, stored) "
    "values (?, ?, ?, ?, ?, ?, ?, ?, ?)");
const QString kSetFile = QStringLiteral("update kibo_inbox set file = ? where id = ?");

constexpr qint64 kLeftOffMs = 60'000;
constexpr int kIdCharacters = 255;

}  // namespace

Result<qint64> InboxRecords::add(const IncomingRow& row, qint64 rowId) {
    const QDateTime own = QDateTime::fromString(row.messageTime, QStringLiteral("yyyy-MM-dd HH:mm"));
    const auto added = database_.attempt(
        kAdd, {row.multi ? QStringLiteral("multi") : QStringLiteral("inbox"), row.PROFIL, rowId,
               row.messageId.left(kIdCharacters), row.chatId.left(kIdCharacters), row.inGroup ? 1 : 0, storedTime(own),
               row.kind.isEmpty() ? QVariant() : QVariant(row.kind), storedTime(clock_.now())});
    tableIsThere_ = added.ok();
    if (added) {
        told_ = false;
        return database_.lastInsertId();
    }
    if (added.failure().kind == FailureKind::ConnectionLost) return added.failure();
    if (!told_)
        log::warning("inbox", QStringLiteral("what received messages are is not noted in kibo_inbox: %1")
                                  .arg(QString::fromStdString(added.failure().text)));
    told_ = true;
    keptAgainMs_ = clock_.monotonicMs() + kLeftOffMs;
    return added.failure();
}

void InboxRecords::setFile(qint64 record, const QString& file) {
    if (const auto noted = database_.attempt(kSetFile, {file, record}); !noted)
        log::warning("inbox", QStringLiteral("the file of message record %1 is not noted in kibo_inbox: %2")
                                  .arg(record)
                                  .arg(QString::fromStdString(noted.failure().text)));
}

void InboxRecords::removeOld() {
    if (tableIsThere_) oldRows_.remove();
}

}  // namespace kibo
