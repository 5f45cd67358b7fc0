#pragma once

#include <functional>

#include "browser/chat_page.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Starts the inbox reader when the chat list has changed, and keeps the profile in the browser window's title.
class ChatListWatch {
 public:
    /// `BACA_WA` reads the inbox; it may be empty.
    ChatListWatch(GatewayState& state, ChatPage& page, std::function<void()> BACA_WA);

    void Timer2_Timer();

 private:
    GatewayState& state_;
    ChatPage& page_;
    std::function<void()> BACA_WA_;
};

}  // namespace kibo
