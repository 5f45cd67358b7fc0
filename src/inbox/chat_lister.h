#pragma once

#include "browser/chat_page.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Shows the operator which chats the page lists right now, and which number each belongs to.
class ChatLister {
 public:
    /// Both must outlive the object.
    ChatLister(GatewayState& state, ChatPage& page) : state_(state), page_(page) {}

    /// Puts the chats of the list pane into the grid `ms`, number and name, in place of the messages there, until the
    /// grid is refreshed. Stores nothing. When the page doesn't answer the grid stays as it is.
    void len2_Click();

 private:
    GatewayState& state_;
    ChatPage& page_;
};

}  // namespace kibo
