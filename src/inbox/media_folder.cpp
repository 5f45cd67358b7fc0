#include "inbox/media_folder.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStorageInfo>

#include "inbox/media_file_name.h"

namespace kibo {
namespace {

constexpr qint64 kMegabyte = 1024 * 1024;
constexpr qint64 kPresetMB = 2000;
constexpr qint64 kSizeHoldsMs = 60'000;
constexpr int kMostNames = 1000;
const QString kDownloads = QStringLiteral(".download-");

qint64 megabytes(const QString& setting) {
    bool isNumber = false;
    const qint64 megabytes = setting.toLongLong(&isNumber);
    return isNumber && megabytes > 0 ? megabytes : kPresetMB;
}

}  // namespace

MediaFolder::MediaFolder(const Settings& settings, const Clock& clock, QString programFolder, MediaLimits limits)
    : settings_(settings), clock_(clock), programFolder_(std::move(programFolder)), limits_(limits) {}

QString MediaFolder::path() const {
    const QString name = settings_.InboxFolder.isEmpty() ? QStringLiteral("inbox") : settings_.InboxFolder;
    return QDir::cleanPath(QDir(programFolder_).absoluteFilePath(name));
}

QString MediaFolder::downloadFolders() const {
    return QDir(path()).filePath(kDownloads);
}

QString MediaFolder::problem() {
    const QDir folder(path());
    const QString shown = QDir::toNativeSeparators(folder.path());
    if (!folder.mkpath(QStringLiteral("."))) return QStringLiteral("the folder %1 can't be made").arg(shown);
    if (!QFileInfo(folder.path()).isWritable()) return QStringLiteral("the folder %1 can't be written").arg(shown);
    if (std::exchange(swept_, folder.path()) != folder.path()) {
        // Instances may share the folder, so only what has lain there for long is nobody's.
        const QFileInfoList left = folder.entryInfoList({kDownloads + u'*'}, QDir::Dirs | QDir::Hidden);
        for (const QFileInfo& one : left)
            if (one.lastModified().daysTo(QDateTime::currentDateTime()) > 0) QDir(one.filePath()).removeRecursively();
    }
    const qint64 free = QStorageInfo(folder).bytesAvailable();
    if (free >= 0 && free < limits_.leftFreeBytes)
        return QStringLiteral("the disk of %1 is full: less than %2 MB are free")
            .arg(shown)
            .arg(limits_.leftFreeBytes / kMegabyte);
    if (const qint64 most = megabytes(settings_.InboxMaxMB); size() >= most * kMegabyte)
        return QStringLiteral("the folder %1 holds more than InboxMaxMB, %2 MB").arg(shown).arg(most);
    return {};
}

qint64 MediaFolder::size() {
    if (sizeAgainMs_ >= 0 && clock_.monotonicMs() < sizeAgainMs_) return size_;
    sizeAgainMs_ = clock_.monotonicMs() + kSizeHoldsMs;
    size_ = 0;
    for (QDirIterator files(path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); files.hasNext();) {
        files.next();
        size_ += files.fileInfo().size();
    }
    return size_;
}

Result<QString> MediaFolder::take(const QString& file, const QString& name) {
    const QDir folder(path());
    const qint64 bytes = QFileInfo(file).size();
    for (int number = 1; number <= kMostNames; ++number) {
        const QString target = folder.filePath(numberedName(name, number));
        // Never over a file that is there: an id may come again with another database.
        if (QFile::exists(target)) continue;
        QFile moved(file);
        if (!moved.rename(target)) return Failure{FailureKind::Io, moved.errorString().toStdString()};
        size_ += bytes;
        return QDir::toNativeSeparators(target);
    }
    return Failure{FailureKind::Io, "too many files have this name"};
}

}  // namespace kibo
