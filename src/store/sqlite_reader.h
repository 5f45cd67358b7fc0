#pragma once

#include <QSqlDatabase>
#include <QVariant>

#include "store/row_reader.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kibo {

/// Rows of a statement on a SQLite file. Goes before its connection is closed.
class SqliteReader : public RowReader {
 public:
    /// `values` are texts, numbers or NULLs. Check `error` before use.
    SqliteReader(const QSqlDatabase& connection, const QString& sql, const QVariantList& values);
    ~SqliteReader() override;

    bool next() override;
    QByteArrayView cell(int column) const override;
    qint64 number(int column) const override;

 private:
    /// Takes over what SQLite says; always false.
    bool failed(int code);
    bool bind(const QVariantList& values);

    sqlite3* connection_ = nullptr;
    sqlite3_stmt* statement_ = nullptr;
};

}  // namespace kibo
