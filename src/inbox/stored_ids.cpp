#include "inbox/stored_ids.h"

#include <algorithm>

namespace kibo {

Result<void> StoredIds::open() {
    const QString path = path_();
    if (path == openPath_) return {};
    openPath_.clear();
    parts_ = {};
    if (auto read = this->read(parts_[0], path); !read) return read;
    if (auto read = this->read(parts_[1], path + QStringLiteral(".2")); !read) return read;
    current_ = parts_[0].likenesses.size() <= parts_[1].likenesses.size() ? 0 : 1;
    openPath_ = path;
    return {};
}

/// A line is a likeness and an id; one that was cut off by a crash has no end.
Result<void> StoredIds::read(Part& part, const QString& path) {
    auto file = platform::DurableFile::open(path.toStdString());
    if (!file) return file.failure();
    const Result<std::string> content = file.value()->read();
    if (!content) return content.failure();
    QList<QByteArray> lines = QByteArray::fromStdString(content.value()).split('\n');
    // What follows a line without an end would become part of it.
    if (!lines.takeLast().isEmpty()) {
        const Result<void> ended = file.value()->append("\n");
        if (!ended) return ended;
    }
    for (const QByteArray& line : std::as_const(lines)) {
        const qsizetype blank = line.indexOf(' ');
        if (blank <= 0) continue;
        const QString id = QString::fromUtf8(line.mid(blank + 1));
        part.likenesses.insert(id, line.left(blank));
        part.order.append(id);
    }
    part.file = std::move(file).value();
    return {};
}

bool StoredIds::contains(const QString& messageId) const {
    return !messageId.isEmpty() && std::any_of(parts_.begin(), parts_.end(),
                                               [&](const Part& part) { return part.likenesses.contains(messageId); });
}

QStringList StoredIds::newest(qsizetype count) const {
    const QStringList all = parts_[1 - current_].order + parts_[current_].order;
    return all.mid(std::max<qsizetype>(all.size() - count, 0));
}

int StoredIds::storedLike(const IncomingRow& row) const {
    const QByteArray likeness = row.likeness();
    qsizetype count = 0;
    for (const Part& part : parts_) count += std::count(part.likenesses.begin(), part.likenesses.end(), likeness);
    return static_cast<int>(count);
}

Result<void> StoredIds::add(const IncomingRow& row) {
    if (row.messageId.isEmpty() || contains(row.messageId)) return {};
    if (auto opened = open(); !opened) return opened;
    if (parts_[current_].likenesses.size() >= kMostInAFile) {
        const std::size_t other = 1 - current_;
        if (auto emptied = parts_[other].file->replace({}); !emptied) return emptied;
        parts_[other].likenesses.clear();
        parts_[other].order.clear();
        current_ = other;
    }
    Part& part = parts_[current_];
    const QByteArray likeness = row.likeness();
    const Result<void> written = part.file->append((likeness + ' ' + row.messageId.toUtf8() + '\n').toStdString());
    if (!written) return written;
    part.likenesses.insert(row.messageId, likeness);
    part.order.append(row.messageId);
    return written;
}

}  // namespace kibo
