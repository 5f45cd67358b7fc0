#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/confirm_hold.h"
#include "engine/gateway_state.h"
#include "engine/send_journal.h"
#include "store/database.h"
#include "store/transaction.h"

namespace kibo {

/// Settles what another instance of this profile had taken when it lost the profile to this one: its journal may lie on
/// a computer that is gone, so `kibo_message` is all there is to go by.
///
///  - not typed: it goes back into the queue, but once only, as with a journal of one's own;
///  - typed, or anything that the tables don't tell for certain: failed as "in doubt", never put back.
///
/// An attempt is settled by whoever ends its record first, in the transaction that moves the message. The other
/// instance asks for its hold of the profile before it sends, and finds the record ended when it comes back.
class AbandonedMessages {
 public:
    /// All must outlive the object. What stands in `journal` is settled by SendRecovery.
    AbandonedMessages(const GatewayState& state, const Settings& settings, Database& database, const Clock& clock,
                      const SendJournal& journal, ConfirmHold confirmHold)
        : state_(state),
          settings_(settings),
          database_(database),
          clock_(clock),
          journal_(journal),
          confirmHold_(std::move(confirmHold)) {}

    /// Call it every second while this instance holds the profile: it looks at once after a takeover, then once a
    /// minute.
    void settle();

    static constexpr qint64 kEveryMs = 60'000;
    /// What was taken longer ago than this is not put back.
    static constexpr qint64 kPutBackWithinS = 3'600;

 private:
    struct Record {
        QVariant key, outboxId;
        bool typed = false;
        bool isNewest = false;
        bool wentBack = false;  ///< the attempt before
        QDateTime taken;
    };
    bool multi() const { return isYes(settings_.Multi); }
    bool settle(const Record& record);
    std::optional<bool> end(const Record& record, const char* result, const QString& reason);
    std::optional<bool> moveBack(const Record& record);
    std::optional<bool> changesOne(const QString& sql, const Database::Values& values);

    const GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    const Clock& clock_;
    const SendJournal& journal_;
    ConfirmHold confirmHold_;
    QString lookedAs_;  // GatewayState::instance at the last look
    qint64 lookAgainAtMs_ = 0;
};

}  // namespace kibo
