#include "session/instance_lock.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSysInfo>

#include "base/log.h"

namespace kibo {

Result<void> InstanceLock::take(const QString& programFolder, const QString& profile) {
    const QString file = QDir(programFolder).filePath(QStringLiteral("run.%1.lock").arg(profile));
    holder_ = 0;
    if (lock_ && file_ == file) return {};
    auto lock = std::make_unique<QLockFile>(file);
    lock->setStaleLockTime(0);  // held for as long as its instance runs
    qint64 process = 0;
    QString host, program;
    if (!lock->tryLock(0) && lock->error() == QLockFile::LockFailedError &&
        lock->getLockInfo(&process, &host, &program) && host == QSysInfo::machineHostName() &&
        platform::processStartTime(process) != 0) {
        holder_ = process;
        const QDateTime since = QFileInfo(file).lastModified();
        const bool today = since.date() == QDate::currentDate();
        return Failure{FailureKind::InvalidArgument,
                       QStringLiteral("Kibo already runs here (process %1, since %2)")
                           .arg(process)
                           .arg(since.toString(today ? QStringLiteral("hh:mm") : QStringLiteral("yyyy-MM-dd hh:mm")))
                           .toStdString()};
    }
    // Where it can't be locked the journal still keeps two instances apart.
    if (!lock->isLocked()) log::warning("window", QStringLiteral("%1 can't be locked").arg(QFileInfo(file).fileName()));
    lock_ = std::move(lock);
    file_ = file;
    return {};
}

}  // namespace kibo
