#include "store/found_rows.h"

#include <QDir>
#include <QStandardPaths>

namespace kibo {
namespace {

constexpr int kCachedRows = 64;
const QString kFilePattern = QStringLiteral("found-XXXXXX");

/// Where files of this kind stand: not the system's temporary folder, which may itself be memory.
QString folder() {
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    return !cache.isEmpty() && QDir().mkpath(cache) ? cache : QDir::tempPath();
}

}  // namespace

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

void FoundRows::append(const PackedRow& row) {
    waitingBytes_.append(row.bytes());
    waitingLengths_.push_back(static_cast<quint32>(row.bytes().size()));
}

Result<void> FoundRows::flush() {
    const std::lock_guard lock(mutex_);
    const auto bytes = static_cast<qint64>(waitingBytes_.size());
    qint64 end = ends_.empty() ? 0 : ends_.back();
    if (!file_.seek(end) || file_.write(waitingBytes_.data(), bytes) != bytes || !file_.flush())
        return Failure{FailureKind::Io,
                       QStringLiteral("The found rows can't be kept: %1").arg(file_.errorString()).toStdString()};
    for (const quint32 length : waitingLengths_) ends_.push_back(end += length);
    waitingBytes_.clear();
    waitingLengths_.clear();
    count_.store(static_cast<int>(ends_.size()), std::memory_order_release);
    return {};
}

/// The lock must be held. Fewer rows where the file can't be read.
std::vector<PackedRow> FoundRows::read(int first, int rows) const {
    std::vector<PackedRow> found;
    const auto begin = static_cast<size_t>(first), end = qMin(begin + static_cast<size_t>(rows), ends_.size());
    const qint64 start = begin == 0 || begin > ends_.size() ? 0 : ends_[begin - 1];
    if (begin >= end || !file_.seek(start)) return found;
    const QByteArray bytes = file_.read(ends_[end - 1] - start);
    const QByteArrayView all(bytes);
    found.reserve(end - begin);
    for (size_t row = begin, at = 0; row < end; ++row) {
        const auto next = static_cast<size_t>(ends_[row] - start);
        if (next > static_cast<size_t>(bytes.size())) break;
        found.emplace_back(all.sliced(static_cast<qsizetype>(at), static_cast<qsizetype>(next - at)));
        at = next;
    }
    return found;
}

std::vector<PackedRow> FoundRows::packed(int first, int rows) const {
    const std::lock_guard lock(mutex_);
    return read(first, rows);
}

std::vector<PackedRow> FoundRows::packed(const std::vector<int>& order, int first, int rows) const {
    const std::lock_guard lock(mutex_);
    std::vector<PackedRow> found;
    const auto end = qMin(order.size(), static_cast<size_t>(first) + static_cast<size_t>(rows));
    for (auto at = static_cast<size_t>(first); at < end; ++at) {
        std::vector<PackedRow> one = read(order[at], 1);
        if (one.empty()) break;
        found.push_back(std::move(one.front()));
    }
    return found;
}

PackedRow FoundRows::packed(int row) const {
    const std::lock_guard lock(mutex_);
    if (row < 0 || row >= rowCount()) return {};
    // A page around the row, since rows are read one after another.
    const int first = row - row % kCachedRows;
    if (first != firstCached_ || row - first >= static_cast<int>(cache_.size())) cache_ = read(first, kCachedRows);
    firstCached_ = first;
    const auto at = static_cast<size_t>(row - first);
    return at < cache_.size() ? cache_[at] : PackedRow();
}

qint64 FoundRows::size() const {
    const std::lock_guard lock(mutex_);
    return ends_.empty() ? 0 : ends_.back();
}

}  // namespace kibo
