#pragma once

#include <QString>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "engine/pacing.h"
#include "platform/result.h"

namespace kibo {

/// Finds a chat by its title in the page's search box. The results come some time after the text, section by section,
/// so they count only when they have been at rest for a while.
class ChatSearch {
 public:
    ChatSearch(ChatPage& page, Clock& clock, Pacing& pacing);

    /// The title, as the list spells it, of the one chat that is called `name` (see sameTitle). The search box keeps
    /// the name, so that the chat's entry can be clicked: call `leave` afterwards, also after a failure. The failure's
    /// text is for the operator.
    Result<QString> find(const QString& name);

    /// Empties the search box.
    void leave();

 private:
    ChatPage& page_;
    Clock& clock_;
    Pacing& pacing_;
};

}  // namespace kibo
