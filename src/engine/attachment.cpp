#include "engine/attachment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStringList>

namespace kibo {
namespace {

constexpr qint64 kMegabyte = 1024 * 1024;
constexpr qint64 kUsualMegabytes = 64;  // what the page takes of a photo or video

Failure refused(FileColumn column, const QString& why) {
    return {FailureKind::InvalidArgument, (nameOf(column) + QLatin1Char(' ') + why).toStdString()};
}

/// What the page's input for photos and videos takes, as far as every browser can draw it.
bool isShownByThePage(const QString& path) {
    static const QStringList kShown{QStringLiteral("image/jpeg"), QStringLiteral("image/png"),
                                    QStringLiteral("image/gif"),  QStringLiteral("image/webp"),
                                    QStringLiteral("image/bmp"),  QStringLiteral("video/mp4"),
                                    QStringLiteral("video/3gpp"), QStringLiteral("video/quicktime")};
    return kShown.contains(QMimeDatabase().mimeTypeForFile(path).name());
}

}  // namespace

QString nameOf(FileColumn column) {
    return column == FileColumn::Media ? QStringLiteral("the media file") : QStringLiteral("the document");
}

bool isAddress(const QString& entry) {
    return entry.startsWith(QLatin1String("HTTP"), Qt::CaseInsensitive);
}

qint64 mostFileBytes(const Settings& settings) {
    const qint64 megabytes = settings.MaxFileMB.toLongLong();
    return (megabytes > 0 ? megabytes : kUsualMegabytes) * kMegabyte;
}

Result<Attachment> checkedAttachment(FileColumn column, const QString& path, qint64 mostBytes) {
    // The page would take the second line for a second file.
    if (path.contains(QLatin1Char('\n'))) return refused(column, QStringLiteral("has a line break in its name"));
    const QFileInfo file(path);
    if (!file.exists()) return refused(column, QStringLiteral("is not there"));
    if (file.isDir()) return refused(column, QStringLiteral("is a folder"));
    if (!file.isFile()) return refused(column, QStringLiteral("is no ordinary file"));
    if (!QFile(path).open(QIODevice::ReadOnly)) return refused(column, QStringLiteral("can't be read"));
    if (file.size() == 0) return refused(column, QStringLiteral("is empty"));
    if (file.size() > mostBytes)
        return refused(column, QStringLiteral("is too large: %1 MB, and %2 MB are allowed (MaxFileMB)")
                                   .arg((file.size() + kMegabyte - 1) / kMegabyte)
                                   .arg(mostBytes / kMegabyte));
    const bool asMedia = column == FileColumn::Media && isShownByThePage(path);
    return Attachment{asMedia ? FileInput::Media : FileInput::Document,
                      QDir::toNativeSeparators(file.absoluteFilePath()), file.size()};
}

}  // namespace kibo
