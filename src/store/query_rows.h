#pragma once

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>
#include <map>
#include <memory>

#include "base/row_source.h"
#include "store/row_reader.h"
#include "store/sqlite_reader.h"

namespace kibo {

/// Sets how much of a SQLite file one connection keeps in memory: half a megabyte, a quarter of SQLite's own choice.
/// What is read again and again, the indexes and the newest rows, has room in it; the rest is in the system's cache.
inline const QString kSqliteCache = QStringLiteral("PRAGMA cache_size=-512");

/// One field of the current row as text: dates as "yyyy-MM-dd HH:mm:ss", a NULL as a null string and an empty text as
/// one that is not null.
QString fieldText(const QSqlQuery& query, int column);

/// The first `columns` fields of the current row.
QStringList rowText(const QSqlQuery& query, int columns);

/// Rows that are read from a connection when they are asked for.
class QueryRows : public RowSource {
 public:
    /// Lets go of the connection; every row is empty from then on.
    virtual void detach() = 0;
};

/// Rows of a scrollable ODBC cursor: the driver holds the result on this side, so the connection is free for
/// other statements.
class CursorRows : public QueryRows {
 public:
    CursorRows(std::unique_ptr<CursorReader> reader, int rowCount) : reader_(std::move(reader)), rowCount_(rowCount) {}

    int rowCount() const override { return rowCount_; }
    QString text(int row, int column) const override {
        return reader_ && row >= 0 && reader_->seek(row) ? reader_->text(column) : QString();
    }
    void detach() override { reader_.reset(); }
    bool hasEnded() const override { return !reader_; }

 private:
    std::unique_ptr<CursorReader> reader_;
    int rowCount_;
};

/// Rows of a SQLite query, read page by page over a read-only connection of their own. It stays inside one read
/// transaction, so all pages are of one moment whatever is written meanwhile, and the connection that writes is
/// never held to an old state. As long as the rows live, the write-ahead log can't start over: they have to be detached
/// now and then.
class SnapshotRows : public QueryRows {
 public:
    /// `uri` is QSQLITE's database name, `sql` a select without limit. Check `error` before use.
    SnapshotRows(const QString& uri, const QString& sql, const QVariantList& values);
    ~SnapshotRows() override;

    const QSqlError& error() const { return error_; }
    int rowCount() const override { return rowCount_; }
    QString text(int row, int column) const override { return cells(row, 0).value(column); }
    QStringList cells(int row, int columns) const override;
    void detach() override;
    bool hasEnded() const override { return name_.isEmpty(); }

 private:
    using Page = std::vector<QStringList>;

    const Page& page(int number) const;
    Page read(int number) const;

    QString name_;
    QString sql_;
    QVariantList values_;
    QSqlError error_;
    int rowCount_ = 0;
    mutable std::map<int, Page> pages_;
    mutable const Page* last_ = nullptr;  // that was asked for, number lastNumber_
    mutable int lastNumber_ = 0;
    mutable std::unique_ptr<SqliteReader> running_;  // goes on to the end while pages are read one after another
    mutable int nextPage_ = -1;                      // the one after the page read last
    mutable bool runs_ = false;                      // running_ stands before nextPage_
};

}  // namespace kibo
