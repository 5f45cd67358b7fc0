#include "store/local_store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <QtEndian>

namespace kibo {
namespace {

// https://www.sqlite.org/fileformat.html, "The Database Header"
constexpr qsizetype kHeaderBytes = 100;
constexpr int kPageSizeAt = 16, kChangeCounterAt = 24, kPageCountAt = 28, kVersionValidForAt = 92;
const QByteArray kSqliteMagic("SQLite format 3\0", 16);
// First bytes of Access files up to 2003, and from 2007.
const QByteArray kJetMagic("\x00\x01\x00\x00Standard Jet DB", 19);
const QByteArray kAceMagic("\x00\x01\x00\x00Standard ACE DB", 19);

quint32 number(const QByteArray& header, int at) {
    return qFromBigEndian<quint32>(header.constData() + at);
}

/// Size the header claims, in bytes; 0 where it makes no claim.
qint64 claimedSize(const QByteArray& header) {
    if (number(header, kChangeCounterAt) != number(header, kVersionValidForAt)) return 0;
    const quint16 stored = qFromBigEndian<quint16>(header.constData() + kPageSizeAt);
    const qint64 pageSize = stored == 1 ? 65536 : stored;
    return pageSize * number(header, kPageCountAt);
}

Failure problem(FailureKind kind, const QString& path, const QString& what) {
    return {kind, QStringLiteral("%1 %2").arg(QDir::toNativeSeparators(path), what).toStdString()};
}

}  // namespace

QString localPath(const QString& written) {
    QString path = written;
    return QDir::cleanPath(path.replace(u'\\', u'/'));
}

Result<LocalFormat> localFormat(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return problem(FailureKind::NotFound, path, QStringLiteral("does not exist."));
    if (info.isDir())
        return problem(FailureKind::InvalidArgument, path, QStringLiteral("is a folder, not a database."));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return problem(FailureKind::Io, path, QStringLiteral("cannot be read: ") + file.errorString());
    const QByteArray header = file.read(kHeaderBytes);
    if (header.isEmpty()) return problem(FailureKind::InvalidArgument, path, QStringLiteral("is empty."));
    if (header.startsWith(kJetMagic) || header.startsWith(kAceMagic)) return LocalFormat::Access;
    if (!header.startsWith(kSqliteMagic))
        return problem(FailureKind::InvalidArgument, path, QStringLiteral("is not a database."));
    // While a write-ahead log stands beside it, the newest pages are there.
    const bool logged = QFileInfo(path + QStringLiteral("-wal")).size() > 0;
    if (header.size() < kHeaderBytes || (!logged && file.size() < claimedSize(header)))
        return problem(FailureKind::InvalidArgument, path, QStringLiteral("is damaged: its end is missing."));
    return LocalFormat::Sqlite;
}

QString sqliteUri(const QString& path, bool readOnly) {
    return QString::fromUtf8(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded()) +
           (readOnly ? QStringLiteral("?mode=ro") : QStringLiteral("?mode=rw"));
}

QString accessConnection(const QString& driver, const QString& path) {
    return QStringLiteral("DRIVER={%1};DBQ=%2;ExtendedAnsiSQL=1").arg(driver, QDir::toNativeSeparators(path));
}

}  // namespace kibo
