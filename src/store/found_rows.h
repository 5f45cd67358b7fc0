#pragma once

#include <QTemporaryFile>
#include <atomic>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "base/packed_row.h"
#include "base/row_source.h"
#include "platform/result.h"

namespace kibo {

/// Rows of a search as they were when it found them, up to millions: in memory stands where each begins, the rows
/// themselves stand in a file that goes with this object, readable by its owner alone. One thread appends, any may
/// read meanwhile; readers see a row once it has been flushed.
class FoundRows : public RowSource {
 public:
    /// The folder of the file must take it; asked before the first row.
    Result<void> open();
    void append(const PackedRow& row);
    /// Lets readers see what was appended. Fails where the disk is full; nothing can be appended any more then.
    Result<void> flush();

    int rowCount() const override { return count_.load(std::memory_order_acquire); }
    QString text(int row, int column) const override { return row < 0 ? QString() : packed(row).text(column); }
    /// No cells where it can't be read.
    PackedRow packed(int row) const;
    /// `rows` of them from `first` on, read at once.
    std::vector<PackedRow> packed(int first, int rows) const;
    /// The same for rows that stand in `order`.
    std::vector<PackedRow> packed(const std::vector<int>& order, int first, int rows) const;
    /// Bytes that the rows take.
    qint64 size() const;

 private:
    std::vector<PackedRow> read(int first, int rows) const;

    std::string waitingBytes_;             // the appending thread's
    std::vector<quint32> waitingLengths_;  // the appending thread's

    mutable std::mutex mutex_;  // guards all below
    mutable QTemporaryFile file_;
    std::deque<qint64> ends_;  // of each row
    mutable int firstCached_ = -1;
    mutable std::vector<PackedRow> cache_;

    std::atomic<int> count_ = 0;
};

}  // namespace kibo
