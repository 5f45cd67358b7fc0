#include "widgets/queue_grid.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <numeric>

namespace kibo {
namespace {

constexpr int kLowestRow = 8;

}  // namespace

QueueGrid::QueueGrid(const Grid& grid, QList<int> shares, int keyColumn, QString emptyText, QWidget* parent)
    : QTableView(parent), model_(grid, keyColumn), shares_(std::move(shares)), emptyText_(std::move(emptyText)) {
    // Before it sees the model: to know its own width it would read two hundred rows.
    verticalHeader()->hide();
    setModel(&model_);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setTabKeyNavigation(false);
    setCornerButtonEnabled(false);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    // Once and low: raising it later would look at every row, each time through all rows before it.
    verticalHeader()->setMinimumSectionSize(kLowestRow);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(24);
    for (int column = 0; column < shares_.size(); ++column) setColumnHidden(column, shares_[column] == 0);
    applyRowHeight();
}

void QueueGrid::applyRowHeight() {
    const int height = fontMetrics().height() + 6;
    if (verticalHeader()->defaultSectionSize() == height) return;
    verticalHeader()->setDefaultSectionSize(height);
    horizontalHeader()->setFixedHeight(height + 2);
}

void QueueGrid::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    const int total = std::accumulate(shares_.cbegin(), shares_.cend(), 0);
    const int width = viewport()->width();
    int used = 0;
    int share = 0;
    for (int column = 0; column < shares_.size(); ++column) {
        share += shares_[column];
        const int end = width * share / total;
        if (shares_[column] > 0) setColumnWidth(column, end - used);
        used = end;
    }
}

void QueueGrid::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) applyRowHeight();
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

std::vector<int> QueueGrid::selectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows()) rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<int> QueueGrid::allRows() const {
    std::vector<int> rows(static_cast<size_t>(model_.rowCount()));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

QStringList QueueGrid::cells(int row) const {
    QStringList cells;
    for (int column = 0; column < model_.columnCount(); ++column) cells.append(model_.text(row, column));
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
