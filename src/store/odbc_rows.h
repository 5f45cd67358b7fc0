#pragma once

#include <QSqlError>
#include <QStringList>
#include <QVariant>
#include <vector>

#include "store/query_rows.h"

namespace kibo {

/// Rows of an ODBC query, read once from the first to the last, whole rows at a time: QODBC asks the driver for each
/// cell anew and makes room for its longest value every time, which takes several times as long as the server.
class OdbcRows : public CurrentRow {
 public:
    /// `connection`: what QODBC's driver gives as its handle; must outlive the rows.
    explicit OdbcRows(const QVariant& connection);
    ~OdbcRows() override;
    OdbcRows(const OdbcRows&) = delete;
    OdbcRows& operator=(const OdbcRows&) = delete;

    /// Whether the driver manager can be called on this system, and on this connection.
    bool usable() const { return statement_ != nullptr; }
    bool exec(const QString& sql);
    /// To the next row; false behind the last one and after an error.
    bool next();
    const QSqlError& error() const { return error_; }

    int columnOf(const QString& name) const override;
    QString text(int column) const override;

 private:
    struct Column {
        std::vector<char16_t> characters;
        qptrdiff bytes = 0;  // or kNull
    };

    bool bindColumns();
    bool readWhole(int column);
    bool failed();

    void* statement_ = nullptr;
    QStringList names_;
    std::vector<Column> columns_;
    QSqlError error_;
};

}  // namespace kibo
