#pragma once

#include <QStringList>
#include <optional>

#include "inbox/inbox_records.h"
#include "inbox/incoming_row.h"
#include "store/database.h"

namespace kibo {

/// The rows of received messages: table `inbox`, and in `multi` those of kind "I".
class InboxTable {
 public:
    /// Both must outlive the object.
    InboxTable(Database& database, InboxRecords& records) : database_(database), records_(records) {}

    struct Stored {
        qint64 id = 0;
        qint64 record = 0;  ///< id of its record; 0: it has none
        QStringList line;   ///< of the grid `ms`
    };
    /// Stores a message and, together with it, its record. Fails with RowRefused when the table doesn't take what it
    /// says. The caller reports a failure, having noted it.
    Result<Stored> insert(const IncomingRow& row);
    void report(const IncomingRow& row, const Failure& failure) const;
    /// How many rows say what this one does, under the chat's title or its number; nothing when that can't be said.
    std::optional<int> countLike(const IncomingRow& row);

    /// A line of the grid: number, text, time as "d/m/yy hh:mm", status.
    static QString gridTime(const QString& storedTime);

 private:
    Result<qint64> addWithRecord(const IncomingRow& row, qint64& id);
    Result<qint64> add(const IncomingRow& row);
    Recordset lineOf(const IncomingRow& row, qint64 id);
    QStringList shownLine(const IncomingRow& row, qint64 id);

    Database& database_;
    InboxRecords& records_;
};

}  // namespace kibo
