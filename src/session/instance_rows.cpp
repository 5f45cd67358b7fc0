#include "session/instance_rows.h"

#include "base/profile_number.h"

namespace kibo {

void InstanceRows::announce(const QString& applicationName) {
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'appname' "));
    database_.execute(QStringLiteral("insert into tmp (tmp_cd, tmp_val ) VALUES ('appname', ? ) "), {applicationName});
}

int InstanceRows::statusRows(const QString& profile) {
    const QString key = QStringLiteral("status") + profile6(profile);
    return database_.OpenRecordset(QStringLiteral("select count(1) from tmp where tmp_cd = ?"), {key}).field(0).toInt();
}

void InstanceRows::withdraw(const QString& profile) {
    const QString deleteRow = QStringLiteral("delete from tmp where tmp_cd = ? ");
    const QString number = profile6(profile);
    database_.execute(deleteRow, {QString(QStringLiteral("off") + number)});
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'status'"));
    database_.execute(deleteRow, {QString(QStringLiteral("status") + number)});
    database_.execute(QStringLiteral("update web_user set qr = '' where id = ?"), {profile});
}

void InstanceRows::withdrawAll() {
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd like 'off%' "));
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd like 'status%' "));
}

}  // namespace kibo
