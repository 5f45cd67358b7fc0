#include "widgets/grid_model.h"

#include <QColor>
#include <algorithm>

#include "widgets/plain_text.h"
#include "widgets/shown_text.h"

namespace kibo {
namespace {

/// The rows behind those that have left.
class RowsFrom : public RowSource {
 public:
    RowsFrom(std::shared_ptr<const RowSource> rows, int first) : rows_(std::move(rows)), first_(first) {}

    int rowCount() const override { return rows_->rowCount() - first_; }
    QString text(int row, int column) const override { return rows_->text(row + first_, column); }
    bool hasEnded() const override { return rows_->hasEnded(); }

 private:
    const std::shared_ptr<const RowSource> rows_;
    const int first_;
};

/// Rows remembered to find out what a reload changed. More than a screen shows; few enough to compare quickly.
constexpr int kSeenRows = 200;
/// Of a cell's text under the mouse.
constexpr int kHintCharacters = 2000;
/// How many sent rows at the head of a queue one reload is searched for.
constexpr int kHeadRows = 16;
/// How far from its old place a selected row is looked for, and how many rows a selection that is followed spans.
constexpr int kMovedRows = 200, kFollowed = 5'000;
/// How long rows are arranged for at once: where an operator waits for it, and beside other work.
constexpr int kAtOnceMs = 30, kBesidesMs = 4;
/// Rows that change all the time are arranged anew after a rest of so many times of what it took.
constexpr qint64 kRests = 4;

}  // namespace

GridModel::GridModel(const Grid& grid, int keyColumn, QObject* parent)
    : QAbstractTableModel(parent),
      grid_(grid),
      keyColumn_(keyColumn),
      rows_(grid.rows),
      revision_(grid.revision),
      count_(rows_->rowCount()) {
    connect(&bitByBit_, &QTimer::timeout, this, [this] { arrangeFor(kBesidesMs); });
    rememberHead();
}

void GridModel::refresh() {
    if (revision_ == grid_.revision || arranging_) return;
    if (arrangement_.changesNothing()) {
        revision_ = grid_.revision;
        show(grid_.rows);
    } else if (!arrangedSince_.isValid() || arrangedSince_.elapsed() >= kRests * arrangingTook_) {
        beginArranging();
        arrangeFor(kBesidesMs);
    }
}

void GridModel::setFilter(const QString& text) {
    arrange({text, arrangement_.sortColumn, arrangement_.order});
}

void GridModel::sort(int column, Qt::SortOrder order) {
    arrange({arrangement_.filter, column, order});
}

void GridModel::arrange(const Arrangement& arrangement) {
    if (arrangement == arrangement_) return;
    arrangement_ = arrangement;
    arrangedAnew_ = true;
    if (!arrangement_.changesNothing()) {
        beginArranging();
        arrangeFor(kAtOnceMs);
        return;
    }
    arranging_.reset();
    bitByBit_.stop();
    revision_ = grid_.revision;
    showAnew(grid_.rows);
}

void GridModel::beginArranging() {
    revision_ = grid_.revision;
    arranging_.emplace(grid_.rows, columnCount(), kShownCharacters, arrangement_);
    arrangingSince_.start();
    bitByBit_.start(0);
}

void GridModel::arrangeFor(int milliseconds) {
    if (!arranging_ || !arranging_->workFor(milliseconds)) return;
    std::shared_ptr<const ArrangedRows> rows = arranging_->result();
    arranging_.reset();
    bitByBit_.stop();
    arrangingTook_ = arrangingSince_.elapsed();
    arrangedSince_.start();
    // Rows that ended half-way have left empty ones; the grid gets new ones at once.
    if (rows->hasEnded()) {
        --revision_;
        return;
    }
    arrangedAnew_ ? showAnew(std::move(rows)) : show(std::move(rows));
}

void GridModel::showAnew(std::shared_ptr<const RowSource> rows) {
    arrangedAnew_ = false;
    beginResetModel();
    rows_ = std::move(rows);
    count_ = rows_->rowCount();
    seen_.clear();
    endResetModel();
    rememberHead();
}

void GridModel::show(std::shared_ptr<const RowSource> rows) {
    const int gone = rowsGoneFromHead(*rows);
    if (gone > 0) {
        beginRemoveRows({}, 0, gone - 1);
        count_ -= gone;
        QHash<int, QStringList> kept;
        for (auto row = seen_.cbegin(); row != seen_.cend(); ++row) {
            if (row.key() >= gone) kept.insert(row.key() - gone, row.value());
        }
        seen_ = std::move(kept);
        rows_ = std::make_shared<RowsFrom>(rows_, gone);
        endRemoveRows();
    }
    const int newCount = rows->rowCount();
    if (newCount > count_) resize(newCount);
    follow(rows);
    rows_ = std::move(rows);
    resize(newCount);
    updateSeenRows();
}

/// What tells a row from others; empty where it is not known any more.
QString GridModel::identity(const RowSource& rows, int row) const {
    const bool arranged = dynamic_cast<const ArrangedRows*>(&rows) != nullptr;
    if (!arranged && rows.hasEnded()) return {};
    if (!arranged && keyColumn_ >= 0) return rows.text(row, keyColumn_);
    const QStringList cells = readRow(rows, row);
    return keyColumn_ >= 0 ? cells.value(keyColumn_) : cells.join(u'\t');
}

/// The row's place near an old one, or as far from the end as that was; -1: not there.
int GridModel::find(const QString& wanted, const RowSource& rows, int near) const {
    if (wanted.isEmpty()) return -1;
    const int end = rows.rowCount();
    for (const int around : {near, near + end - rows_->rowCount()}) {
        for (int away = 0; away <= kMovedRows; ++away) {
            for (const int row : {around - away, around + away}) {
                if (row >= 0 && row < end && identity(rows, row) == wanted) return row;
            }
        }
    }
    return -1;
}

QString GridModel::key(int row) const {
    const auto seen = seen_.constFind(row);
    if (seen == seen_.cend()) return identity(*rows_, row);
    return keyColumn_ >= 0 ? seen->value(keyColumn_) : seen->join(u'\t');
}

QHash<int, QString> GridModel::keys(const QModelIndexList& indexes) const {
    QHash<int, QString> found;
    for (const QModelIndex& index : indexes) {
        if (!found.contains(index.row()) && index.row() < rows_->rowCount())
            found.insert(index.row(), key(index.row()));
    }
    return found;
}

/// Takes selection and current row along to where `newRows` have them. Before the old rows are let go.
void GridModel::follow(const std::shared_ptr<const RowSource>& newRows) {
    // Of a range only the ends stand here, which is enough to see whether it has moved.
    const QHash<int, QString> ends = keys(persistentIndexList());
    const bool moved = std::any_of(ends.keyValueBegin(), ends.keyValueEnd(), [&](const auto& end) {
        return !end.second.isEmpty() && identity(*newRows, end.first) != end.second;
    });
    if (!moved) return;
    const auto [first, last] = std::minmax_element(ends.keyBegin(), ends.keyEnd());
    if (*last - *first > kFollowed) {
        emit lostTrack();
        return;
    }
    emit layoutAboutToBeChanged();
    const QModelIndexList all = persistentIndexList();
    const QHash<int, QString> before = keys(all);
    QHash<int, int> places;
    for (auto row = before.cbegin(); row != before.cend(); ++row)
        places.insert(row.key(), find(row.value(), *newRows, row.key()));
    for (const QModelIndex& from : all) {
        const int row = places.value(from.row(), -1);
        changePersistentIndex(from, row < 0 ? QModelIndex() : index(row, from.column()));
    }
    emit layoutChanged();
}

int GridModel::rowsGoneFromHead(const RowSource& newRows) const {
    if (keyColumn_ < 0 || newRows.rowCount() == 0 || !arrangement_.changesNothing()) return 0;
    const QString head = newRows.text(0, keyColumn_);
    // Only remembered rows are looked at: the old source may already have lost its database.
    for (int row = 0; row < std::min(count_, kHeadRows); ++row) {
        const auto known = seen_.constFind(row);
        if (known == seen_.cend()) return 0;
        if (known->value(keyColumn_) == head) return row;
    }
    return 0;
}

void GridModel::resize(int newCount) {
    if (newCount > count_) {
        beginInsertRows({}, count_, newCount - 1);
        count_ = newCount;
        endInsertRows();
    } else if (newCount < count_) {
        beginRemoveRows({}, newCount, count_ - 1);
        count_ = newCount;
        seen_.removeIf([newCount](const std::pair<const int&, QStringList&>& row) { return row.first >= newCount; });
        endRemoveRows();
    }
}

void GridModel::updateSeenRows() {
    for (auto row = seen_.begin(); row != seen_.end(); ++row) {
        QStringList now = readRow(*rows_, row.key());
        if (now == row.value()) continue;
        row.value() = std::move(now);
        emit dataChanged(index(row.key(), 0), index(row.key(), columnCount() - 1));
    }
    rememberHead();
}

void GridModel::rememberHead() const {
    if (keyColumn_ < 0) return;
    for (int row = 0; row < std::min(count_, kHeadRows); ++row) seenRow(row);
}

const QStringList& GridModel::seenRow(int row) const {
    const auto known = seen_.constFind(row);
    if (known != seen_.cend()) return *known;
    // Scrolling far fills the memory; what is still on the screen is asked for again.
    if (seen_.size() >= kSeenRows) {
        seen_.removeIf([](const std::pair<const int&, QStringList&>& entry) { return entry.first >= kHeadRows; });
    }
    return *seen_.insert(row, readRow(*rows_, row));
}

QStringList GridModel::readRow(const RowSource& rows, int row) const {
    if (const auto* arranged = dynamic_cast<const ArrangedRows*>(&rows)) return arranged->shownCells(row);
    QStringList cells;
    cells.reserve(grid_.header.size());
    for (int column = 0; column < grid_.header.size(); ++column) cells.append(singleLine(rows.text(row, column)));
    return cells;
}

int GridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count_;
}

int GridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(grid_.header.size());
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= count_) return {};
    if (role == Qt::DisplayRole) return seenRow(index.row()).value(index.column());
    if (role == Qt::ToolTipRole) {
        const QString whole = rows_->text(index.row(), index.column());
        return asHint(shownText(whole.isEmpty() ? seenRow(index.row()).value(index.column()) : whole, kHintCharacters));
    }
    const bool painted = role == Qt::BackgroundRole || role == Qt::ForegroundRole;
    auto colour = painted ? rowColour(index.row()) : std::nullopt;
    if (painted && grid_.cellColour) colour = grid_.cellColour(seenRow(index.row()), index.column());
    if (colour) return QColor::fromRgb(role == Qt::BackgroundRole ? *colour : colour::kBlack);
    return {};
}

std::optional<Colour> GridModel::rowColour(int row) const {
    if (grid_.statusColumn < 0) return {};
    const QString status = seenRow(row).value(grid_.statusColumn);
    if (grid_.warning.isEmpty()) return status.isEmpty() ? std::nullopt : std::optional(colour::kMarkedRow);
    const bool warns = status.compare(grid_.warning, Qt::CaseInsensitive) == 0;
    return warns ? std::optional(grid_.warningColour) : std::nullopt;
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    // Not drawn, but told: what a row is called.
    if (orientation == Qt::Vertical && role == Qt::DisplayRole)
        return keyColumn_ < 0 ? QString::number(section + 1) : seenRow(section).value(keyColumn_);
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::DisplayRole) {
        // The columns are the tables'; their common prefix only takes room.
        const QString name = grid_.header.value(section);
        return !grid_.wholeNames && name.startsWith(QStringLiteral("wa_")) ? name.mid(3) : name;
    }
    if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    return {};
}

QString GridModel::singleLine(const QString& text) {
    return shownLine(text, kShownCharacters);
}

}  // namespace kibo
