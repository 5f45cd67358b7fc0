#include "engine/waiting_reason.h"

#include <cmath>

#include "engine/hindrances.h"

namespace kibo {
namespace {

const QString kRowOfOutbox = QStringLiteral("select wa_mode, wa_time, '' as profil from outbox where id = ?");
const QString kRowOfMulti = QStringLiteral("select wa_mode, wa_time, profil from multi where tipe = 'O' and id = ?");
const QString kBeforeInOutbox = QStringLiteral("select count(1) as cnt from outbox where wa_mode <> '3' and id < ?");
const QString kBeforeInMulti =
    QStringLiteral("select count(1) as cnt from multi where wa_mode <> '3' and tipe = 'O' and profil = ? and id < ?");
const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

}  // namespace

QStringList WaitingReason::of(qint64 id) const {
    QStringList reasons{ofRow(id), queue_.whyRefused(id), ofPlace(id)};
    if (state_.BreakTime.enabled()) {
        const double left = settings_.Break.toDouble() - state_.DetikBreak.text.toDouble();
        reasons.append(QStringLiteral("There is a break for %1 s more.").arg(std::ceil(qMax(0.0, left))));
    }
    for (const Hindrance& hindrance : hindrances(state_, settings_)) reasons.append(hindrance.text);
    reasons.removeAll(QString());
    if (reasons.isEmpty()) reasons.append(QStringLiteral("It is the next one."));
    return reasons;
}

QString WaitingReason::ofRow(qint64 id) const {
    const Recordset row = database_.OpenRecordset(multi() ? kRowOfMulti : kRowOfOutbox, {id});
    if (row.state() == Recordset::State::Closed) return {};
    if (row.eof()) return QStringLiteral("It does not wait any more: it was taken or withdrawn.");
    if (multi() && row.field(2) != state_.cb_Profil.text)
        return QStringLiteral("It belongs to the profile %1 now.").arg(row.field(2));
    if (row.field(0) == QStringLiteral("3"))
        return QStringLiteral("It is held (wa_mode 3) until its wa_mode is set back to 0.");
    const QString due = row.field(1).left(kTimeFormat.size()).replace(u'T', u' ');
    if (isYes(settings_.Scheduled) && due > clock_.now().toString(kTimeFormat))
        return QStringLiteral("It is not due before %1.").arg(due);
    return {};
}

QString WaitingReason::ofPlace(qint64 id) const {
    const Recordset before = multi() ? database_.OpenRecordset(kBeforeInMulti, {state_.cb_Profil.text, id})
                                     : database_.OpenRecordset(kBeforeInOutbox, {id});
    const qint64 count = before.field(0).toLongLong();
    if (count == 0) return {};
    return count == 1 ? QStringLiteral("1 message stands before it.")
                      : QStringLiteral("%L1 messages stand before it.").arg(count);
}

}  // namespace kibo
