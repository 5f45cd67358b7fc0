#include "widgets/queue_grid.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

namespace kibo {
namespace {

constexpr int kLowestRow = 8;
constexpr int kNarrowest = 24, kWidest = 4000;
/// How soon columns follow what they show.
constexpr int kMeasureMs = 50;

}  // namespace

QueueGrid::QueueGrid(const Grid& grid, int spareColumn, int keyColumn, QString emptyText, QWidget* parent)
    : QTableView(parent), model_(grid, keyColumn), spareColumn_(spareColumn), emptyText_(std::move(emptyText)) {
    setModel(&model_);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setTabKeyNavigation(false);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    // Once and low: raising it later would look at every row, each time through all rows before it.
    verticalHeader()->setMinimumSectionSize(kLowestRow);
    applyRowHeight();
    setUpColumns();
    connect(&model_, &GridModel::lostTrack, this, &QTableView::clearSelection);
}

void QueueGrid::setUpColumns() {
    QHeaderView& header = *horizontalHeader();
    header.setHighlightSections(false);
    header.setMinimumSectionSize(kNarrowest);
    header.setResizeContentsPrecision(0);  // what is on the screen
    header.setSortIndicatorClearable(true);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    setSortingEnabled(true);
    wanted_.assign(static_cast<size_t>(model_.columnCount()), 0);
    own_ = wanted_;
    measureSoon_.setSingleShot(true);
    measureSoon_.setInterval(kMeasureMs);
    connect(&measureSoon_, &QTimer::timeout, this, &QueueGrid::measureColumns);
    const auto soon = [this] {
        if (!measureSoon_.isActive()) measureSoon_.start();
    };
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&model_, signal, this, soon);
    connect(&model_, &QAbstractItemModel::modelReset, this, soon);
    connect(&model_, &QAbstractItemModel::dataChanged, this, soon);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, soon);
    connect(&header, &QHeaderView::sortIndicatorChanged, this, soon);
    connect(&header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (sharing_) return;
        own_[static_cast<size_t>(column)] = width;
        shareWidth();
    });
    connect(&header, &QHeaderView::sectionHandleDoubleClicked, this, [this](int column) {
        own_[static_cast<size_t>(column)] = wanted_[static_cast<size_t>(column)] = 0;
        measureColumns();
    });
}

/// Columns only grow, or they would jump with every message that comes or goes.
void QueueGrid::measureColumns() {
    if (model_.rowCount() == 0) std::fill(wanted_.begin(), wanted_.end(), 0);
    for (int column = 0; column < model_.columnCount(); ++column) {
        int& wanted = wanted_[static_cast<size_t>(column)];
        wanted = std::max(wanted, horizontalHeader()->sectionSizeHint(column));
        // As long as it isn't on the screen, every row would be looked at.
        if (isVisible()) wanted = std::max(wanted, sizeHintForColumn(column));
    }
    shareWidth();
}

void QueueGrid::shareWidth() {
    const int room = viewport()->width();
    std::vector<int> widths(wanted_.size());
    std::vector<size_t> narrowFirst;
    int left = room;
    for (size_t column = 0; column < widths.size(); ++column) {
        if (own_[column] > 0)
            left -= widths[column] = own_[column];
        else
            narrowFirst.push_back(column);
    }
    std::sort(narrowFirst.begin(), narrowFirst.end(), [this](size_t a, size_t b) { return wanted_[a] < wanted_[b]; });
    // What wants less than an even share gets it whole.
    for (size_t i = 0; i < narrowFirst.size(); ++i) {
        const size_t column = narrowFirst[i];
        const int share = left / static_cast<int>(narrowFirst.size() - i);
        const int least = horizontalHeader()->sectionSizeHint(static_cast<int>(column));
        left -= widths[column] = std::max(std::min(wanted_[column], share), least);
    }
    if (const auto spare = static_cast<size_t>(spareColumn_); left > 0 && own_[spare] == 0) widths[spare] += left;
    sharing_ = true;
    for (size_t column = 0; column < widths.size(); ++column)
        if (columnWidth(static_cast<int>(column)) != widths[column])
            setColumnWidth(static_cast<int>(column), widths[column]);
    sharing_ = false;
}

QString QueueGrid::ownWidths() const {
    if (std::all_of(own_.begin(), own_.end(), [](int width) { return width == 0; })) return {};
    QStringList widths;
    for (const int width : own_) widths.append(QString::number(width));
    return widths.join(u',');
}

void QueueGrid::setOwnWidths(const QString& widths) {
    const QStringList numbers = widths.split(u',');
    if (numbers.size() != static_cast<qsizetype>(own_.size())) return;
    for (size_t column = 0; column < own_.size(); ++column) {
        const int width = numbers[static_cast<qsizetype>(column)].toInt();
        own_[column] = width <= 0 ? 0 : std::clamp(width, kNarrowest, kWidest);
    }
    measureColumns();
}

void QueueGrid::applyRowHeight() {
    const int height = fontMetrics().height() + 6;
    if (verticalHeader()->defaultSectionSize() == height) return;
    verticalHeader()->setDefaultSectionSize(height);
    horizontalHeader()->setFixedHeight(height + 2);
}

void QueueGrid::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    measureColumns();
}

void QueueGrid::showEvent(QShowEvent* event) {
    QTableView::showEvent(event);
    measureColumns();
}

void QueueGrid::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() != QEvent::FontChange) return;
    applyRowHeight();
    std::fill(wanted_.begin(), wanted_.end(), 0);
    measureSoon_.start();
}

void QueueGrid::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (model_.rowCount() > 0) return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString text = filter_.isEmpty() ? emptyText_ : QStringLiteral("No line holds \"%1\"").arg(filter_);
    painter.drawText(viewport()->rect(), static_cast<int>(Qt::AlignCenter), text);
}

void QueueGrid::setEmptyText(const QString& text) {
    if (emptyText_ == text) return;
    emptyText_ = text;
    viewport()->update();
}

void QueueGrid::setFilter(const QString& text) {
    filter_ = text;
    model_.setFilter(text);
    viewport()->update();
}

void QueueGrid::sortBy(int column) {
    QHeaderView& header = *horizontalHeader();
    const bool again = header.sortIndicatorSection() == column;
    const bool descends = header.sortIndicatorOrder() == Qt::DescendingOrder;
    header.setSortIndicator(again && descends ? -1 : column, again ? Qt::DescendingOrder : Qt::AscendingOrder);
}

std::vector<int> QueueGrid::selectedRows() const {
    std::vector<int> rows;
    // By ranges: asked for each row, a hundred thousand would take a while.
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection)
        for (int row = range.top(); range.isValid() && row <= range.bottom(); ++row) rows.push_back(row);
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

QStringList QueueGrid::cells(int row) const {
    QStringList cells;
    for (int column = 0; column < model_.columnCount(); ++column) cells.append(model_.rows()->text(row, column));
    return cells;
}

std::vector<qint64> QueueGrid::selectedKeys() const {
    std::vector<qint64> keys;
    for (const int row : selectedRows()) keys.push_back(model_.key(row).toLongLong());
    return keys;
}

void QueueGrid::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    QTableView::rowsAboutToBeRemoved(parent, first, last);
    // Rows leave above the visible ones: what is on the screen stays where it is.
    QScrollBar* bar = verticalScrollBar();
    if (first == 0 && bar->value() > last) bar->setValue(bar->value() - (last - first + 1));
}

}  // namespace kibo
