#pragma once

#include <QTableView>

#include "widgets/grid_model.h"

namespace kibo {

/// A queue grid on screen: single-line rows of one height, whole rows selected, column widths in proportion to
/// the grid's width. Nothing in it depends on the content of rows that are not on the screen.
class QueueGrid : public QTableView {
    Q_OBJECT

 public:
    /// `shares`: relative column widths, one per column; 0 hides the column.
    QueueGrid(const Grid& grid, QList<int> shares, int keyColumn, QString emptyText, QWidget* parent);

    /// Shows the grid's rows as they are now; call it as often as you like.
    void refresh() { model_.refresh(); }
    /// What stands in the place of rows as long as there are none.
    void setEmptyText(const QString& text);

 protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;

 private:
    void applyRowHeight();

    GridModel model_;
    QList<int> shares_;
    QString emptyText_;
};

}  // namespace kibo
