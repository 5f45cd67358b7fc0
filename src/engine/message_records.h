#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "engine/send_journal.h"
#include "store/database.h"
#include "store/old_rows.h"

namespace kibo {

/// What became of each message, in the table `kibo_message`, for operators and integrators: a row for each time that a
/// message was taken, begun in the transaction that takes it and completed when it has ended. It stands beside the
/// sent log, never in its place. A store that has no such table, or refuses the row, costs the record and nothing else.
class MessageRecords {
 public:
    /// All must outlive the object.
    MessageRecords(const GatewayState& state, const Settings& settings, Database& database, const Clock& clock,
                   const SendJournal& journal)
        : state_(state),
          settings_(settings),
          database_(database),
          clock_(clock),
          journal_(journal),
          oldRows_(settings, database, clock, QStringLiteral("kibo_message"), QStringLiteral("taken")) {}

    /// Whether the table is kept at the moment; one that refused is tried again after a minute.
    bool areKept() const { return clock_.monotonicMs() >= keptAgainMs_; }
    /// Begins the row of a message, inside the transaction that takes it. After a failure that transaction is of no
    /// more use.
    Result<void> taken(const QString& id);

    /// Moments of the message in hand.
    void typed(const QString& id);
    /// `pageId`: the page's own id of the message; empty where the page didn't tell.
    void sent(const QString& id, const QString& pageId);

    struct End {
        const char* result;  ///< kSent …
        QString reasonCode = {};
        QString reason = {};
    };
    static constexpr const char *kSent = "sent", *kFail = "fail", *kInDoubt = "in doubt", *kPutBack = "put back";
    /// Completes the row. False when the store is away or refuses what it took before: it has to be tried again, which
    /// is done once a minute, for an hour.
    bool ended(const QString& id, const End& end);
    /// Whether the attempt that the journal knows of this message has been ended by another instance, which had taken
    /// over the profile; nothing when the store can't tell.
    std::optional<bool> endedElsewhere(const QString& id);
    /// The attempt to send the message in hand, as its row names it; empty where it has no row, or one without a name.
    QString begunAttempt(const QString& id) const;
    /// Ends the row of a message that goes back into the queue, inside the transaction that moves it. False when
    /// another instance has ended it: then the message is his. True also where there is no row.
    Result<bool> claimBack(const QString& id);
    /// Whether that has to wait still.
    bool isOwed(const QString& id) const { return !areKept() && owed_.contains(id); }

    /// See OldRows.
    void removeOld();

 private:
    struct Moments {
        QString id;
        qint64 takenMs = 0;
        QDateTime typed, sent;
        QString pageId;
        bool begun = false;  // its row, which has to be completed
    };

    bool multi() const { return isYes(settings_.Multi); }
    QString source() const { return multi() ? QStringLiteral("multi") : QStringLiteral("outbox"); }
    Result<void> complete(const QString& id, const End& end);
    QString attemptAt(const QString& id) const;
    void leaveOff(const Failure& failure);

    const GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    const Clock& clock_;
    const SendJournal& journal_;
    OldRows oldRows_;
    Moments current_;            // of the message that was taken last
    QHash<QString, int> owed_;   // rows that could not be completed, and how often that was tried
    bool tableIsThere_ = false;  // a row was begun there and can be completed
    qint64 keptAgainMs_ = 0;
};

/// A fixed code for a failure's words, which programs can rely on; "other" for words that none stands for.
QString reasonCode(const QString& words);

}  // namespace kibo
