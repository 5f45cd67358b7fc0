#include "store/found_rows.h"

#include <QDir>
#include <QStandardPaths>
#include <QtEndian>
#include <cstring>

namespace kibo {
namespace {

constexpr int kCachedRows = 64;
// A cell: its length in bytes, with one of these marks, and its characters; in two bytes each where one doesn't do.
constexpr quint32 kNull = 0xFFFFFFFF;
constexpr quint32 kWide = 0x80000000;
const QString kFilePattern = QStringLiteral("found-XXXXXX");

void appendCell(QByteArray& to, const QString& cell) {
    const qsizetype begin = to.size(), length = cell.size();
    to.resize(begin + qsizetype{sizeof(quint32)} + length);
    char* out = to.data() + begin + sizeof(quint32);
    char16_t wide = 0;  // what two bytes are needed for
    for (const QChar c : cell) {
        wide |= c.unicode();
        *out++ = static_cast<char>(c.unicode());
    }
    quint32 head = static_cast<quint32>(length);
    if (cell.isNull()) {
        head = kNull;
    } else if (wide > 0xFF) {
        head = static_cast<quint32>(2 * length) | kWide;
        to.resize(begin + qsizetype{sizeof head});
        to.append(reinterpret_cast<const char*>(cell.utf16()), 2 * length);
    }
    qToLittleEndian(head, to.data() + begin);
}

/// The cells that stand at `at`, which moves behind them.
QStringList cellsAt(const QByteArray& all, qsizetype& at, int columns) {
    QStringList cells;
    cells.reserve(columns);
    for (int column = 0; column < columns && at + qsizetype{sizeof(quint32)} <= all.size(); ++column) {
        const auto head = qFromLittleEndian<quint32>(all.constData() + at);
        at += sizeof head;
        if (head == kNull) {
            cells.append(QString());
            continue;
        }
        const qsizetype bytes = qMin<qsizetype>(head & ~kWide, all.size() - at);
        if (head & kWide) {
            QString cell(bytes / 2, Qt::Uninitialized);
            std::memcpy(cell.data(), all.constData() + at, static_cast<size_t>(bytes));
            cells.append(cell);
        } else {
            cells.append(QString::fromLatin1(all.constData() + at, bytes));
        }
        at += bytes;
    }
    return cells;
}

/// Where files of this kind stand: not the system's temporary folder, which may itself be memory.
QString folder() {
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    return !cache.isEmpty() && QDir().mkpath(cache) ? cache : QDir::tempPath();
}

}  // namespace

FoundRows::FoundRows(int columns) : columns_(columns) {}

Result<void> FoundRows::open() {
    const std::lock_guard lock(mutex_);
    const QDir cache(folder());
    // A program that was killed leaves its file where files always have names. One in use can't be removed there.
    const QStringList left = cache.entryList({QStringLiteral("found-*")}, QDir::Files);
    for (const QString& file : left) QFile::remove(cache.filePath(file));
    file_.setFileTemplate(cache.filePath(kFilePattern));
    if (file_.open()) return {};
    return Failure{FailureKind::Io, QStringLiteral("No file for the found rows can be made in %1: %2")
                                        .arg(QDir::toNativeSeparators(cache.path()), file_.errorString())
                                        .toStdString()};
}

void FoundRows::append(const QStringList& row) {
    const qsizetype begin = waitingBytes_.size();
    for (const QString& cell : row) appendCell(waitingBytes_, cell);
    waitingLengths_.push_back(static_cast<quint32>(waitingBytes_.size() - begin));
}

Result<void> FoundRows::flush() {
    const std::lock_guard lock(mutex_);
    qint64 end = ends_.empty() ? 0 : ends_.back();
    if (!file_.seek(end) || file_.write(waitingBytes_) != waitingBytes_.size() || !file_.flush())
        return Failure{FailureKind::Io,
                       QStringLiteral("The found rows can't be kept: %1").arg(file_.errorString()).toStdString()};
    for (const quint32 length : waitingLengths_) ends_.push_back(end += length);
    waitingBytes_.resize(0);
    waitingLengths_.clear();
    count_.store(static_cast<int>(ends_.size()), std::memory_order_release);
    return {};
}

/// A page around the row, since rows are read one after another. The lock must be held.
const QStringList& FoundRows::cached(int row) const {
    static const QStringList kNone;
    const int inCache = row - firstCached_;
    if (firstCached_ >= 0 && inCache >= 0 && inCache < static_cast<int>(cache_.size()))
        return cache_[static_cast<size_t>(inCache)];
    const int first = row - row % kCachedRows;
    const auto end = qMin(static_cast<size_t>(first) + kCachedRows, ends_.size());
    const qint64 begin = first == 0 ? 0 : ends_[static_cast<size_t>(first) - 1];
    cache_.clear();
    firstCached_ = first;
    if (file_.seek(begin)) {
        const QByteArray bytes = file_.read(ends_[end - 1] - begin);
        for (qsizetype at = 0; cache_.size() < end - static_cast<size_t>(first) && at < bytes.size();)
            cache_.push_back(cellsAt(bytes, at, columns_));
    }
    const auto at = static_cast<size_t>(row - first);
    return at < cache_.size() ? cache_[at] : kNone;
}

QString FoundRows::text(int row, int column) const {
    const std::lock_guard lock(mutex_);
    return row >= 0 && row < rowCount() ? cached(row).value(column) : QString();
}

QStringList FoundRows::row(int row) const {
    const std::lock_guard lock(mutex_);
    QStringList cells = row >= 0 && row < rowCount() ? cached(row) : QStringList();
    while (cells.size() < columns_) cells.append(QString());
    return cells;
}

qint64 FoundRows::size() const {
    const std::lock_guard lock(mutex_);
    return ends_.empty() ? 0 : ends_.back();
}

}  // namespace kibo
