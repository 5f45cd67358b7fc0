#pragma once

#include <QHash>
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
#include "inbox/inbox_media.h"
#include "inbox/inbox_table.h"
#include "inbox/incoming_rows.h"
#include "inbox/opened_chats.h"
#include "inbox/reply_hand_off.h"
#include "inbox/stored_ids.h"
#include "inbox/unread_chat.h"

namespace kibo {

/// Reads the chat list: each chat with unread messages is opened, which takes its mark away, they become rows of the
/// inbox and go to the reply bots, oldest first, and the dummy contact's chat is opened, so that the next message in
/// that chat is marked again. On a page that gives its messages no ids only the chat's last one does, as the list shows
/// it.
///
/// A message is stored once, whatever happens on the way: its chat stands in the journal from before the click until
/// the rows follow, and these until they are stored. After a crash the page tells whether the click took place, and
/// what has an id that was stored is known.
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
        StoredIds& storedIds;
        OpenedChats& opened;
        InboxGrid& grid;
        ReplyHandOff& handOff;
        InboxMedia& media;
        std::function<bool()> pageInUse = {};    ///< whether another screen drives the page; may be empty
        std::function<void()> BACA_PROFIL = {};  ///< refreshes `settings` from the profile's row; may be empty
    };
    explicit InboxReader(Parts parts)
        : p_(std::move(parts)), rows_(p_.state, p_.settings, p_.elements, p_.clock), refused_(p_.clock) {}

    /// One pass over the chat list. Returns at once while something else goes on; a pass that reached its end counts in
    /// `readPasses`. `Timer2` is off meanwhile.
    void BACA_WA();

    /// Stores what the database refused before. To be called every now and then.
    void storeWaiting();

    /// With messages to send, a pass ends after this time, so that both directions take turns.
    static constexpr qint64 kLongestPassMs = 5'000;
    /// A chat that shows the same message on so many passes in a row doesn't lose its mark: the page is loaded anew.
    /// Met again after that, it is opened but not stored. With ids the same goes for openings that brought nothing new.
    static constexpr int kMostMeetings = 4;
    /// A row that says that somebody types is left alone for so long; then it is taken for a message.
    static constexpr qint64 kTypingMs = 60'000;

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
    bool looksIntoLost();
    std::optional<ChatListLook> readList();
    std::optional<Rows> readRows(int offset);
    bool mustGiveWay() const;
    Then readEntry(const ChatEntry& entry);
    int owedIn(const QString& title) const;
    Then openAndStore(const ChatEntry& entry, const UnreadChat& chat);
    std::optional<ChatLook> reopen(const QString& title);
    std::optional<ChatLook> awaitChat(const QString& title, const OpenChat& before);
    std::optional<UnreadMessages> readMessages(const QString& title, int count);
    Then storeMessages(quint64 key, const UnreadChat& chat, const UnreadMessages& unread, qint64 beganMs);
    std::optional<std::vector<quint64>> addRows(const UnreadChat& chat, const UnreadMessages& unread);
    Then storeRows(const QString& title, const std::vector<quint64>& keys, qint64 beganMs);
    bool everyMessage() const { return p_.settings.InboxRead != QStringLiteral("last"); }
    bool isLeftTyping(const UnreadChat& chat);
    bool readAnew(const InboxJournal::Entry& entry);
    void saveMissedMedia();
    void settle(quint64 key, const IncomingRow& row);
    std::optional<bool> isStored(const InboxJournal::Entry& entry);
    QString textBehindDraft(const QString& title, const QString& draft);
    Stored store(quint64 key);
    void storeUndoubted();
    void dropDoubtful(const UnreadChat& chat);
    void settleDoubtful();
    void recover();
    void showNotice();
    void leave();

    Parts p_;
    IncomingRows rows_;
    QString ownPicture_;
    QString lastSignature_;
    int meetings_ = 0;                    // passes in a row that met lastSignature_
    bool hasIds_ = false;                 // so had the messages that were read last
    QHash<QString, int> nothingNew_;      // by title: openings in a row that brought nothing new
    QHash<QString, qint64> typingSince_;  // by title
    QString idsProblem_;
    int scanFrom_ = 0;  // scroll position from which unread rows may be anywhere; -1: nowhere
    qint64 passBeganMs_ = 0;
    qint64 storeAgainAtMs_ = 0;
    RefusedRows<quint64> refused_;  // by the journal's key
};

}  // namespace kibo
