#pragma once

#include <QString>
#include <optional>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Whether the page still has the places that sending needs. A page that was changed by its makers would fail every
/// message of the queue; so once a place is missing in an open chat, its locator's name stands in
/// `GatewayState::pageChanged` and no message is taken until the places are found again.
class LocatorCheck {
 public:
    /// Both must outlive it.
    LocatorCheck(GatewayState& state, const Clock& clock) : state_(state), clock_(clock) {}

    /// The page of one tick. `ownChat`: its open chat is the one that the gateway opens between messages, so it
    /// must have a message box; a chat that a person has opened need not.
    void observe(const PageLook& look, bool ownChat);
    /// A message has failed since `locator` matched nothing; empty changes nothing.
    void missed(const QString& locator);

    bool sendingIsHeld() const { return !state_.pageChanged.isEmpty(); }
    /// Something is missing at this moment; the page may still be drawing it.
    bool doubtful() const { return missingSinceMs_.has_value(); }
    /// While sending is held: it is time to open a chat and look again.
    bool shallLookAgain();

    /// The needed locator that matches nothing in an open chat; empty when all match.
    static QString missingIn(const OpenChat& chat, bool hasBox);

 private:
    void hold(const QString& locator);
    void release(const char* why);

    GatewayState& state_;
    const Clock& clock_;
    std::optional<qint64> missingSinceMs_;
    qint64 heldSinceMs_ = 0;
    qint64 lookAgainMs_ = 0;
};

}  // namespace kibo
