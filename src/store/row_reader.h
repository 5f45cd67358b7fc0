#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <vector>

namespace kibo {

/// The rows of one statement, read once from the first to the last, straight from the store's own interface: Qt's
/// makes a value of its own of every cell, which takes several times as long as the store takes to find it. It stands
/// at one row at a time, before the first one at the beginning.
class RowReader {
 public:
    RowReader() = default;
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;
    virtual ~RowReader() = default;

    /// To the next row; false behind the last one and after an error.
    virtual bool next() = 0;
    /// A cell of the row in valid UTF-8, dates as "yyyy-MM-dd HH:mm:ss"; null for a NULL, not for an empty text. It
    /// stays until the next row is read.
    virtual QByteArrayView cell(int column) const = 0;

    /// The same as a whole number, 0 for what is none.
    virtual qint64 number(int column) const { return cell(column).toLongLong(); }
    /// The same as a text, null for a NULL and for a column that isn't there.
    QString text(int column) const;
    QStringList row() const;
    const QStringList& names() const { return names_; }
    int columnCount() const { return static_cast<int>(names_.size()); }
    /// By name, without regard to case; -1 where there is none.
    int columnOf(const QString& name) const;
    /// What the statement or the last step failed with.
    const QSqlError& error() const { return error_; }

 protected:
    void setColumns(const QStringList& names);
    /// `bytes` where they are valid UTF-8, otherwise what can be read of them.
    QByteArrayView readable(QByteArrayView bytes, int column) const;
    /// Keeps the bytes of a cell until the next one of its column.
    QByteArrayView kept(QByteArray bytes, int column) const;

    QSqlError error_;

 private:
    QStringList names_;
    mutable std::vector<QByteArray> kept_;  // of each column
};

/// Rows to go to and fro in.
class CursorReader : public RowReader {
 public:
    /// To a row, counted from 0; quickest from each to the next. False where there is none.
    virtual bool seek(int row) = 0;
    /// -1 where the driver doesn't know.
    virtual int rowCount() const = 0;
};

/// Rows of a query that Qt runs: of an Access file.
class QueryReader : public CursorReader {
 public:
    /// `query` has been executed.
    explicit QueryReader(QSqlQuery query);

    bool next() override;
    QByteArrayView cell(int column) const override;
    bool seek(int row) override { return query_.seek(row); }
    int rowCount() const override { return query_.numRowsAffected(); }

 private:
    QSqlQuery query_;
};

}  // namespace kibo
