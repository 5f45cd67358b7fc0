#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/chat_opener.h"
#include "engine/gateway_state.h"
#include "engine/message_ticks.h"
#include "engine/pacing.h"
#include "engine/reading_check.h"
#include "engine/refused_rows.h"
#include "inbox/inbox_grid.h"
#include "inbox/inbox_journal.h"
#include "inbox/inbox_table.h"
#include "inbox/reply_hand_off.h"
#include "inbox/unread_chat.h"

namespace kibo {

/// Reads the chat list: each chat with unread messages is opened, which takes its mark away, its last message becomes a
/// row of the inbox and goes to the reply bots, and the dummy contact's chat is opened, so that the next message in
/// that chat is marked again.
///
/// A message is stored once, whatever happens on the way: it stands in the journal from before the click until its row
/// is there. After a crash the page tells whether the click took place.
class InboxReader {
 public:
    /// What the reader works on; all of it must outlive it.
    struct Parts {
        GatewayState& state;
        const Settings& settings;
        const ElementTable& elements;
        ChatPage& page;
        Clock& clock;
        Pacing& pacing;
        ChatOpener& opener;
        MessageTicks& ticks;
        ReadingCheck& reading;
        InboxTable& table;
        InboxJournal& journal;
        InboxGrid& grid;
        ReplyHandOff& handOff;
        std::function<bool()> pageInUse = {};    ///< whether another screen drives the page; may be empty
        std::function<void()> BACA_PROFIL = {};  ///< refreshes `settings` from the profile's row; may be empty
    };
    explicit InboxReader(Parts parts) : p_(std::move(parts)), refused_(p_.clock) {}

    /// One pass over the chat list. Returns at once while something else goes on; a pass that reached its end counts in
    /// `readPasses`. `Timer2` is off meanwhile.
    void BACA_WA();

    /// Stores what the database refused before. To be called every now and then.
    void storeWaiting();

    /// With messages to send, a pass ends after this time, so that both directions take turns.
    static constexpr qint64 kLongestPassMs = 5'000;
    /// A chat that shows the same message on so many passes in a row doesn't lose its mark: the page is loaded anew.
    /// Met again after that, it is opened but not stored.
    static constexpr int kMostMeetings = 4;

 private:
    enum class Then { GoOn, EndPass };
    enum class Stored {
        Yes,
        Refused,  ///< the table doesn't take what this message says
        NotNow    ///< the database is away or takes nothing
    };
    struct Rows {
        ChatListLook look;
        bool anyUnread;
    };

    bool mayRead();
    std::optional<ChatListLook> readList();
    std::optional<Rows> readRows(int offset);
    bool mustGiveWay() const;
    Then readEntry(const ChatEntry& entry);
    Then openAndStore(const ChatEntry& entry, const UnreadChat& chat);
    std::optional<ChatLook> awaitChat(const QString& title, const OpenChat& before);
    QString numberOf(const UnreadChat& chat, const std::optional<ChatLook>& look) const;
    QString textBehindDraft(const QString& title, const QString& draft);
    Stored store(quint64 key);
    void storeUndoubted();
    void dropDoubtful(const UnreadChat& chat);
    void settleDoubtful();
    void recover();
    void showNotice();
    void leave();

    Parts p_;
    QString ownPicture_;
    QString lastSignature_;
    int meetings_ = 0;  // passes in a row that met lastSignature_
    int scanFrom_ = 0;  // scroll position from which unread rows may be anywhere; -1: nowhere
    qint64 passBeganMs_ = 0;
    qint64 storeAgainAtMs_ = 0;
    RefusedRows<quint64> refused_;  // by the journal's key
};

}  // namespace kibo
