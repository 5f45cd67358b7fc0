#pragma once

#include <Qt>
#include <memory>
#include <vector>

#include "screens/sent_log.h"

namespace kibo {

/// Found rows in another order.
class SortedLines : public RowSource {
 public:
    /// `lines` count in `rows`, each of which stands there once.
    SortedLines(std::shared_ptr<const FoundRows> rows, std::vector<int> lines)
        : rows_(std::move(rows)), lines_(std::move(lines)) {}

    int rowCount() const override { return static_cast<int>(lines_.size()); }
    QString text(int row, int column) const override { return rows_->text(line(row), column); }
    /// -1 for a row that isn't there.
    int line(int row) const { return row >= 0 && row < rowCount() ? lines_[static_cast<size_t>(row)] : -1; }
    const std::vector<int>& lines() const { return lines_; }

 private:
    const std::shared_ptr<const FoundRows> rows_;
    const std::vector<int> lines_;
};

/// Where rows of the grid stand in what was found; nullptr: they are shown as they were found.
std::vector<int> foundLines(const SortedLines* sorted, std::vector<int> rows);

/// All lines of `rows` in the order of a column: numbers as numbers, times as times, those that are equal as they were
/// found. Fails when it is stopped, and where the rows can't be read.
Result<std::vector<int>> sortLines(const FoundRows& rows, SentColumn column, Qt::SortOrder order,
                                   const SentLog::Course& course);

}  // namespace kibo
