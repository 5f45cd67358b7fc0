#pragma once

#include <QDir>
#include <QFile>
#include <vector>

#include "platform/process.h"

namespace kibo::test {

/// Processes, except this one, that name `folder` on their command line: the driver, the browser and the browser's
/// helpers of the program folder `folder`.
inline std::vector<platform::Process> processesNaming(const QString& folder) {
    std::vector<platform::Process> found;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        const platform::ProcessId pid = entry.toLongLong();
        QFile line(QStringLiteral("/proc/%1/cmdline").arg(entry));
        if (pid > 0 && pid != platform::ownProcessId() && line.open(QIODevice::ReadOnly) &&
            line.readAll().contains(folder.toLocal8Bit())) {
            found.push_back({pid, platform::processStartTime(pid)});
        }
    }
    return found;
}

}  // namespace kibo::test
