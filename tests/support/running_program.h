#pragma once

#include <signal.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include "base/settings.h"
#include "base/settings_file.h"
#include "standin/stand_in.h"
#include "support/eventually.h"
#include "support/files.h"
#include "support/processes.h"
#include "support/stores.h"

namespace kibo::test {

/// The program itself, as an operator or a service starts it, without a display: a program folder of its own with
/// stores and settings, the stand-in page, and the certain end of every process that it leaves.
class RunningProgram {
 public:
    RunningProgram() {
        createStores(home.path());
        set("DB", "UseMDB", QStringLiteral("Y"));
        for (const auto& [key, value] :
             {std::pair{"Profil", "1"}, {"AutoStart", "Y"}, {"Headless", "Y"}, {"Speed", "NORMAL"}})
            set("kibo", key, QLatin1String(value));
        set("kibo", "StartAddress", QString::fromStdString(standIn.address()));
        set("kibo", "ChatAddress", QString::fromStdString(standIn.chatAddress()));
    }
    ~RunningProgram() {
        kill();
        for (const auto& left : processes()) ::kill(static_cast<pid_t>(left.id), SIGKILL);
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    void set(const char* section, const char* key, const QString& value) {
        WriteIni(QLatin1String(section), QLatin1String(key), value, home.filePath(QStringLiteral("kibo.ini")));
    }
    /// Makes `store` the main store.
    void use(const Settings& store) { useStore(home.filePath(QStringLiteral("kibo.ini")), store); }
    /// `variables` are added to the environment, which names no display.
    bool start(const QProcessEnvironment& variables = {}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KIBO_HOME"), home.path());
        environment.remove(QStringLiteral("DISPLAY"));
        environment.insert(variables);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(KIBO_BINARY_DIR "/bin/kibo"), QStringList());
        return process.waitForStarted();
    }
    void kill() {
        process.kill();
        process.waitForFinished();
    }
    /// Driver, browser and the browser's helpers.
    std::vector<platform::Process> processes() const { return processesNaming(home.path()); }
    QByteArray log() const { return contentOf(home.filePath(QStringLiteral("kibo.log"))); }
    /// What the gateway has begun and not ended.
    QByteArray journal() const {
        const QStringList files = QDir(home.path()).entryList({QStringLiteral("send.*.journal")});
        return files.isEmpty() ? QByteArray() : contentOf(home.filePath(files.first()));
    }

    QTemporaryDir home;
    standin::StandIn standIn;
    QProcess process;
};

}  // namespace kibo::test
