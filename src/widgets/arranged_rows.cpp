#include "widgets/arranged_rows.h"

#include <QElapsedTimer>
#include <QLocale>
#include <algorithm>
#include <utility>

#include "widgets/shown_text.h"

namespace kibo {
namespace {

/// Rows between two looks at the time; lines that are sorted at once before they are merged.
constexpr int kRowsAtOnce = 64;
constexpr size_t kRun = 1024;
}  // namespace

QCollator sortingCollator() {
    const QLocale system;
    // In the language "C" numbers within texts would not count as numbers.
    QCollator collator(system.language() == QLocale::C ? QLocale(QLocale::English) : system);
    collator.setNumericMode(true);
    return collator;
}

QStringList ArrangedRows::shownCells(int row) const {
    if (row < 0 || row >= rowCount()) return {};
    return QString::fromUtf8(lines_[static_cast<size_t>(row)].shown).split(u'\t');
}

Arranging::Arranging(std::shared_ptr<const RowSource> rows, int columns, int characters, Arrangement arrangement)
    : rows_(std::move(rows)),
      columns_(columns),
      characters_(characters),
      arrangement_(std::move(arrangement)),
      count_(std::min(rows_->rowCount(), kMostRows)),
      collator_(sortingCollator()),
      run_(kRun) {}

bool Arranging::workFor(int milliseconds) {
    QElapsedTimer time;
    time.start();
    while (next_ < count_ || (arrangement_.sortColumn >= 0 && run_ < lines_.size())) {
        if (time.elapsed() >= milliseconds) return false;
        next_ < count_ ? look() : merge();
    }
    return true;
}

void Arranging::look() {
    const bool sorts = arrangement_.sortColumn >= 0;
    for (const int end = std::min(next_ + kRowsAtOnce, count_); next_ < end; ++next_) {
        bool wanted = arrangement_.filter.isEmpty();
        QStringList cells;
        QString sortedBy;
        for (int column = 0; column < columns_; ++column) {
            const QString text = rows_->text(next_, column);
            wanted = wanted || text.contains(arrangement_.filter, Qt::CaseInsensitive);
            if (column == arrangement_.sortColumn) sortedBy = text.left(kSortedCharacters);
            cells.append(shownLine(text, characters_));
        }
        if (!wanted) continue;
        lines_.push_back({{next_, cells.join(u'\t').toUtf8()}, collator_.sortKey(sortedBy)});
        if (sorts && lines_.size() % run_ == 0) sortRun(lines_.size() - run_);
    }
    if (sorts && next_ == count_ && lines_.size() % run_ != 0) sortRun(lines_.size() - lines_.size() % run_);
}

bool Arranging::before(const Line& a, const Line& b) const {
    return arrangement_.order == Qt::AscendingOrder ? a.key.compare(b.key) < 0 : b.key.compare(a.key) < 0;
}

void Arranging::sortRun(size_t first) {
    std::stable_sort(lines_.begin() + static_cast<std::ptrdiff_t>(first), lines_.end(),
                     [this](const Line& a, const Line& b) { return before(a, b); });
}

void Arranging::merge() {
    const auto at = [this](size_t line) {
        return lines_.begin() + static_cast<std::ptrdiff_t>(std::min(line, lines_.size()));
    };
    std::inplace_merge(at(merged_), at(merged_ + run_), at(merged_ + 2 * run_),
                       [this](const Line& a, const Line& b) { return before(a, b); });
    merged_ += 2 * run_;
    if (merged_ < lines_.size()) return;
    merged_ = 0;
    run_ *= 2;
}

std::shared_ptr<const ArrangedRows> Arranging::result() {
    std::vector<ArrangedRows::Line> lines(std::make_move_iterator(lines_.begin()),
                                          std::make_move_iterator(lines_.end()));
    lines_.clear();
    return std::make_shared<ArrangedRows>(rows_, std::move(lines));
}

}  // namespace kibo
