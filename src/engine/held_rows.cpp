#include "engine/held_rows.h"

#include <algorithm>

namespace kibo {
namespace {

// In the columns of the queue's grid.
const QString kInOutbox = QStringLiteral(
    "select wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, id from outbox where wa_mode = '3' order by id");
const QString kInMulti = QStringLiteral(
    "select wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, id from multi "
    "where wa_mode = '3' and tipe = 'O' and profil = ? order by id");

constexpr qint64 kLookEveryMs = 1'000, kLookPause = 200, kLongestPauseMs = 60'000;

}  // namespace

void HeldRows::look() {
    const qint64 begin = clock_.monotonicMs();
    if (!database_.isOpen() || begin < lookAgainMs_) return;
    const bool multi = isYes(settings_.Multi);
    const QString profile = multi ? state_.cb_Profil.text : QString();
    const QString store = isYes(settings_.UseMDB) ? database_.changeMark() : QString();
    const QString mark = store.isEmpty() ? store : store + u' ' + profile;
    if (!mark.isEmpty() && mark == loadedMark_) return;
    auto rows =
        database_.openRows(multi ? kInMulti : kInOutbox, multi ? Database::Values{profile} : Database::Values{});
    loadedMark_ = rows ? mark : QString();
    if (!rows) rows = std::shared_ptr<const RowSource>(std::make_shared<ListRows>());
    if (rows.value()->rowCount() > 0 || state_.held.rowCount() > 1) state_.held.setRows(std::move(rows).value());
    const qint64 end = clock_.monotonicMs();
    lookAgainMs_ = end + std::clamp((end - begin) * kLookPause, kLookEveryMs, kLongestPauseMs);
}

}  // namespace kibo
