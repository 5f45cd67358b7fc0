#include "widgets/queue_grid.h"

#include <QEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

namespace kibo {
namespace {

constexpr int kLowestRow = 8;
constexpr int kNarrowest = 24, kWidest = 4000;
/// Texts that are about as wide as this are not cut for the sake of longer ones.
const QString kBriefText = QStringLiteral("0000-00-00 00:00:00 00");
/// How soon columns follow what they show.
constexpr int kMeasureMs = 50;

}  // namespace

QueueGrid::QueueGrid(const Grid& grid, int spareColumn, int keyColumn, QString emptyText, QWidget* parent)
    : QTableView(parent),
      model_(grid, keyColumn),
      spareColumn_(spareColumn),
      keyColumn_(keyColumn),
      emptyText_(std::move(emptyText)) {
    // Before it sees the model: to know its own width it would read two hundred rows.
    verticalHeader()->hide();
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
    header.setSortIndicatorClearable(true);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    setSortingEnabled(true);
    wants_.resize(static_cast<size_t>(model_.columnCount()));
    own_.resize(wants_.size());
    measureSoon_.setSingleShot(true);
    measureSoon_.setInterval(kMeasureMs);
    connect(&measureSoon_, &QTimer::timeout, this, &QueueGrid::measureColumns);
    const auto soon = [this] {
        if (!measureSoon_.isActive()) measureSoon_.start();
    };
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&model_, signal, this, soon);
    connect(&model_, &QAbstractItemModel::modelReset, this, [this, soon] {
        scrollToTop();
        soon();
    });
    connect(&model_, &QAbstractItemModel::dataChanged, this, soon);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, soon);
    connect(&header, &QHeaderView::sortIndicatorChanged, this, soon);
    connect(&header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (sharing_) return;
        own_[static_cast<size_t>(column)] = width;
        shareWidth();
    });
    connect(&header, &QHeaderView::sectionHandleDoubleClicked, this, [this](int column) {
        own_[static_cast<size_t>(column)] = 0;
        wants_[static_cast<size_t>(column)] = {};
        measureColumns();
    });
}

/// Columns only grow, or they would jump with every message that comes or goes.
void QueueGrid::measureColumns() {
    if (model_.rowCount() == 0) wants_.assign(wants_.size(), {});
    const int brief = fontMetrics().horizontalAdvance(kBriefText);
    const int end = isVisible() ? rowAt(viewport()->height() - 1) : -1;  // -1: the rows end before the grid does
    const int last = end < 0 && isVisible() ? model_.rowCount() - 1 : end;
    for (int column = 0; column < model_.columnCount(); ++column) {
        Want& want = wants_[static_cast<size_t>(column)];
        const auto wants = [&](int width) {
            want.whole = std::max(want.whole, width);
            if (width <= brief && column != spareColumn_) want.brief = std::max(want.brief, width);
        };
        want.brief = std::max(want.brief, horizontalHeader()->sectionSizeHint(column));
        wants(want.brief);
        for (int row = rowAt(0); row >= 0 && row <= last; ++row)
            wants(sizeHintForIndex(model_.index(row, column)).width());
    }
    shareWidth();
}

/// Brief texts are whole, but for those of the spare column, which gives way where the others need its room. The
/// columns of longer ones get as much more as makes them equally wide, the spare one twice as wide, and none more than
/// it wants.
void QueueGrid::shareWidth() {
    const int room = viewport()->width();
    std::vector<int> widths(wants_.size());
    const auto totalFor = [&](int level) {
        int total = 0;
        for (size_t column = 0; column < widths.size(); ++column) {
            const Want& want = wants_[column];
            if (isColumnHidden(static_cast<int>(column))) continue;
            const int share = static_cast<int>(column) == spareColumn_ ? 2 * level : level;
            total += widths[column] = own_[column] > 0 ? own_[column] : std::clamp(share, want.brief, want.whole);
        }
        return total;
    };
    int low = 0, high = room + 1;  // the level lies from low to before high
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        (totalFor(middle) <= room ? low : high) = middle;
    }
    const int left = room - totalFor(low);
    auto spare = static_cast<size_t>(spareColumn_);
    if (own_[spare] > 0)
        for (size_t column = 0; column < own_.size(); ++column)
            if (own_[column] == 0) spare = column;  // the last one
    if (left > 0 && own_[spare] == 0) widths[spare] += left;
    sharing_ = true;
    for (size_t column = 0; column < widths.size(); ++column)
        if (!isColumnHidden(static_cast<int>(column)) && columnWidth(static_cast<int>(column)) != widths[column])
            setColumnWidth(static_cast<int>(column), widths[column]);
    sharing_ = false;
}

void QueueGrid::setShown(int column, bool shown) {
    sharing_ = true;  // the operator gives it no width
    setColumnHidden(column, !shown);
    sharing_ = false;
    shareWidth();
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
    wants_.assign(wants_.size(), {});
    measureSoon_.start();
}

void QueueGrid::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (model_.rowCount() > 0) return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString text = filter_.isEmpty() ? emptyText_ : tr("No line holds \"%1\"").arg(filter_);
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

QMenu* QueueGrid::sortMenu(QWidget* parent) {
    auto* menu = new QMenu(tr("&Sort by"), parent);
    for (int column = 0; column < model_.columnCount(); ++column) {
        const QString name = model_.headerData(column, Qt::Horizontal).toString();
        // The tenth answers to the key 0, those behind it to letters.
        const QString key = column < 9    ? QStringLiteral("&%1").arg(column + 1)
                            : column == 9 ? QStringLiteral("1&0")
                                          : QStringLiteral("&%1").arg(QChar(u'A' + column - 10));
        connect(menu->addAction(key + QStringLiteral("  ") + name), &QAction::triggered, this,
                [this, column] { sortBy(column); });
    }
    return menu;
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

RowReading::What QueueGrid::toRead(bool all) const {
    RowReading::What what{model_.rows(), selectedRows()};
    if (all) {
        what.chosen.resize(static_cast<size_t>(model_.rows()->rowCount()));
        std::iota(what.chosen.begin(), what.chosen.end(), 0);
    }
    if (const auto* arranged = dynamic_cast<const ArrangedRows*>(what.rows.get())) {
        for (int& row : what.chosen) row = arranged->sourceRow(row);
        what.rows = arranged->source();
    }
    return what;
}

QStringList QueueGrid::cells(int row) const {
    QStringList cells;
    for (int column = 0; column < model_.columnCount(); ++column) cells.append(model_.rows()->text(row, column));
    return cells;
}

void QueueGrid::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    QTableView::rowsAboutToBeRemoved(parent, first, last);
    // Rows leave above the visible ones: what is on the screen stays where it is.
    QScrollBar* bar = verticalScrollBar();
    if (first == 0 && bar->value() > last) bar->setValue(bar->value() - (last - first + 1));
}

}  // namespace kibo
