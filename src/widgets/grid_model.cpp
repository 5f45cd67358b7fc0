#include "widgets/grid_model.h"

#include <QColor>
#include <algorithm>

#include "widgets/plain_text.h"
#include "widgets/shown_text.h"

namespace kibo {
namespace {

/// Rows remembered to find out what a reload changed. More than a screen shows; few enough to compare quickly.
constexpr int kSeenRows = 200;
/// How many sent rows at the head of a queue one reload is searched for.
constexpr int kHeadRows = 16;

}  // namespace

GridModel::GridModel(const Grid& grid, int keyColumn, QObject* parent)
    : QAbstractTableModel(parent),
      grid_(grid),
      keyColumn_(keyColumn),
      rows_(grid.rows),
      revision_(grid.revision),
      count_(rows_->rowCount()) {
    rememberHead();
}

void GridModel::refresh() {
    if (revision_ == grid_.revision) return;
    revision_ = grid_.revision;
    show(arranged());
}

void GridModel::setFilter(const QString& text) {
    if (arrangement_.filter == text) return;
    arrangement_.filter = text;
    show(arranged());
}

void GridModel::sort(int column, Qt::SortOrder order) {
    arrangement_.sortColumn = column;
    arrangement_.order = order;
    show(arranged());
}

std::shared_ptr<const RowSource> GridModel::arranged() const {
    if (arrangement_.changesNothing()) return grid_.rows;
    return std::make_shared<ArrangedRows>(grid_.rows, columnCount(), arrangement_);
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
        rows_ = rows;
        endRemoveRows();
    }
    rows_ = std::move(rows);
    resize(rows_->rowCount());
    updateSeenRows();
}

int GridModel::rowsGoneFromHead(const RowSource& newRows) const {
    if (keyColumn_ < 0 || newRows.rowCount() == 0) return 0;
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
    if (role == Qt::ToolTipRole) return asPlainText(seenRow(index.row()).value(index.column()));
    const bool painted = role == Qt::BackgroundRole || role == Qt::ForegroundRole;
    const auto colour = painted ? rowColour(index.row()) : std::nullopt;
    if (colour) return QColor::fromRgb(role == Qt::BackgroundRole ? *colour : colour::kBlack);
    return {};
}

std::optional<Colour> GridModel::rowColour(int row) const {
    if (grid_.statusColumn < 0) return {};
    const QString status = seenRow(row).value(grid_.statusColumn);
    if (grid_.warning.isEmpty()) return status.isEmpty() ? std::nullopt : std::optional(colour::kMarkedRow);
    const bool warns = status.compare(grid_.warning, Qt::CaseInsensitive) == 0;
    return warns ? std::optional(colour::kWarningRow) : std::nullopt;
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    // Not drawn, but told: what a row is called.
    if (orientation == Qt::Vertical && role == Qt::DisplayRole)
        return keyColumn_ < 0 ? QString::number(section + 1) : seenRow(section).value(keyColumn_);
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::DisplayRole) {
        // The columns are the tables'; their common prefix only takes room.
        const QString name = grid_.header.value(section);
        return name.startsWith(QStringLiteral("wa_")) ? name.mid(3) : name;
    }
    if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    return {};
}

QString GridModel::singleLine(const QString& text) {
    return shownText(text, kShownCharacters).replace(QLatin1Char('\n'), QChar(0x23CE)).replace(u'\t', u' ');
}

}  // namespace kibo
