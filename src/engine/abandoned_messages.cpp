#include "engine/abandoned_messages.h"

#include "base/log.h"
#include "engine/message_records.h"

namespace kibo {
namespace {

// Whoever tells no name keeps no hold, so nobody may settle in his place.
const QString kOpen = QStringLiteral(
    "select k.id, k.outbox_id, k.typed, k.taken, "
    "(select count(1) from kibo_message n where n.outbox_id = k.outbox_id and n.source = k.source and "
    "n.profil = k.profil and n.id > k.id) as newer, "
    "(select count(1) from kibo_message b where b.outbox_id = k.outbox_id and b.source = k.source and "
    "b.profil = k.profil and b.id < k.id and b.result = 'put back') as back "
    "from kibo_message k where k.profil = ? and k.source = ? and k.ended is null and k.taken_by is not null and "
    "left(k.taken_by, ?) <> ? order by k.id");
// What the instance that works has taken is in its hands. The name is as ProfileHold makes it.
const QString kEnd = QStringLiteral(
    "update kibo_message set ended = ?, result = ?, reason_code = ?, reason = ? where id = ? and ended is null and "
    "not exists (select 1 from kibo_instance i where i.profil = kibo_message.profil and i.holds = 1 and "
    "left(kibo_message.taken_by, char_length(concat(left(i.host, 60), ' ', i.process, ' '))) = "
    "concat(left(i.host, 60), ' ', i.process, ' '))");
// A copy that is marked is of an earlier attempt.
const QString kCopyOfOutbox = QStringLiteral(" from sent where id = ? and coalesce(status, '') = ''");
const QString kCopyOfMulti =
    QStringLiteral(" from multi where tipe = 'S' and profil = ? and id_outbox = ? and coalesce(status, '') = ''");
const QString kBackToOutbox = QStringLiteral(
                                  "insert into outbox (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) "
                                  "select id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time") +
                              kCopyOfOutbox;
const QString kBackToMulti =
    QStringLiteral(
        "insert into multi (tipe, profil, id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) "
        "select 'O', profil, id_outbox, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time") +
    kCopyOfMulti;
const QString kFailInSent =
    QStringLiteral("update sent set status = 'fail' where id = ? and coalesce(status, '') = ''");
const QString kFailInMulti = QStringLiteral(
    "update multi set status = 'fail' where tipe = 'S' and profil = ? and id_outbox = ? and coalesce(status, '') = ''");

const QString kInDoubt =
    QStringLiteral("in doubt: the instance that had begun to send it was lost, and nothing tells whether it was sent");
const QString kNotTypedAgain = QStringLiteral(
    "the browser was lost or the gateway ended before the message was typed, for the second time; it can be queued "
    "again");

}  // namespace

void AbandonedMessages::settle() {
    if (state_.standby.visible || state_.instance.isEmpty() || !database_.isOpen()) return;
    const bool tookOver = lookedAs_ != state_.instance;
    if (!tookOver && clock_.monotonicMs() < lookAgainAtMs_) return;
    lookAgainAtMs_ = clock_.monotonicMs() + kEveryMs;
    const QString source = multi() ? QStringLiteral("multi") : QStringLiteral("outbox");
    Recordset open =
        database_.OpenRecordset(kOpen, {state_.cb_Profil.text, source, state_.instance.size(), state_.instance});
    if (open.state() == Recordset::State::Closed) return;
    bool done = true;
    for (; !open.eof(); open.moveNext()) {
        if (journal_.entry(open.field(1))) continue;
        done = settle({open.field(0).toLongLong(), open.field(1).toLongLong(), !open.field(2).isEmpty(),
                       open.field(4).toInt() == 0, open.field(5).toInt() > 0,
                       QDateTime::fromString(open.field(3).left(19).replace(u'T', u' '),
                                             QStringLiteral("yyyy-MM-dd HH:mm:ss"))}) &&
               done;
    }
    if (done) lookedAs_ = state_.instance;
}

/// The hold is confirmed for each, since this process may have been stopped since the last one: what another instance
/// has in hand by now is not abandoned.
bool AbandonedMessages::settle(const Record& record) {
    if (confirmHold_ && confirmHold_({}, {}) != Hold::Ours) return false;
    const auto note = [&](const char* what) {
        log::warning("engine", QStringLiteral("message %1 of an instance that was lost: %2")
                                   .arg(record.outboxId.toLongLong())
                                   .arg(QLatin1String(what)));
        return true;
    };
    // Later attempts have their own records, and this one only lacks its end.
    if (!record.isNewest) return end(record, MessageRecords::kPutBack, {}).has_value();
    const bool recent = record.taken.isValid() && record.taken.secsTo(clock_.now()) < kPutBackWithinS;
    if (!record.typed && !record.wentBack && recent) {
        const auto moved = moveBack(record);
        if (!moved) return false;
        if (*moved) return note("in the queue again");
    }
    auto transaction = Transaction::begin(database_);
    if (!transaction) return false;
    const bool doubt = record.typed || !record.wentBack;
    const auto ended =
        end(record, doubt ? MessageRecords::kInDoubt : MessageRecords::kFail, doubt ? kInDoubt : kNotTypedAgain);
    if (ended != true) return ended.has_value();
    const Database::Values whose =
        multi() ? Database::Values{state_.cb_Profil.text, record.outboxId} : Database::Values{record.outboxId};
    if (!database_.attempt(multi() ? kFailInMulti : kFailInSent, whose) || !transaction.value().commit()) return false;
    return note(doubt ? "in doubt" : "failed");
}

/// False: somebody else has ended it.
std::optional<bool> AbandonedMessages::end(const Record& record, const char* result, const QString& reason) {
    const auto text = [](const QString& value) { return value.isEmpty() ? QVariant() : QVariant(value); };
    return changesOne(kEnd, {storedTime(clock_.now()), QString::fromLatin1(result),
                             text(reason.isEmpty() ? QString() : reasonCode(reason)), text(reason), record.key});
}

/// False, and nothing done, unless exactly one copy can be what was taken.
std::optional<bool> AbandonedMessages::moveBack(const Record& record) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return std::nullopt;
    const Database::Values whose =
        multi() ? Database::Values{state_.cb_Profil.text, record.outboxId} : Database::Values{record.outboxId};
    auto done = end(record, MessageRecords::kPutBack, {});
    if (done == true) done = changesOne(multi() ? kBackToMulti : kBackToOutbox, whose);
    if (done == true) done = changesOne(QStringLiteral("delete") + (multi() ? kCopyOfMulti : kCopyOfOutbox), whose);
    if (done == true && !transaction.value().commit()) return std::nullopt;
    return done;
}

/// Nothing when the store refuses at the moment.
std::optional<bool> AbandonedMessages::changesOne(const QString& sql, const Database::Values& values) {
    const Result<qint64> done = database_.attempt(sql, values);
    if (done) return done.value() == 1;
    if (done.failure().kind == FailureKind::RowRefused) return false;
    return std::nullopt;
}

}  // namespace kibo
