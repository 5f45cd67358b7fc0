#include "widgets/arranged_rows.h"

#include <QCollator>
#include <algorithm>
#include <numeric>

namespace kibo {

ArrangedRows::ArrangedRows(std::shared_ptr<const RowSource> rows, int columns, const Arrangement& arrangement)
    : rows_(std::move(rows)), shown_(static_cast<size_t>(std::min(rows_->rowCount(), kMostSearched))) {
    std::iota(shown_.begin(), shown_.end(), 0);
    if (!arrangement.filter.isEmpty()) {
        std::erase_if(shown_, [&](int row) {
            for (int column = 0; column < columns; ++column) {
                if (rows_->text(row, column).contains(arrangement.filter, Qt::CaseInsensitive)) return false;
            }
            return true;
        });
    }
    if (arrangement.sortColumn < 0) return;
    // Numbers within texts count as numbers: an id of 9 stands before one of 10.
    QCollator collator;
    collator.setNumericMode(true);
    std::vector<QString> keys(static_cast<size_t>(rows_->rowCount()));
    for (const int row : shown_) keys[static_cast<size_t>(row)] = rows_->text(row, arrangement.sortColumn);
    const auto before = [&](int a, int b) {
        return collator.compare(keys[static_cast<size_t>(a)], keys[static_cast<size_t>(b)]) < 0;
    };
    if (arrangement.order == Qt::AscendingOrder)
        std::stable_sort(shown_.begin(), shown_.end(), before);
    else
        std::stable_sort(shown_.begin(), shown_.end(), [&](int a, int b) { return before(b, a); });
}

}  // namespace kibo
