#pragma once

#include <QProcess>
#include <QStringList>
#include <stdexcept>

#include "base/settings.h"
#include "base/settings_file.h"

namespace kibo::test {

/// Runs a program to its end with `input` and gives its output; throws std::runtime_error when it fails.
inline QString outputOf(const QString& program, const QStringList& arguments, const QString& input = {}) {
    QProcess process;
    process.start(program, arguments);
    process.write(input.toUtf8());
    process.closeWriteChannel();
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        throw std::runtime_error((program + u' ' + QString::fromUtf8(process.readAllStandardError())).toStdString());
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// Puts the shipped stores, without rows in the queue, into a program folder.
inline void createStores(const QString& folder) {
    outputOf(QStringLiteral(KIBO_SOURCE_DIR "/scripts/create-stores"), {folder});
}

/// Runs statements in the sqlite3 program, as outside programs do; gives its output (tab-separated).
inline QString sqlite(const QString& file, const QString& sql) {
    return outputOf(QStringLiteral("sqlite3"),
                    {QStringLiteral("-bail"), QStringLiteral("-tabs"), QStringLiteral("-cmd"),
                     QStringLiteral(".timeout 5000"), file},
                    sql);
}

/// Makes `store` the main store of the program folder with this settings file.
inline void useStore(const QString& settingsFile, const Settings& store) {
    for (const auto& [key, value] : {std::pair{"UseMDB", store.UseMDB},
                                     {"user", store.user},
                                     {"password", store.password},
                                     {"MySQL_WithoutDSN", store.MySQL_WithoutDSN},
                                     {"MySQL_Server", store.MySQL_Server},
                                     {"MySQL_DB", store.MySQL_DB},
                                     {"Port", store.Port}})
        WriteIni(QStringLiteral("DB"), QLatin1String(key), value, settingsFile);
}

}  // namespace kibo::test
