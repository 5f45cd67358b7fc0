#pragma once

#include <QByteArray>
#include <QCollator>
#include <QStringList>
#include <Qt>
#include <memory>
#include <vector>

#include "base/row_source.h"

namespace kibo {

/// How lists are sorted: numbers within texts count as numbers, an id of 9 stands before one of 10.
QCollator sortingCollator();
/// Of a text that lines are sorted by. Those that begin alike keep the order that they had.
inline constexpr int kSortedCharacters = 64;

/// What a grid shows of its rows when it is searched or sorted.
struct Arrangement {
    QString filter;       ///< rows hold it in one of their columns, whatever its case; empty: all rows
    int sortColumn = -1;  ///< -1: the order of the source
    Qt::SortOrder order = Qt::AscendingOrder;

    bool changesNothing() const { return filter.isEmpty() && sortColumn < 0; }
    bool operator==(const Arrangement&) const = default;
};

/// Rows of a source in another order, or some of them. What a grid shows of each is kept, since a source of very many
/// rows is quick from one to the next only.
class ArrangedRows : public RowSource {
 public:
    struct Line {
        int row;           ///< in the source
        QByteArray shown;  ///< its cells as single lines, with tabs between them
    };

    ArrangedRows(std::shared_ptr<const RowSource> source, std::vector<Line> lines)
        : source_(std::move(source)), lines_(std::move(lines)) {}

    int rowCount() const override { return static_cast<int>(lines_.size()); }
    /// Whole texts, out of the source.
    QString text(int row, int column) const override { return source_->text(sourceRow(row), column); }
    bool hasEnded() const override { return source_->hasEnded(); }

    const std::shared_ptr<const RowSource>& source() const { return source_; }
    /// -1 for a row that isn't there.
    int sourceRow(int row) const { return row >= 0 && row < rowCount() ? lines_[static_cast<size_t>(row)].row : -1; }
    /// Empty for a row that isn't there.
    QStringList shownCells(int row) const;

 private:
    const std::shared_ptr<const RowSource> source_;
    const std::vector<Line> lines_;
};

/// Finds and sorts the rows that an arrangement shows, a piece at a time: a queue may hold very many, and neither the
/// window nor what sends beside it waits for them. At most kMostRows rows are looked at.
class Arranging {
 public:
    /// Cells are shown with so many characters.
    Arranging(std::shared_ptr<const RowSource> rows, int columns, int characters, Arrangement arrangement);

    /// Works for about so long; true when all is done.
    bool workFor(int milliseconds);
    /// The result; once, and only when all is done.
    std::shared_ptr<const ArrangedRows> result();

    static constexpr int kMostRows = 200'000;

 private:
    struct Line : ArrangedRows::Line {
        QCollatorSortKey key;
    };

    void look();
    void merge();
    void sortRun(size_t first);
    bool before(const Line& a, const Line& b) const;

    const std::shared_ptr<const RowSource> rows_;
    const int columns_;
    const int characters_;
    const Arrangement arrangement_;
    const int count_;
    QCollator collator_;
    int next_ = 0;  // row to be looked at
    std::vector<Line> lines_;
    size_t run_;         // so many lines one after another are sorted
    size_t merged_ = 0;  // up to here runs of twice that length are
};

}  // namespace kibo
