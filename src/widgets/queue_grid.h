#pragma once

#include <QTableView>
#include <vector>

#include "widgets/grid_model.h"

namespace kibo {

/// A queue grid on screen: single-line rows of one height, whole rows selected (several with Shift and Ctrl), column
/// widths in proportion to the grid's width. Nothing in it depends on the content of rows that are not on the screen.
class QueueGrid : public QTableView {
    Q_OBJECT

 public:
    /// `shares`: relative column widths, one per column; 0 hides the column.
    QueueGrid(const Grid& grid, QList<int> shares, int keyColumn, QString emptyText, QWidget* parent);

    /// Other widths from now on.
    void setShares(QList<int> shares);
    /// Shows the grid's rows as they are now; call it as often as you like.
    void refresh() { model_.refresh(); }
    /// What stands in the place of rows as long as there are none.
    void setEmptyText(const QString& text);
    /// Shows only rows that hold `text`; empty: all.
    void setFilter(const QString& text);

    /// The keys of the selected rows, which stay the same rows whatever the queue does next.
    std::vector<qint64> selectedKeys() const;
    /// Rows as they are shown now, counted from 0.
    std::vector<int> selectedRows() const;
    std::vector<int> allRows() const;
    /// The whole texts of a row, of which the view shows one line each. Empty for a row that isn't there.
    QStringList cells(int row) const;

 protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;

 private:
    void applyRowHeight();
    void applyShares();

    GridModel model_;
    QList<int> shares_;
    QString emptyText_;
    QString filter_;
};

}  // namespace kibo
