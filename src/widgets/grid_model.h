#pragma once

#include <QAbstractTableModel>
#include <QElapsedTimer>
#include <QHash>
#include <QTimer>
#include <memory>
#include <optional>

#include "base/controls.h"
#include "widgets/arranged_rows.h"

namespace kibo {

/// Shows a Grid of the state to a view. Rows are read from their source when the view asks for them, so a queue
/// of 100,000 messages costs what is on the screen. A reload with the same content changes nothing in the view, and
/// what is selected stays with its rows wherever a reload has moved them; a row that can't be found is deselected.
class GridModel : public QAbstractTableModel {
    Q_OBJECT

 public:
    /// Longer cells are cut for display; a message may have 65,000 characters.
    static constexpr int kShownCharacters = 300;

    /// `grid` must outlive the model. `keyColumn` holds what identifies a row, -1 if nothing but all its cells does:
    /// with it, rows that left the head of the queue are removed there, so that the scroll position stays with the rows
    /// that the operator looks at.
    explicit GridModel(const Grid& grid, int keyColumn = -1, QObject* parent = nullptr);

    /// Takes over the grid's rows if they changed since the last call; otherwise costs one comparison.
    void refresh();

    /// Shows only rows that hold `text`; empty: all. Many rows are searched and sorted bit by bit, in the event loop.
    void setFilter(const QString& text);
    /// By the texts of a column; -1: as the grid's rows come.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    /// The rows as they are shown, with the whole text of each cell, of which the view shows one line.
    const std::shared_ptr<const RowSource>& rows() const { return rows_; }
    /// What identifies a row that is shown; empty for one that can't be read any more.
    QString key(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /// One line for a cell: line breaks become ⏎, tabs blanks, and long texts are cut.
    static QString singleLine(const QString& text);

 signals:
    /// Rows have moved, and too much is selected to see where to: nothing is to be selected any more.
    void lostTrack();

 private:
    void arrange(const Arrangement& arrangement);
    void beginArranging();
    void arrangeFor(int milliseconds);
    void show(std::shared_ptr<const RowSource> rows);
    void showAnew(std::shared_ptr<const RowSource> rows);
    int rowsGoneFromHead(const RowSource& newRows) const;
    QString identity(const RowSource& rows, int row) const;
    int find(const QString& wanted, const RowSource& rows, int near) const;
    QHash<int, QString> keys(const QModelIndexList& indexes) const;
    void follow(const std::shared_ptr<const RowSource>& newRows);
    void resize(int newCount);
    void updateSeenRows();
    void rememberHead() const;
    const QStringList& seenRow(int row) const;
    std::optional<Colour> rowColour(int row) const;
    QStringList readRow(const RowSource& rows, int row) const;

    const Grid& grid_;
    int keyColumn_;
    std::shared_ptr<const RowSource> rows_;
    quint64 revision_;
    int count_;
    Arrangement arrangement_;
    bool arrangedAnew_ = false;  // what is shown next has another order, not other rows
    std::optional<Arranging> arranging_;
    QTimer bitByBit_;
    QElapsedTimer arrangingSince_, arrangedSince_;
    qint64 arrangingTook_ = 0;
    mutable QHash<int, QStringList> seen_;  ///< rows that the view has asked for since the last reload
};

}  // namespace kibo
