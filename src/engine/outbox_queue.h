#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "engine/message_records.h"
#include "engine/refused_rows.h"
#include "engine/send_journal.h"
#include "store/database.h"

namespace kibo {

/// The fixed texts of the queue's statements; "?" stands for a bound value.
namespace queue_sql {

/// Which rows are due, and how many; `values` are to be bound in order.
struct Selection {
    QString rows;
    QString count;
    QStringList values;
};
/// `mostRows`: 0 for no limit.
Selection selection(bool scheduled, bool multi, const QString& profile, const QString& now, int mostRows);
constexpr int kLimit = 10;  // of `LimitSelect`

}  // namespace queue_sql

/// The queue of due messages: loads it into the grid `ms_out`, and moves a message from the queue to the sent log
/// before it is typed. In multi-session mode both live in the table `multi`, keyed by the profile.
class OutboxQueue {
 public:
    /// `settings` is changed in one place: on the local store, which has no schedule, `Scheduled` becomes "N".
    OutboxQueue(GatewayState& state, Settings& settings, Database& database, Clock& clock, MessageRecords& records);

    /// Column numbers of the grid `ms_out`.
    enum Column { Mode, Number, Text, Media, File, Time, Id };

    /// Loads the due rows, lowest id first, and shows their count. A lost connection shows `dboff`.
    void cmd_OutboxRefresh_Click();

    /// How many messages are due, also beyond those that were loaded.
    qint64 dueCount() const { return dueCount_; }
    /// When the next row falls due that is scheduled for later; none without such a row. Asked of the store every
    /// few seconds only.
    std::optional<QDateTime> nextDue();

    /// Whether a message is loaded that isn't left alone for a while since the sent log refused it.
    bool hasNext() { return nextIndex() > 0; }
    /// The next message with its stored text; empty optional when there is none, or its row is gone or can't be read.
    std::optional<QueuedRow> nextRow();

    enum class Taken {
        Yes,
        No,       ///< untouched: the row was withdrawn, given to another profile or changed since it was loaded
        Refused,  ///< the sent log doesn't take what this row holds: it is left alone for a while
        Unknown   ///< the database refused or broke off: only a look at the tables tells what it did
    };
    /// Moves a message out of the queue, in one transaction: where the store keeps transactions it stands in the sent
    /// log or still in the queue, never in both and never in neither. Only as it was loaded: a row that somebody has
    /// corrected or held since then stays where it is.
    Taken take(const QueuedRow& loaded);
    /// Whether the last attempt to take a message ended unknown, and it was this one: nothing was typed of it then.
    bool takeIsUnknown(const QString& id) const { return unknownTake_ == id; }
    /// Keeps a row in the queue from being sent, as other programs do. False when the store refuses.
    bool hold(const QString& id);
    /// How many messages are left alone for a while, being refused.
    int refusedCount() const { return refused_.count(); }
    /// Why the sent log refuses a message, as a sentence; empty when it doesn't.
    QString whyRefused(qint64 id) const;

    /// Marks the sent copy of a message as failed, and notes why. False when the store refuses at the moment.
    bool markFailed(const QString& id, const QString& reason);

    /// Where a message stands; nothing when the store can't tell.
    struct Place {
        bool queued = false;
        bool copied = false;
    };
    std::optional<Place> find(const QString& id);
    /// Takes back the copy of a message that still stands in the queue. True also where the sent log keeps it: trying
    /// again would change nothing.
    bool removeCopy(const QueuedRow& row);
    /// Moves a message that was taken and not typed back from the sent log, in one transaction. False when it was not
    /// seen to move.
    bool putBack(const QueuedRow& row);
    /// Puts a message that stands nowhere any more into the sent log. True also where the sent log doesn't take what
    /// the row holds, which the log then tells: trying again would change nothing.
    bool addCopy(const QueuedRow& row, const QString& status);

    /// What the store said when it last failed.
    QString storeProblem() const { return database_.problem(); }
    /// The store and the table that ids belong to.
    QString storeIdentity() const;

 private:
    void showCount(const QString& sql, const Database::Values& values, int mostRows);
    Result<qint64> deleteCopy(const QueuedRow& row);
    bool multi() const { return isYes(settings_.Multi); }
    QString profile() const { return state_.cb_Profil.text; }
    int nextIndex();
    std::optional<QueuedRow> lockedRow(qint64 id);
    std::optional<Taken> take(const QueuedRow& loaded, bool recorded);
    Taken notTaken(const QString& id, const QString& sql, const Failure& failure);
    void showRefused();

    GatewayState& state_;
    Settings& settings_;
    Database& database_;
    Clock& clock_;
    MessageRecords& records_;
    qint64 dueCount_ = 0;
    QString counted_;  // what `dueCount_` counts
    qint64 countAgainMs_ = 0;
    QString unknownTake_;  // id
    QString loadedMark_;   // the store's change mark when the rows were loaded; empty: not known
    std::optional<QDateTime> nextDue_;
    qint64 askNextDueMs_ = 0;
    RefusedRows<qint64> refused_;  // by id
};

}  // namespace kibo
