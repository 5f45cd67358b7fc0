#pragma once

#include <QStringList>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "engine/outbox_queue.h"
#include "store/database.h"

namespace kibo {

/// Says why a message of the queue has not left yet, in sentences: what its row says of it first, then what holds up
/// all. Empty sentences are left out; there is always one.
class WaitingReason {
 public:
    /// All must outlive the object.
    WaitingReason(const GatewayState& state, const Settings& settings, Database& database, const OutboxQueue& queue,
                  const Clock& clock)
        : state_(state), settings_(settings), database_(database), queue_(queue), clock_(clock) {}

    QStringList of(qint64 id) const;

 private:
    QString ofRow(qint64 id) const;
    QString ofPlace(qint64 id) const;
    bool multi() const { return isYes(settings_.Multi); }

    const GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    const OutboxQueue& queue_;
    const Clock& clock_;
};

}  // namespace kibo
