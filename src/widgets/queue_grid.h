#pragma once

#include <QTableView>
#include <QTimer>
#include <vector>

#include "widgets/grid_model.h"
#include "widgets/row_reading.h"

class QMenu;

namespace kibo {

/// A queue grid on screen: single-line rows of one height, whole rows selected (several with Shift and Ctrl). Columns
/// are as wide as their headers and what is on the screen want; where that is too much, long texts share what is left.
/// One that the operator has drawn to a width keeps it until its border is double-clicked. A click on a header sorts, a
/// second one the other way round, a third one not at all. Nothing depends on rows that are not on the screen.
class QueueGrid : public QTableView {
    Q_OBJECT

 public:
    /// `spareColumn` takes the room that is left over.
    QueueGrid(const Grid& grid, int spareColumn, int keyColumn, QString emptyText, QWidget* parent);

    /// Whether the grid has that column, from now on.
    void setShown(int column, bool shown);
    /// Shows the grid's rows as they are now; call it as often as you like.
    void refresh() { model_.refresh(); }
    /// What stands in the place of rows as long as there are none.
    void setEmptyText(const QString& text);
    /// Shows only rows that hold `text`; empty: all.
    void setFilter(const QString& text);

    /// As a click on the header of a column does.
    void sortBy(int column);
    /// A menu that does so for each column.
    QMenu* sortMenu(QWidget* parent);

    /// The key of a row, which stays the same row whatever the queue does next; 0 for one that isn't there.
    qint64 key(int row) const { return model_.key(row).toLongLong(); }
    int keyColumn() const { return keyColumn_; }
    /// Rows as they are shown now, counted from 0.
    std::vector<int> selectedRows() const;
    /// The selected rows, or all that are shown, as they are at this moment.
    RowReading::What toRead(bool all) const;
    /// The whole texts of a row, of which the view shows one line each. Empty for a row that isn't there.
    QStringList cells(int row) const;

    /// The widths that the operator has given, in pixels with commas, 0 for a column without one; empty: none has.
    QString ownWidths() const;
    void setOwnWidths(const QString& widths);

 protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;

 private:
    struct Want {
        int brief = 0;  // its header and those of its texts that aren't long
        int whole = 0;  // all of them
    };

    void applyRowHeight();
    void setUpColumns();
    void measureColumns();
    void shareWidth();

    GridModel model_;
    const int spareColumn_, keyColumn_;
    QString emptyText_;
    QString filter_;
    std::vector<Want> wants_;  // of each column, for what it has shown so far
    std::vector<int> own_;     // given by the operator; 0: none
    bool sharing_ = false;
    QTimer measureSoon_;
};

}  // namespace kibo
