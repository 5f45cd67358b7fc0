#pragma once

#include "base/clock.h"
#include "base/settings.h"
#include "inbox/incoming_row.h"
#include "platform/result.h"
#include "store/database.h"
#include "store/old_rows.h"

namespace kibo {

/// What the page tells of received messages beyond their rows, in the table `kibo_inbox`, for programs that go through
/// the inbox: a row for each row of `inbox`, or of kind "I" in `multi`. A store that has no such table, or refuses the
/// row, costs the record and nothing else.
class InboxRecords {
 public:
    /// All must outlive the object.
    InboxRecords(const Settings& settings, Database& database, const Clock& clock)
        : database_(database),
          clock_(clock),
          oldRows_(settings, database, clock, QStringLiteral("kibo_inbox"), QStringLiteral("stored")) {}

    /// Whether the table is kept at the moment; one that refused is tried again after a minute.
    bool areKept() const { return clock_.monotonicMs() >= keptAgainMs_; }
    /// Writes the record of the row `rowId`, inside the transaction that stores it, and gives its id. After a failure
    /// that transaction is of no more use.
    Result<qint64> add(const IncomingRow& row, qint64 rowId);
    /// Where the message's picture, video … was saved.
    void setFile(qint64 record, const QString& file);

    /// See OldRows.
    void removeOld();

 private:
    Database& database_;
    const Clock& clock_;
    OldRows oldRows_;
    bool tableIsThere_ = false;
    bool told_ = false;  // that it refuses
    qint64 keptAgainMs_ = 0;
};

}  // namespace kibo
