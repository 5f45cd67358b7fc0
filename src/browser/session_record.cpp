#include "browser/session_record.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSysInfo>
#include <algorithm>
#include <vector>

#include "base/log.h"

namespace kibo {
namespace {

constexpr const char* kLog = "browser";
constexpr int kGraceMs = 5'000;
const QString kFilePrefix = QStringLiteral("kibo-session-");
const QString kFileSuffix = QStringLiteral(".json");

bool isRunning(const platform::Process& process) {
    return process.id > 0 && platform::isRunning(process.id, process.startTime);
}

QJsonObject toJson(const platform::Process& process) {
    // Start times need more bits than a JSON number keeps.
    return {{QStringLiteral("pid"), static_cast<qint64>(process.id)},
            {QStringLiteral("started"), QString::number(process.startTime)}};
}

platform::Process processFrom(const QJsonValue& value) {
    return {value[QLatin1String("pid")].toInteger(), value[QLatin1String("started")].toString().toULongLong()};
}

SessionRecord readRecord(const QString& file) {
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly)) return {};
    const QJsonDocument json = QJsonDocument::fromJson(in.readAll());
    return {processFrom(json[QLatin1String("owner")]), processFrom(json[QLatin1String("driver")]),
            processFrom(json[QLatin1String("browser")])};
}

void endTree(const platform::Process& root, int graceMs) {
    if (!isRunning(root)) return;
    // Listed before: once their parent has ended nobody knows whose they were.
    const std::vector<platform::Process> below = platform::descendants(root.id);
    if (const auto ended = platform::terminate(root.id, root.startTime, graceMs); !ended) {
        log::warning(kLog, QStringLiteral("process %1 can't be ended: %2")
                               .arg(root.id)
                               .arg(QString::fromStdString(ended.failure().text)));
    }
    for (const platform::Process& process : below) {
        (void)platform::terminate(process.id, process.startTime, 0);
    }
}

/// Ends the browsers that a driver started on this profile. One that a person started is left alone.
void endDrivenBrowsers(const QString& profileFolder) {
    for (const platform::Process& browser :
         platform::processesWithArgument("--user-data-dir=" + profileFolder.toStdString())) {
        const std::vector<std::string> arguments = platform::commandLine(browser.id);
        const auto any = [&arguments](const char* start) {
            return std::any_of(arguments.begin(), arguments.end(),
                               [start](const std::string& argument) { return argument.rfind(start, 0) == 0; });
        };
        // A browser's helpers have a type, and end with it.
        if (!any("--remote-debugging-") || any("--type=")) continue;
        log::info(kLog, QStringLiteral("ending browser %1, which was left on the profile").arg(browser.id));
        endTree(browser, kGraceMs);
    }
}

}  // namespace

void endProcesses(const SessionRecord& record, int graceMs) {
    endTree(record.browser, graceMs);
    // A driver that was just starting its browser when its gateway was killed.
    if (isRunning(record.driver)) {
        for (const platform::Process& child : platform::children(record.driver.id)) endTree(child, graceMs);
    }
    endTree(record.driver, 0);
}

platform::ProcessId SessionRecords::endLeftovers() const {
    platform::ProcessId otherOwner = 0;
    const QDir folder(folder_);
    for (const QString& name : folder.entryList({kFilePrefix + QLatin1Char('*') + kFileSuffix}, QDir::Files)) {
        const QString file = folder.filePath(name);
        const SessionRecord record = readRecord(file);
        if (record.owner.id != platform::ownProcessId() && isRunning(record.owner)) {
            otherOwner = record.owner.id;
            continue;
        }
        if (isRunning(record.browser) || isRunning(record.driver)) {
            log::info(kLog, QStringLiteral("ending what process %1 left: browser %2, driver %3")
                                .arg(record.owner.id)
                                .arg(record.browser.id)
                                .arg(record.driver.id));
        }
        endProcesses(record);
        QFile::remove(file);
    }
    return otherOwner;
}

Result<void> SessionRecords::write(const SessionRecord& record) const {
    const QJsonObject json{{QStringLiteral("owner"), toJson(record.owner)},
                           {QStringLiteral("driver"), toJson(record.driver)},
                           {QStringLiteral("browser"), toJson(record.browser)}};
    QSaveFile out(fileOf(record.owner.id));
    if (!out.open(QIODevice::WriteOnly) || out.write(QJsonDocument(json).toJson()) < 0 || !out.commit()) {
        return Failure{FailureKind::Io,
                       "can't write " + out.fileName().toStdString() + ": " + out.errorString().toStdString()};
    }
    return {};
}

void SessionRecords::remove(const platform::Process& owner) const {
    QFile::remove(fileOf(owner.id));
}

QString SessionRecords::fileOf(platform::ProcessId owner) const {
    return QDir(folder_).filePath(kFilePrefix + QString::number(owner) + kFileSuffix);
}

void freeProfile(const QString& profileFolder) {
    endDrivenBrowsers(profileFolder);
    const QDir folder(profileFolder);
    // A symbolic link to "<host>-<process id>"; on Windows Chrome uses an open file instead, which can't go stale.
    const QString owner = QFile::symLinkTarget(folder.filePath(QStringLiteral("SingletonLock"))).section(u'/', -1);
    if (owner.isEmpty()) return;
    const QString host = owner.section(u'-', 0, -2);
    const platform::ProcessId pid = owner.section(u'-', -1).toLongLong();
    if (host == QSysInfo::machineHostName() && platform::processStartTime(pid) != 0) return;
    for (const char* name : {"SingletonLock", "SingletonSocket", "SingletonCookie"}) {
        QFile::remove(folder.filePath(QLatin1String(name)));
    }
    log::info(kLog, QStringLiteral("removed a stale lock of the profile, of process %1").arg(pid));
}

void removeBrokenSettings(const QString& profileFolder) {
    for (const char* name : {"Default/Preferences", "Local State"}) {
        QFile file(QDir(profileFolder).filePath(QLatin1String(name)));
        if (!file.open(QIODevice::ReadOnly) || QJsonDocument::fromJson(file.readAll()).isObject()) continue;
        file.close();
        if (file.remove())
            log::warning(kLog, QStringLiteral("removed a broken file of the profile: %1").arg(file.fileName()));
    }
}

}  // namespace kibo
