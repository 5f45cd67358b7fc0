#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/attachment_sender.h"
#include "engine/chat_target.h"
#include "engine/confirm_hold.h"
#include "engine/gateway_state.h"
#include "engine/message_files.h"
#include "engine/message_ticks.h"
#include "engine/outbox_queue.h"
#include "engine/pacing.h"
#include "engine/send_journal.h"
#include "engine/text_typer.h"
#include "engine/unsent_list.h"

namespace kibo {

/// Puts the message in the fields of GatewayState (`txtid`, `txtNo`, `txtMsg2`, `txtMedia`, `txtFile`) into its chat.
/// The row has left the queue already: whatever happens here ends as sent, in SEND_FAIL with a reason, or with an open
/// entry in the journal, which SendRecovery settles.
///
/// The order that keeps a message out of the wrong chat: open the chat; see that the chat on the page is the one asked
/// for; type; read the box back; see that it is still the same conversation; send; see that it has gone.
class MessageSender {
 public:
    /// What sending is made of; all of it must outlive the sender.
    struct Parts {
        GatewayState& state;
        const Settings& settings;
        ChatPage& page;
        Clock& clock;
        Pacing& pacing;
        ChatOpener& opener;
        ChatTarget& target;
        TextTyper& typer;
        MessageFiles& files;
        AttachmentSender& attachments;
        OutboxQueue& queue;
        SendJournal& journal;
        MessageRecords& records;
        MessageTicks& ticks;
        UnsentList& unsent;
        ConfirmHold confirmHold = {};
    };
    explicit MessageSender(Parts parts);

    /// Between the two presses of Escape that close what stands open on the page. The driver waits, not the Clock.
    static constexpr int kBetweenEscapesMs = 100;

    /// Sends to a number. True when the message was seen to go.
    bool KIRIM_MODE1();
    /// Sends to a contact or a group by its name. True when the message was seen to go.
    bool KIRIM_MODE2();

    /// Marks the current message as failed, lists it in `ms2`, and closes what is open on the page.
    void SEND_FAIL(const QString& reason);

    /// The same without touching the page: nothing was opened for this message.
    void recordFailure(const QString& reason);

    /// Whether the message stays as it is in the journal, to go back into the queue: browser or program have ended, or
    /// the profile's hold is lost.
    bool isLeftToRecovery(const QString& id) const { return leftToRecovery_ == id; }
    /// Whether it was not sent because the database didn't confirm the hold, which says nothing against the message.
    bool isUnconfirmed(const QString& id) const { return unconfirmed_ == id; }

 private:
    bool send(const std::function<Result<ChatLook>()>& openChat);
    QString textFor(const OpenChat& opened);
    QString contactName(const OpenChat& opened);
    Result<void> deliver(const ChatLook& chat, const std::vector<Attachment>& files);
    Result<void> sendFiles(const ChatLook& chat, const std::vector<Attachment>& files, const QString& caption);
    Result<void> sendText(const ChatLook& chat, const QString& text);
    Result<QString> typeText(const ChatLook& chat, const QString& text);
    bool pressEnterAndConfirm(int chatSerial);
    void noteSent(const QString& chatTitle);
    Result<void> noteInJournal(const ChatLook& chat, const QString& text, const QString& newest);
    QString destination() const;
    void leaveInDoubt(const Failure& failure);
    void leaveToOther();
    void brokenOff(const Failure& failure);
    void ESC();

    Parts p_;
    QString newestBefore_;    // id of the chat's newest message before the last one was sent
    QString newestId_;        // the same when it had gone; empty: not told
    QString lastText_;        // that the last one has in the chat
    QString unconfirmed_;     // id
    QString leftToRecovery_;  // id of the last message that was broken off before it was typed
};

}  // namespace kibo
