#pragma once

#include <QString>
#include <functional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/gateway.h"
#include "inbox/arrivals.h"
#include "inbox/bot_browser.h"
#include "inbox/chat_lister.h"
#include "inbox/inbox_grid.h"
#include "inbox/inbox_journal.h"
#include "inbox/inbox_media.h"
#include "inbox/inbox_reader.h"
#include "inbox/inbox_table.h"
#include "inbox/opened_chats.h"
#include "inbox/reply_hand_off.h"
#include "store/database.h"

namespace kibo {

/// The receiving half as one piece: its classes, built on each other and on the engine. What it is given must outlive
/// it.
struct Inbox {
    struct Needs {
        GatewayState& state;
        Settings& settings;
        const ElementTable& elements;
        Database& database;
        ChatPage& page;
        Clock& clock;
        RandomSource random;
        Gateway& gateway;
        QString programFolder;
        std::function<bool()> pageInUse = {};    ///< whether another screen drives the page; may be empty
        std::function<void()> BACA_PROFIL = {};  ///< refreshes the settings from the profile's row; may be empty
    };

    explicit Inbox(const Needs& needs);
    ~Inbox();
    Inbox(const Inbox&) = delete;
    Inbox& operator=(const Inbox&) = delete;

    InboxRecords records;
    InboxTable table;
    InboxJournal journal;
    StoredIds storedIds;
    OpenedChats opened;
    InboxGrid grid;
    BotBrowser botBrowser;
    ReplyHandOff handOff;
    MediaFolder mediaFolder;
    InboxMedia media;
    InboxReader reader;
    Arrivals arrivals;
    ChatLister chatLister;

 private:
    ChatPage& page_;
    ChatOpener& opener_;
};

}  // namespace kibo
