#include "session/instance_rows.h"

#include "base/profile_number.h"

namespace kibo {
namespace {

const QString kInsert = QStringLiteral("insert into tmp (tmp_cd, tmp_val ) VALUES (?, ? ) ");
const QString kDelete = QStringLiteral("delete from tmp where tmp_cd = ? ");

QString key(const char* name, const QString& profile) {
    return QLatin1String(name) + profile6(profile);
}

QString restartKey(const QString& profile, bool multi) {
    return multi ? key("restart", profile) : QStringLiteral("restart");
}

}  // namespace

void InstanceRows::announce(const QString& applicationName) {
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'appname' "));
    database_.execute(kInsert, {QStringLiteral("appname"), applicationName});
}

int InstanceRows::statusRows(const QString& profile) {
    return database_
        .OpenRecordset(QStringLiteral("select count(1) from tmp where tmp_cd = ?"), {key("status", profile)})
        .field(0)
        .toInt();
}

std::optional<InstanceRows::Commands> InstanceRows::commands(const QString& profile, bool multi) {
    const QString restart = restartKey(profile, multi), off = key("off", profile), status = key("status", profile);
    Recordset rows = database_.OpenRecordset(
        QStringLiteral("select tmp_cd, tmp_val from tmp where tmp_cd = ? or tmp_cd = ? or tmp_cd = ?"),
        {restart, off, status});
    if (rows.state() == Recordset::State::Closed) return std::nullopt;
    Commands commands;
    for (; !rows.eof(); rows.moveNext()) {
        // A server compares without regard to case and to blanks behind.
        const QString name = rows.field(0).trimmed();
        const auto is = [&](const QString& other) { return name.compare(other, Qt::CaseInsensitive) == 0; };
        if (is(restart)) commands.restart = rows.field(1) == QStringLiteral("yes");
        if (is(off)) commands.off = multi;
        if (is(status)) commands.status = rows.field(1);
    }
    return commands;
}

bool InstanceRows::restartObeyed(const QString& profile, bool multi) {
    const bool deleted = database_.execute(kDelete, {restartKey(profile, multi)}).has_value();
    if (multi || !deleted) return deleted;
    return database_.execute(kInsert, {restartKey(profile, multi), QStringLiteral("no")}).has_value();
}

void InstanceRows::report(const QString& profile, const QString& status, const std::optional<QString>& written) {
    if (!written) {
        database_.execute(kInsert, {key("status", profile), status});
    } else if (*written != status) {
        database_.execute(QStringLiteral("update tmp set tmp_val = ? where tmp_cd = ?"),
                          {status, key("status", profile)});
    }
}

void InstanceRows::withdraw(const QString& profile) {
    database_.execute(kDelete, {key("off", profile)});
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd = 'status'"));
    database_.execute(kDelete, {key("status", profile)});
    database_.execute(QStringLiteral("update web_user set qr = '' where id = ?"), {profile});
}

void InstanceRows::withdrawAll() {
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd like 'off%' "));
    database_.Execute(QStringLiteral("delete from tmp where tmp_cd like 'status%' "));
}

}  // namespace kibo
