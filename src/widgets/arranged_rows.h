#pragma once

#include <QCollator>
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
    bool operator==(const Arrangement&) const = default;
};

/// Finds and sorts the rows that an arrangement shows, a piece at a time: a queue may hold very many, and neither the
/// window nor what sends beside it waits for them. At most kMostRows rows are looked at.
class Arranging {
 public:
    Arranging(std::shared_ptr<const RowSource> rows, int columns, Arrangement arrangement);

    /// Works for about so long; true when all is done.
    bool workFor(int milliseconds);
    /// The result; once, and only when all is done.
    std::shared_ptr<const RowSource> result();

    static constexpr int kMostRows = 200'000;

 private:
    struct Line {
        int row;
        QCollatorSortKey key;
    };

    bool isWanted(int row) const;
    void look();
    void merge();
    void sortRun(size_t first);
    bool before(const Line& a, const Line& b) const;

    const std::shared_ptr<const RowSource> rows_;
    const int columns_;
    const Arrangement arrangement_;
    const int count_;
    QCollator collator_;
    int next_ = 0;  // row to be looked at
    std::vector<Line> lines_;
    size_t run_;         // so many lines one after another are sorted
    size_t merged_ = 0;  // up to here runs of twice that length are
};

}  // namespace kibo
