#pragma once

#include <QString>
#include <optional>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Whether the chat list can still be read, as `LocatorCheck` does it for sending. Once it can't, the locator that is
/// to blame stands in `GatewayState::readingChanged`, and unread chats stay as they are until the list is readable
/// again; messages are sent meanwhile.
class ReadingCheck {
 public:
    /// Both must outlive it.
    ReadingCheck(GatewayState& state, const Clock& clock) : state_(state), clock_(clock) {}

    void observe(const ListSigns& signs);
    /// A row without a mark keeps its last line, a number, however often its chat was opened: that counts nothing.
    void staysUnread();

    bool readingIsHeld() const { return !state_.readingChanged.isEmpty(); }

 private:
    void hold(const QString& locator, const char* why);
    void release();

    GatewayState& state_;
    const Clock& clock_;
    QString missing_;  // what the last signs lack
    std::optional<qint64> missingSinceMs_;
};

}  // namespace kibo
