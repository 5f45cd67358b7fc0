#pragma once

#include <QSet>

#include "base/settings.h"
#include "browser/chat_page.h"
#include "inbox/inbox_journal.h"
#include "inbox/incoming_rows.h"
#include "inbox/opened_chats.h"
#include "inbox/stored_ids.h"

namespace kibo {

/// Receives what the chat list doesn't tell of: messages that came in while their chat was open, and those whose mark
/// went away because a message was written to their chat. They go into the journal, from where the reader stores them
/// as soon as nothing else goes on.
class Arrivals {
 public:
    /// What it works on; all of it must outlive the object.
    struct Parts {
        const GatewayState& state;
        const Settings& settings;
        const ElementTable& elements;
        ChatPage& page;
        Clock& clock;
        InboxJournal& journal;
        StoredIds& storedIds;
        OpenedChats& opened;
    };
    explicit Arrivals(Parts parts) : p_(parts), rows_(p_.state, p_.settings, p_.elements, p_.clock) {}

    /// Takes `arrived` and has the page forget it. What the journal refuses stays with the page and comes again. With
    /// `DisableRead` "Y" nothing is kept.
    void take(const QList<ArrivedMessage>& arrived);

 private:
    Parts p_;
    IncomingRows rows_;
    QSet<QString> taken_;  // keys of the last call: a page that didn't answer gives them again
};

}  // namespace kibo
