#pragma once

#include <QStringList>
#include <optional>

#include "inbox/incoming_row.h"
#include "store/database.h"

namespace kibo {

/// The rows of received messages: table `inbox`, and in `multi` those of kind "I".
class InboxTable {
 public:
    explicit InboxTable(Database& database) : database_(database) {}

    /// Stores a message and gives its line of the grid `ms`. Fails with RowRefused when the table doesn't take what it
    /// says. The caller reports a failure, having noted it.
    Result<QStringList> insert(const IncomingRow& row);
    void report(const IncomingRow& row, const Failure& failure) const;
    /// How many rows say what this one does, under the chat's title or its number; nothing when that can't be said.
    std::optional<int> countLike(const IncomingRow& row);

    /// A line of the grid: number, text, time as "d/m/yy hh:mm", status.
    static QString gridTime(const QString& storedTime);

 private:
    Database& database_;
};

}  // namespace kibo
