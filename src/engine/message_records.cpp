#include "engine/message_records.h"

#include <algorithm>
#include <utility>

#include "base/log.h"

namespace kibo {
namespace {

const QString kBegin =
    QStringLiteral("insert into kibo_message (source, profil, outbox_id, taken, taken_by) values (?, ?, ?, ?, ?)");
// Changes nothing, but is refused where a row could not be completed later.
const QString kProve = QStringLiteral(
    "update kibo_message set ended = null where outbox_id = ? and source = ? and profil = ? and ended is null");
// The columns in the same order, so that the values are the same. An attempt of another instance is its own.
const QString kComplete = QStringLiteral(
    "update kibo_message set typed = ?, sent = ?, ended = ?, result = ?, reason_code = ?, reason = ?, ms = ?, "
    "page_id = ? where outbox_id = ? and source = ? and profil = ? and ended is null and (taken_by is null or "
    "taken_by = ?)");
const QString kWhole = QStringLiteral(
    "insert into kibo_message (typed, sent, ended, result, reason_code, reason, ms, page_id, outbox_id, source, "
    "profil, taken) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
const QString kEndedElsewhere = QStringLiteral(
    "select count(1) as cnt from kibo_message where outbox_id = ? and source = ? and profil = ? and taken_by = ? and "
    "ended is not null");
const QString kClaimBack = QStringLiteral(
    "update kibo_message set ended = ?, result = ? where outbox_id = ? and source = ? and profil = ? and taken_by = ? "
    "and ended is null");

constexpr qint64 kLeftOffMs = 60'000;
constexpr int kMostTries = 60;
constexpr int kReasonCharacters = 255;

struct Code {
    const char* words;
    const char* code;
};
/// The first one whose words occur counts.
constexpr Code kCodes[] = {
    {"in doubt", "in_doubt"},
    {"not on WhatsApp", "not_on_whatsapp"},
    {"the number is too short", "bad_number"},
    {"the number holds more than digits", "bad_number"},
    {"names neither a number nor a name", "no_number"},
    {"no chat has this name", "no_such_name"},
    {"ambiguous", "ambiguous_name"},
    {"unknown wa_mode", "bad_mode"},
    {"the message is empty", "empty"},
    {"Page changed", "page_changed"},
    {"did not open in time", "chat_not_opened"},
    {"the page holds another chat's link", "disturbed"},
    {"another chat came up", "disturbed"},
    {"changed before Enter", "disturbed"},
    {"did not take the text", "disturbed"},
    {"closed before it was sent", "disturbed"},
    {"not in the list any more", "disturbed"},
    {"search", "disturbed"},
    {"preview of the file", "file_not_taken"},
    {"did not take the file", "file_not_taken"},
    {"stopped by the operator", "stopped"},
    {"before the message was typed", "interrupted"},
    {"broken off by an error", "interrupted"},
    {"the message was not sent", "not_sent"},
    {"the journal can't be written", "journal"},
    {"the media file", "file"},
    {"the document", "file"},
    {"http", "file"},
    {"the server", "file"},
};

}  // namespace

QString reasonCode(const QString& words) {
    const auto* found = std::find_if(std::begin(kCodes), std::end(kCodes),
                                     [&](const Code& one) { return words.contains(QLatin1String(one.words)); });
    return found == std::end(kCodes) ? QStringLiteral("other") : QLatin1String(found->code);
}

Result<void> MessageRecords::taken(const QString& id) {
    current_ = {id, clock_.monotonicMs(), {}, {}, {}};
    const QString attempt = attemptAt(id);
    const bool proven = std::exchange(tableIsThere_, false);
    auto begun = database_.attempt(kBegin, {source(), state_.cb_Profil.text, id.toLongLong(), storedTime(clock_.now()),
                                            attempt.isEmpty() ? QVariant() : QVariant(attempt)});
    if (begun && !proven) begun = database_.attempt(kProve, {id.toLongLong(), source(), state_.cb_Profil.text});
    tableIsThere_ = current_.begun = begun.ok();
    if (begun) return {};
    leaveOff(begun.failure());
    return begun.failure();
}

void MessageRecords::typed(const QString& id) {
    if (current_.id == id) current_.typed = clock_.now();
}

void MessageRecords::sent(const QString& id, const QString& pageId) {
    if (current_.id != id) return;
    current_.sent = clock_.now();
    current_.pageId = pageId;
}

bool MessageRecords::ended(const QString& id, const End& end) {
    // No row is owed to a message that was taken while none were kept.
    if (!areKept() && current_.id == id && current_.begun) owed_.insert(id, owed_.value(id));
    if (!areKept()) return !owed_.contains(id);
    const Result<void> completed = complete(id, end);
    if (!completed && completed.failure().kind == FailureKind::ConnectionLost) return false;
    if (!completed) leaveOff(completed.failure());
    // Nothing is owed to what goes on: the next attempt has a row of its own.
    if (!completed && QLatin1String(end.result) == QLatin1String(kPutBack)) return true;
    const bool givenUp = !completed && ++owed_[id] >= kMostTries;
    if (givenUp)
        log::warning("engine", QStringLiteral("what became of message %1 stays unknown in kibo_message").arg(id));
    if (!completed && !givenUp) return false;
    owed_.remove(id);
    if (current_.id == id) current_.begun = false;
    return true;
}

Result<void> MessageRecords::complete(const QString& id, const End& end) {
    const Moments moments = current_.id == id ? current_ : Moments{};
    const QVariant tookMs = moments.id.isEmpty() ? QVariant() : QVariant(clock_.monotonicMs() - moments.takenMs);
    const QVariant now = storedTime(clock_.now());
    const auto text = [](const QString& value) { return value.isEmpty() ? QVariant() : QVariant(value); };
    const Database::Values values{storedTime(moments.typed),
                                  storedTime(moments.sent),
                                  now,
                                  QString::fromLatin1(end.result),
                                  text(end.reasonCode),
                                  text(end.reason.left(kReasonCharacters)),
                                  tookMs,
                                  text(moments.pageId),
                                  id.toLongLong(),
                                  source(),
                                  state_.cb_Profil.text};
    const auto completed = database_.attempt(kComplete, values + Database::Values{attemptAt(id)});
    if (!completed) return completed.failure();
    if (completed.value() > 0 || endedElsewhere(id).value_or(false)) return {};
    // Taken while the table was not kept, or lost with a store's last statements.
    const auto written = database_.attempt(kWhole, values + Database::Values{now});
    return written ? Result<void>() : Result<void>(written.failure());
}

QString MessageRecords::attemptAt(const QString& id) const {
    const SendJournal::Entry* entry = journal_.entry(id);
    return entry ? entry->by : QString();
}

QString MessageRecords::begunAttempt(const QString& id) const {
    return current_.id == id && current_.begun ? attemptAt(id) : QString();
}

Result<bool> MessageRecords::claimBack(const QString& id) {
    const QString attempt = attemptAt(id);
    if (attempt.isEmpty() || !areKept()) return true;
    const auto claimed = database_.attempt(kClaimBack, {storedTime(clock_.now()), QString::fromLatin1(kPutBack),
                                                        id.toLongLong(), source(), state_.cb_Profil.text, attempt});
    if (!claimed) return claimed.failure();
    if (claimed.value() > 0) return true;
    const auto elsewhere = endedElsewhere(id);
    if (!elsewhere) return Failure{FailureKind::Database, "the record can't be read"};
    return !*elsewhere;
}

std::optional<bool> MessageRecords::endedElsewhere(const QString& id) {
    const QString attempt = attemptAt(id);
    if (attempt.isEmpty() || !areKept()) return false;
    const Recordset ended =
        database_.OpenRecordset(kEndedElsewhere, {id.toLongLong(), source(), state_.cb_Profil.text, attempt});
    if (ended.eof()) return std::nullopt;
    return ended.field(0).toInt() > 0;
}

void MessageRecords::leaveOff(const Failure& failure) {
    if (failure.kind == FailureKind::ConnectionLost) return;
    if (areKept())
        log::warning("engine", QStringLiteral("what becomes of messages is not noted in kibo_message: %1")
                                   .arg(QString::fromStdString(failure.text)));
    keptAgainMs_ = clock_.monotonicMs() + kLeftOffMs;
    tableIsThere_ = false;
}

void MessageRecords::removeOld() {
    if (tableIsThere_) oldRows_.remove();
}

}  // namespace kibo
