#pragma once

#include <QAbstractTableModel>
#include <QHash>
#include <memory>
#include <optional>

#include "base/controls.h"

namespace kibo {

/// Shows a Grid of the state to a view. Rows are read from their source when the view asks for them, so a queue
/// of 100,000 messages costs what is on the screen. A reload with the same content changes nothing in the view.
class GridModel : public QAbstractTableModel {
    Q_OBJECT

 public:
    /// Longer cells are cut for display; a message may have 65,000 characters.
    static constexpr int kShownCharacters = 300;

    /// `grid` must outlive the model. `keyColumn` holds what identifies a row, -1 if nothing does: with it, rows
    /// that left the head of the queue are removed there, so that selection and scroll position stay with the
    /// rows that the operator looks at.
    explicit GridModel(const Grid& grid, int keyColumn = -1, QObject* parent = nullptr);

    /// Takes over the grid's rows if they changed since the last call; otherwise costs one comparison.
    void refresh();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /// One line for a cell: line breaks become ⏎, tabs blanks, and long texts are cut.
    static QString singleLine(const QString& text);

 private:
    int rowsGoneFromHead(const RowSource& newRows) const;
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
    mutable QHash<int, QStringList> seen_;  ///< rows that the view has asked for since the last reload
};

}  // namespace kibo
