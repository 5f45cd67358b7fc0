#pragma once

#include <functional>
#include <optional>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"
#include "engine/message_ticks.h"
#include "engine/reading_check.h"

namespace kibo {

/// Starts the inbox reader when the chat list has changed, and keeps the profile in the browser window's title.
class ChatListWatch {
 public:
    /// `ticks` and `reading` hear what the list shows of them. `BACA_WA` makes a pass over the chat list and counts it
    /// in `readPasses`; it may be empty.
    ChatListWatch(GatewayState& state, ChatPage& page, Clock& clock, MessageTicks& ticks, ReadingCheck& reading,
                  std::function<void()> BACA_WA);

    void Timer2_Timer();

 private:
    /// A reader that couldn't begin, say with the database away, or not finish is asked again after this time.
    static constexpr qint64 kRetryMs = 2'000;
    static constexpr qint64 kMeetAgainMs = 10'000;

    GatewayState& state_;
    ChatPage& page_;
    Clock& clock_;
    MessageTicks& ticks_;
    ReadingCheck& reading_;
    std::function<void()> BACA_WA_;
    std::optional<QString> handled_;  // the unread rows that the last pass began with
    qint64 handledAtMs_ = 0;          // when that pass ended
    qint64 refusedAtMs_ = -kRetryMs;  // the reader could not begin
};

}  // namespace kibo
