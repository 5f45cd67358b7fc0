#pragma once

#include <signal.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <vector>

#include "base/settings_file.h"
#include "support/files.h"
#include "support/mariadb_server.h"
#include "support/stores.h"

namespace kibo::test {

/// An instance with a browser in memory: a process and a program folder of its own, on the shared server. Ended, if
/// need be killed, with this object.
class MemoryInstance {
 public:
    MemoryInstance(const MariaDbServer& server, QString profile, QString account)
        : profile_(std::move(profile)), account_(std::move(account)) {
        createStores(home.path());
        useStore(home.filePath(QStringLiteral("kibo.ini")), server.settings(false));
        for (const auto& [key, value] : {std::pair{"Multi", "Y"}, {"AutoStart", "Y"}, {"Speed", "NORMAL"}})
            set("kibo", key, QLatin1String(value));
    }
    ~MemoryInstance() {
        signal(SIGCONT);
        process.terminate();
        if (!process.waitForFinished(10'000)) kill();
    }
    MemoryInstance(const MemoryInstance&) = delete;
    MemoryInstance& operator=(const MemoryInstance&) = delete;

    void set(const char* section, const char* key, const QString& value) {
        WriteIni(QLatin1String(section), QLatin1String(key), value, home.filePath(QStringLiteral("kibo.ini")));
    }
    bool start() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KIBO_HOME"), home.path());
        environment.insert(QStringLiteral("KIBO_ACCOUNT"), account_);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process.setProcessEnvironment(environment);
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(QStringLiteral(KIBO_BINARY_DIR "/bin/kibo_memory_gateway"), {profile_});
        return process.waitForStarted();
    }
    bool runs() const { return process.state() == QProcess::Running; }
    void signal(int number) {
        if (runs()) ::kill(static_cast<pid_t>(process.processId()), number);
    }
    void kill() {
        process.kill();
        process.waitForFinished();
    }
    QByteArray log() const { return contentOf(home.filePath(QStringLiteral("kibo.log"))); }
    QByteArray journal() const {
        const QStringList files = QDir(home.path()).entryList({QStringLiteral("send.*.journal")});
        return files.isEmpty() ? QByteArray() : contentOf(home.filePath(files.first()));
    }
    const QString& profile() const { return profile_; }

    QTemporaryDir home;
    QProcess process;

 private:
    QString profile_, account_;
};

}  // namespace kibo::test
