#include "session/profile_settings.h"

#include "base/log.h"

namespace kibo {
namespace {

const QString kProfile = QStringLiteral("SELECT * FROM web_user WHERE id = ?");

}  // namespace

void ProfileSettings::BACA_PROFIL() {
    if (!isYes(settings_.Multi) || isYes(settings_.UseMDB) || state_.dboff.visible) return;
    const Recordset row = database_.OpenRecordset(kProfile, {state_.cb_Profil.text});
    if (row.state() == Recordset::State::Closed) return;
    QString number;
    if (!row.eof()) {
        settings_.DisableRead = row.field(QStringLiteral("disable_read"));
        const QString read = row.field(QStringLiteral("inbox_read"));
        if (!read.isEmpty()) settings_.InboxRead = read;
        number = row.field(QStringLiteral("wa_no")).trimmed();
    }
    if (number.isEmpty()) number = settings_.DummyContact;
    if (number == number_.value_or(settings_.DummyContact)) return;
    number_ = number;
    state_.txt_DUMMY.text = number;
    state_.cb_DummyContact.text = number;
    log::info("window", QStringLiteral("dummy contact of this profile: %1").arg(log::maskedNumber(number)));
}

}  // namespace kibo
