#pragma once

#include <Qt>
#include <memory>
#include <vector>

#include "base/row_source.h"

namespace kibo {

/// What a grid shows of its rows when it is searched or sorted.
struct Arrangement {
    QString filter;       ///< rows hold it in one of their columns, whatever its case; empty: all rows
    int sortColumn = -1;  ///< -1: the order of the source
    Qt::SortOrder order = Qt::AscendingOrder;

    bool changesNothing() const { return filter.isEmpty() && sortColumn < 0; }
};

/// The rows of `rows` that an arrangement shows, found once. At most kMostSearched rows are looked at: a queue may hold
/// very many, and no window is held up for them.
class ArrangedRows : public RowSource {
 public:
    ArrangedRows(std::shared_ptr<const RowSource> rows, int columns, const Arrangement& arrangement);

    static constexpr int kMostSearched = 20'000;

    int rowCount() const override { return static_cast<int>(shown_.size()); }
    QString text(int row, int column) const override {
        return row >= 0 && row < rowCount() ? rows_->text(shown_[static_cast<size_t>(row)], column) : QString();
    }

 private:
    std::shared_ptr<const RowSource> rows_;
    std::vector<int> shown_;
};

}  // namespace kibo
