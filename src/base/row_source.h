#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace kibo {

/// The data rows of a grid, read when they are asked for: a grid of 100,000 queued messages shows the few
/// rows that fit on the screen. Rows and columns count from 0; the header is not a row here.
class RowSource {
 public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    virtual int rowCount() const = 0;
    /// Empty for a NULL, and for a row that can no longer be read.
    virtual QString text(int row, int column) const = 0;
    /// The first `columns` cells of a row, for those who take all of them; at least as many, where it has them.
    virtual QStringList cells(int row, int columns) const {
        QStringList cells;
        cells.reserve(columns);
        for (int column = 0; column < columns; ++column) cells.append(text(row, column));
        return cells;
    }
    /// Whether rows can't be read any more that could be before: what shows them has to get new ones.
    virtual bool hasEnded() const { return false; }
};

/// Rows held in memory.
class ListRows : public RowSource {
 public:
    void append(QStringList row) { rows_.push_back(std::move(row)); }

    int rowCount() const override { return static_cast<int>(rows_.size()); }
    QString text(int row, int column) const override {
        return row >= 0 && row < rowCount() ? rows_[static_cast<size_t>(row)].value(column) : QString();
    }

 private:
    std::vector<QStringList> rows_;
};

}  // namespace kibo
