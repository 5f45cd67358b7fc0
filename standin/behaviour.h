#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "platform/result.h"

namespace kibo::standin {

/// Milliseconds, drawn uniformly from [min, max] for every use.
struct DelayRange {
    int min = 0;
    int max = 0;
};

/// How the page behaves. Member names are the keys of the control interface; docs/stand-in.md explains each for
/// people. Members named "…Ms" are milliseconds. Counters say how many more times a disturbance happens: the page
/// counts them down, and a reload doesn't bring spent ones back.
struct Behaviour {
    // Login
    bool loggedIn = true;
    bool qrExpired = false;      ///< the code is greyed out under a reload button, which sets this back to false
    int qrFirstMs = 60000;       ///< life of the first code
    int qrNextMs = 20000;        ///< life of each further code
    int qrCodes = 6;             ///< codes shown before the holder expires by itself
    int readyDelayMs = 300;      ///< from page load or login until the application is there
    bool openElsewhere = false;  ///< "open in another window" in place of the chats; its "Use here" sets this back
    int errorPage = 0;           ///< counter: page loads that are answered with a server's error
    std::string ownNumber = "6281100000000";

    // Opening a chat
    DelayRange chatOpenDelayMs = {200, 600};
    bool startingPopup = true;  ///< "Starting chat" while an opening takes longer than startingPopupMs
    int startingPopupMs = 250;
    std::vector<std::string> unknownNumbers;  ///< digits; these get the notice instead of a chat
    std::string unknownPrefix;                ///< numbers that begin with it are unknown too; empty: none
    std::string unknownText = "new";          ///< wording of the notice: "new" or "old"
    int noticeDelayMs = 400;
    bool reuseConversation = false;  ///< the conversation element stays and only its content changes
    int contentLagMs = 80;           ///< with reuseConversation: content and message box follow the title this late
    int reloadAfterOpen = 0;         ///< counter: openings in whose middle the page reloads

    // What the page shows
    std::string language = "en";       ///< of twelve, or "browser": the one that the browser asks for
    bool testIds = true;               ///< elements bear data-testid
    bool labels = true;                ///< elements bear labels that nobody sees
    std::string banner;                ///< connection banner; empty: none
    bool emptyBannerSlot = false;      ///< an empty banner element stands there while there is no banner
    bool updateNotice = false;         ///< the banner slot offers "Refresh", which reloads the page
    bool pictureNumber = false;        ///< picture addresses carry "&u=<number>%40c.us"
    std::string messageIds = "phone";  ///< ids of messages name the chat's "phone" number, a "lid", or there are "none"
    std::string entryRole = "row";     ///< role of chat-list entries: "row" or "listitem"
    bool entryPreviews = true;         ///< chat-list entries show the newest message
    bool wholeList = false;            ///< all entries of the chat list exist, not only those near the ones in sight
    bool extraRows = false;            ///< rows that are no chats: notice, filters, archive
    bool ornateEntries = false;        ///< entries draw emoji as pictures and put direction marks around previews
    std::string mediaStyle = "held";  ///< what of a received file the page has, and what saves it; see docs/stand-in.md
    int mediaDelayMs = 0;             ///< from asking for a received file until the page has it
    int stickyBadges = 0;             ///< counter: openings that leave the chat's unread mark
    int searchDelayMs = 150;          ///< from a change in the search box until the list shows its results

    // Typing and sending
    bool renameBox = false;   ///< the message box is no element the usual locator matches
    int editDelayMs = 0;      ///< from an edit until the box shows it; 0: the next task
    int loseEdits = 0;        ///< counter: texts inserted or pasted that the box doesn't take; single keys it does
    bool hastyEnter = false;  ///< Enter sends what the box shows, before edits that are still under way
    int swallowEnter = 0;     ///< counter: presses of Enter that do nothing
    int sendDelayMs = 0;      ///< from Enter until the box is empty and the message is in the chat
    bool acknowledgedSend =
        false;  ///< the box empties when the server has the text, so that killing the page loses none
    int linkPreviewDelayMs = 1000;     ///< until the preview of an address in the text is there
    int previewDelayMs = 150;          ///< from choosing a file until its preview is there
    int uploadDelayMs = 150;           ///< from sending a file until its preview is gone
    int losePreview = 0;               ///< counter: chosen files whose preview never comes
    int dropPreview = 0;               ///< counter: previews that close when they are sent, with nothing sent
    int ackDelayMs = 150;              ///< between one tick on a sent message and the others that it gets by itself
    int ownTicks = 2;                  ///< so many, up to 3; 1: nothing is delivered
    std::string tickStyle = "colour";  ///< names of the icons: "ack", "colour" or "title"

    // Disturbances
    int loseFocus = 0;  ///< counter: the search box takes the focus right after the message box got it
    int strayTab = 0;   ///< counter: clicks that open an extra tab
    int frozenMs = 0;   ///< the page hangs once for this long, then this is 0 again
};

/// All keys with their values.
nlohmann::json toJson(const Behaviour& behaviour);

/// Changes the keys that `update` (a JSON object) names. All or nothing: an unknown key or an unfit value is an
/// InvalidArgument that names it, and `behaviour` stays as it was.
Result<void> applyUpdate(Behaviour& behaviour, const nlohmann::json& update);

/// Counts `key` down after the page used it up once; switches that reset themselves (qrExpired, frozenMs) go back.
/// False when `key` is nothing that is used up.
bool spend(Behaviour& behaviour, const std::string& key);

}  // namespace kibo::standin
