#include "main_window/instance_rows.h"

#include "app/profile_number.h"

namespace kibo {

void InstanceRows::announce(const QString& applicationName) {
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'appname' "));
    database_.Execute(QStringLiteral("insert into tmp (tmp_cd, tmp_val ) VALUES ('appname', '") + applicationName +
                      QStringLiteral("' ) "));
}

int InstanceRows::statusRows(const QString& profile) {
    return database_
        .OpenRecordset(QStringLiteral("select count(1) from tmp where tmp_cd = 'status") + profile6(profile) +
                       QStringLiteral("'"))
        .field(0)
        .toInt();
}

void InstanceRows::withdraw(const QString& profile) {
    const QString key = profile6(profile);
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'off") + key + QStringLiteral("' "));
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'status'"));
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'status") + key + QStringLiteral("' "));
    database_.Execute(QStringLiteral("update web_user set qr = '' where id = '") + profile + QStringLiteral("'"));
}

void InstanceRows::withdrawAll() {
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd like 'off%' "));
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd like 'status%' "));
}

}  // namespace kibo
