#pragma once

#include <QString>

#include "app/clock.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/chat_opener.h"
#include "engine/gateway_state.h"
#include "engine/locator_check.h"
#include "engine/outbox_queue.h"
#include "engine/pacing.h"
#include "engine/send_journal.h"

namespace kibo {

/// Puts the message in the fields of GatewayState (`txtid`, `txtNo`, `txtMsg2`) into its chat. The row has left the
/// queue already: whatever happens here ends as sent, or in SEND_FAIL with a reason.
///
/// The order that keeps a text out of the wrong chat: open the chat; see that the chat on the page is the one asked
/// for; type; read the box back; see that it is still the same conversation; press Enter; see the box emptied.
class MessageSender {
 public:
    MessageSender(GatewayState& state, ChatPage& page, const ElementTable& elements, Clock& clock, Pacing& pacing,
                  ChatOpener& opener, OutboxQueue& queue, SendJournal& journal, LocatorCheck& locators);

    /// Sends to a number. True when the message was seen to leave the message box.
    bool KIRIM_MODE1();

    /// Marks the current message as failed, lists it in `ms2`, and closes what is open on the page.
    void SEND_FAIL(const QString& reason);

    /// The same without touching the page: nothing was opened for this message.
    void recordFailure(const QString& reason);

 private:
    bool openChat();
    bool CEK_FAIL(const ChatLook& look);
    bool typeAndSend(QString text);
    void KETIK(QString& text);
    bool pressEnterAndConfirm();
    bool awaitChat();
    void ESC();

    GatewayState& state_;
    ChatPage& page_;
    const ElementTable& elements_;
    Clock& clock_;
    Pacing& pacing_;
    ChatOpener& opener_;
    OutboxQueue& queue_;
    SendJournal& journal_;
    LocatorCheck& locators_;

    QString number_;  // cleaned
    ChatLook chat_;   // as it was found ready
    std::shared_ptr<ListRows> unsent_;
};

/// A text as it can be typed: line breaks as line feeds, other control characters and broken surrogates left out.
QString typableText(const QString& text);

}  // namespace kibo
