#include "store/old_rows.h"

namespace kibo {
namespace {

constexpr qint64 kRemoveEveryMs = 1'000, kLookForOldEveryMs = 3'600'000;
constexpr qint64 kRemovedAtOnce = 500;
constexpr int kDays = 90;

}  // namespace

OldRows::OldRows(const Settings& settings, Database& database, const Clock& clock, const QString& table,
                 const QString& time)
    : settings_(settings),
      database_(database),
      clock_(clock),
      oldest_(QStringLiteral("select min(id) as oldest from ") + table),
      remove_(QStringLiteral("delete from %1 where id < ? and %2 < ?").arg(table, time)) {}

void OldRows::remove() {
    const qint64 now = clock_.monotonicMs();
    if (now < againMs_ || !database_.isOpen()) return;
    againMs_ = now + kLookForOldEveryMs;
    const Recordset oldest = database_.OpenRecordset(oldest_);
    if (oldest.eof() || oldest.field(0).isEmpty()) return;
    bool isNumber = false;
    const int days = settings_.MessageDays.toInt(&isNumber);
    const QDateTime end = clock_.now().addDays(-(isNumber && days > 0 ? days : kDays));
    const auto removed = database_.execute(remove_, {oldest.field(0).toLongLong() + kRemovedAtOnce, storedTime(end)});
    if (removed.value_or(0) > 0) againMs_ = now + kRemoveEveryMs;
}

}  // namespace kibo
