#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <vector>

#include "platform/result.h"

namespace kibo {

class Database;

/// The rows of one query, with the manners of a client-side recordset: they are copied when it is opened, so nothing
/// stays pinned in the database, and it starts on the first row. Field names are compared without regard to case.
/// A copy is a recordset of its own. `update` goes through the database it came from, which must be alive by then.
class Recordset {
 public:
    enum class State { Closed, Open };

    /// In state Closed, as after a failed query.
    Recordset() = default;

    State state() const { return database_ ? State::Open : State::Closed; }
    /// Also true for a closed set, so that a loop over a failed query ends at once.
    bool eof() const { return row_ >= rows_.size(); }
    int recordCount() const { return static_cast<int>(rows_.size()); }
    void moveNext();

    /// The current row's field as text; dates as "yyyy-MM-dd HH:mm:ss". Empty for a NULL, for an unknown name and
    /// behind the last row.
    QString field(const QString& name) const;
    /// The same by position, from 0.
    QString field(int column) const;
    bool isNull(const QString& name) const;

    /// Starts a new row of the table the query named; set its fields, then update.
    void addNew();
    void set(const QString& name, const QVariant& value);
    /// Inserts the new row with the fields that were set; the others get the table's defaults. The rows read so far
    /// stay as they are. After a failure, which is the caller's to report, the new row is dropped.
    Result<void> update();
    /// Auto-increment key of the row inserted last; 0 where there is none.
    qint64 lastInsertId() const { return lastInsertId_; }

    void close() { *this = Recordset(); }

 private:
    friend class Database;

    const QString* current(const QString& name) const;

    Database* database_ = nullptr;  // not owned
    QString table_;
    QStringList fields_;
    std::vector<QStringList> rows_;  // a NULL is a null string
    size_t row_ = 0;
    QList<std::pair<QString, QVariant>> newRow_;
    qint64 lastInsertId_ = 0;
};

}  // namespace kibo
