#pragma once

#include <QString>
#include <functional>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/chat_opener.h"
#include "engine/chat_search.h"
#include "engine/gateway_state.h"
#include "engine/locator_check.h"
#include "engine/message_ticks.h"
#include "engine/pacing.h"
#include "platform/result.h"

namespace kibo {

/// Brings the chat that a message goes to onto the page and makes sure that it is that chat: opened, recognised, its
/// message box ready for typing. Failures' texts are reasons for the operator.
class ChatTarget {
 public:
    ChatTarget(const GatewayState& state, ChatPage& page, const ElementTable& elements, Clock& clock, Pacing& pacing,
               ChatOpener& opener, LocatorCheck& locators, MessageTicks& ticks);

    /// Whether a message of this `wa_mode` is addressed by its chat's name; the modes "0" and "9" go by what it looks
    /// like.
    static bool isByName(const QString& mode, const QString& destination);

    /// The chat of a number, through the planted link.
    Result<ChatLook> openNumber(const QString& number);
    /// The chat, of a contact or a group, with this title, through the page's search.
    Result<ChatLook> openName(const QString& name);

 private:
    /// `number`: whose chat it is, cleaned; empty when it was opened by name.
    Result<ChatLook> awaitChat(const QString& number, const std::function<bool()>& isOpen);
    bool CEK_FAIL(const ChatLook& look, const QString& number, bool isOpen);

    const GatewayState& state_;
    ChatPage& page_;
    const ElementTable& elements_;
    Clock& clock_;
    Pacing& pacing_;
    ChatOpener& opener_;
    LocatorCheck& locators_;
    MessageTicks& ticks_;
    ChatSearch search_;
};

}  // namespace kibo
