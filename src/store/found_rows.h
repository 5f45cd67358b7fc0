#pragma once

#include <QByteArray>
#include <QTemporaryFile>
#include <atomic>
#include <deque>
#include <mutex>
#include <vector>

#include "base/row_source.h"
#include "platform/result.h"

namespace kibo {

/// Rows of a search as they were when it found them, up to millions: in memory stands where each begins, the rows
/// themselves stand in a file that goes with this object, readable by its owner alone. One thread appends, any may
/// read meanwhile; readers see a row once it has been flushed.
class FoundRows : public RowSource {
 public:
    explicit FoundRows(int columns);

    /// The folder of the file must take it; asked before the first row.
    Result<void> open();
    void append(const QStringList& row);
    /// Lets readers see what was appended. Fails where the disk is full; nothing can be appended any more then.
    Result<void> flush();
    /// Rows appended and not flushed.
    int waiting() const { return static_cast<int>(waitingLengths_.size()); }
    qsizetype waitingBytes() const { return waitingBytes_.size(); }

    int rowCount() const override { return count_.load(std::memory_order_acquire); }
    QString text(int row, int column) const override;
    /// All cells of a row; empty texts where it can't be read.
    QStringList row(int row) const;
    /// Bytes that the rows take, about as many as their characters.
    qint64 size() const;

 private:
    const QStringList& cached(int row) const;

    const int columns_;
    QByteArray waitingBytes_;              // the appending thread's
    std::vector<quint32> waitingLengths_;  // the appending thread's

    mutable std::mutex mutex_;  // guards all below
    mutable QTemporaryFile file_;
    std::deque<qint64> ends_;  // of each row
    mutable int firstCached_ = -1;
    mutable std::vector<QStringList> cache_;

    std::atomic<int> count_ = 0;
};

}  // namespace kibo
