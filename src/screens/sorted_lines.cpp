#include "screens/sorted_lines.h"

#include <QCollator>
#include <algorithm>
#include <limits>

#include "widgets/arranged_rows.h"

namespace kibo {
namespace {

constexpr int kReadAtOnce = 256;

template <class Key>
struct Sorted {
    Key key;
    int line;
};

/// A number, or a time as the number that its digits make; nothing stands before all of them.
qint64 numberOf(const QByteArrayView& cell) {
    if (cell.isEmpty()) return std::numeric_limits<qint64>::min();
    constexpr int kMostDigits = 18;
    qint64 number = 0;
    int digits = 0;
    for (const char c : cell)
        if (c >= '0' && c <= '9' && digits++ < kMostDigits) number = 10 * number + (c - '0');
    return cell.front() == '-' ? -number : number;
}

template <class Key, class Make>
Result<std::vector<int>> sorted(const FoundRows& rows, SentColumn column, Qt::SortOrder order,
                                const SentLog::Course& course, const Make& make) {
    const int all = rows.rowCount();
    std::vector<Sorted<Key>> keys;
    keys.reserve(static_cast<size_t>(all));
    while (static_cast<int>(keys.size()) < all) {
        if (course.stop.stop_requested()) return Failure{FailureKind::InvalidArgument, "it was stopped."};
        const int first = static_cast<int>(keys.size());
        const std::vector<PackedRow> read = rows.packed(first, std::min(kReadAtOnce, all - first));
        if (read.empty()) return Failure{FailureKind::Io, "The found rows can't be read any more; search once more."};
        for (const PackedRow& row : read)
            keys.push_back({make(row, static_cast<int>(column)), static_cast<int>(keys.size())});
        course.lines = static_cast<int>(keys.size());
    }
    const bool ascends = order == Qt::AscendingOrder;
    std::stable_sort(keys.begin(), keys.end(), [ascends](const Sorted<Key>& a, const Sorted<Key>& b) {
        return ascends ? a.key < b.key : b.key < a.key;
    });
    std::vector<int> lines(keys.size());
    std::transform(keys.begin(), keys.end(), lines.begin(), [](const Sorted<Key>& one) { return one.line; });
    return lines;
}

}  // namespace

std::vector<int> foundLines(const SortedLines* sorted, std::vector<int> rows) {
    for (int& row : rows) row = sorted ? sorted->line(row) : row;
    return rows;
}

Result<std::vector<int>> sortLines(const FoundRows& rows, SentColumn column, Qt::SortOrder order,
                                   const SentLog::Course& course) {
    switch (column) {
        case SentColumn::Id:
        case SentColumn::Time:
        case SentColumn::Mode:
        case SentColumn::Ended:
        case SentColumn::TicksTime:
            return sorted<qint64>(rows, column, order, course,
                                  [](const PackedRow& row, int at) { return numberOf(row.cell(at)); });
        default:
            break;
    }
    const QCollator collator = sortingCollator();
    return sorted<QCollatorSortKey>(rows, column, order, course, [&collator](const PackedRow& row, int at) {
        return collator.sortKey(row.text(at).left(kSortedCharacters));
    });
}

}  // namespace kibo
