#include "screens/setting_check.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

#include "base/clock.h"
#include "base/error_policy.h"
#include "base/http_get.h"
#include "browser/launch.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "store/database.h"

namespace kibo {
namespace {

constexpr int kShortBytes = 49, kLongBytes = 1023;
constexpr int kVersionMs = 5'000;
constexpr int kMostPort = 65'535;

bool isLong(const SettingEntry& entry) {
    static const QStringList kLong{QStringLiteral("StartAddress"), QStringLiteral("ChatAddress"),
                                   QStringLiteral("ChromeDriver"), QStringLiteral("ElementServer")};
    return kLong.contains(QLatin1String(entry.key));
}

/// The answering program is found however long its path is.
bool isResponder(const SettingEntry& entry, const QString& value) {
    return QLatin1String(entry.key) == QLatin1String("EXE") &&
           QDir::fromNativeSeparators(value).section(u'/', -1) == responderFileName();
}

QString folderTrouble(const QString& folder) {
    const QFileInfo info(folder);
    if (info.exists() && !info.isDir()) return QStringLiteral("This is a file, no folder.");
    if (info.exists() && !info.isWritable()) return QStringLiteral("Kibo may not write into this folder.");
    if (!info.isAbsolute()) return QStringLiteral("Write the whole path.");
    return info.exists() ? QString() : QStringLiteral("There is no such folder yet; it is made when it is needed.");
}

QString addressTrouble(const QString& address) {
    const QUrl url(address, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() && url.scheme().startsWith(QStringLiteral("http"))
               ? QString()
               : QStringLiteral("Write a whole address, beginning with http:// or https://.");
}

QString numberTrouble(const QString& value, double most) {
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber) return QStringLiteral("Write a number.");
    return number < 0 || number > most ? QStringLiteral("Write a number from 0 to %1.").arg(most, 0, 'f', 0)
                                       : QString();
}

}  // namespace

QString settingTrouble(const SettingEntry& entry, const QString& value) {
    if (value.isEmpty()) return {};
    const int most = isLong(entry) || isResponder(entry, value) ? kLongBytes : kShortBytes;
    if (value.toUtf8().size() > most) return QStringLiteral("Too long: only the first %1 bytes are read.").arg(most);
    switch (entry.kind) {
        case SettingKind::Number:
            return numberTrouble(value, 1e9);
        case SettingKind::Port:
            return numberTrouble(value, kMostPort);
        case SettingKind::Folder:
            return folderTrouble(value);
        case SettingKind::File:
            return QFileInfo(value).isFile() ? QString() : QStringLiteral("There is no such file.");
        case SettingKind::Address:
            // A bare host names the element service too.
            return QLatin1String(entry.key) == QLatin1String("ElementServer") ? QString() : addressTrouble(value);
        default:
            return {};
    }
}

QString tryDatabase(const Settings& settings, const QString& programFolder) {
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    const Result<void> opened = database.OpenDatabase(settings, programFolder);
    if (!opened)
        return QStringLiteral("The database can't be opened: ") + QString::fromStdString(opened.failure().text);
    const QString table = isYes(settings.Multi) ? QStringLiteral("multi") : QStringLiteral("outbox");
    const Recordset rows = database.OpenRecordset(QStringLiteral("select count(1) as cnt from ") + table);
    if (rows.eof())
        return QStringLiteral("The database answers, but the table %1 can't be read: %2")
            .arg(table, database.problem());
    return QStringLiteral("The database answers: %1 rows in the table %2.").arg(rows.field(0), table);
}

QString installedBrowser(const Settings& settings) {
    const QString program = isYes(settings.ChromePortable) ? settings.ChromeBinary : QString();
    return QString::fromStdString(platform::installedBrowserVersion(program.toStdString()));
}

QString installedDriver(const QString& setting) {
    if (isDriverAddress(setting)) return {};
    const QString driver = setting.isEmpty() ? QStringLiteral("chromedriver") : setting;
    const QString found = QString::fromStdString(platform::findProgram(driver.toStdString()));
    QProcess process;
    process.start(found.isEmpty() ? driver : found, {QStringLiteral("--version")});
    if (!process.waitForFinished(kVersionMs)) return {};
    return QString::fromLocal8Bit(process.readAllStandardOutput()).section(u' ', 0, 1).simplified();
}

QString tryBrowser(const Settings& settings) {
    QStringList seen;
    const QString browser = installedBrowser(settings);
    seen.append(browser.isEmpty() ? QStringLiteral("No browser was found.")
                                  : QStringLiteral("Browser: %1.").arg(browser));
    if (isDriverAddress(settings.ChromeDriver)) {
        QString address = settings.ChromeDriver;
        while (address.endsWith(u'/')) address.chop(1);
        const auto answer = httpGet(address + QStringLiteral("/status"));
        seen.append(answer ? QStringLiteral("The driver answers.")
                           : QStringLiteral("The driver doesn't answer: ") +
                                 QString::fromStdString(answer.failure().text));
        return seen.join(u' ');
    }
    const QString driver = installedDriver(settings.ChromeDriver);
    seen.append(driver.isEmpty() ? QStringLiteral("No ChromeDriver was found.")
                                 : QStringLiteral("Driver: %1.").arg(driver));
    return seen.join(u' ');
}

QString tryBot(const Settings& settings) {
    QStringList seen;
    if (isYes(settings.UseBotPHP)) {
        const auto answer = httpGet(settings.PHP);
        seen.append(answer ? QStringLiteral("The web bot answers with %1 bytes.").arg(answer.value().size())
                           : QStringLiteral("The web bot doesn't answer: ") +
                                 QString::fromStdString(answer.failure().text));
    }
    if (isYes(settings.UseBotEXE)) {
        const QFileInfo program(settings.EXE);
        seen.append(program.isFile() && program.isExecutable()
                        ? QStringLiteral("The bot's program is there.")
                        : QStringLiteral("The bot's program is missing, or can't be started."));
    }
    return seen.isEmpty() ? QStringLiteral("No bot is switched on.") : seen.join(u' ');
}

}  // namespace kibo
