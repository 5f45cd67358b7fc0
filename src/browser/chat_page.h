#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace kibo {

/// The conversation that the page shows.
struct OpenChat {
    /// Counts the conversations that came up since the page was loaded: another number is another conversation.
    /// 0 when the page has not shown one yet.
    int serial = 0;
    bool open = false;
    QString title;          ///< the contact's name, or the number as the page formats it
    QString number;         ///< digits that the open chat's own messages or picture name; empty when nothing names them
    QString lastMessageId;  ///< of the newest message; empty when the chat shows none, or none with an id
    /// Some of its messages wait to be taken, see `PageLook::arrived`; the newest one above them, if there is any.
    bool untaken = false;
    QString takenId;
    bool othersUntaken = false;  ///< messages wait to be taken, perhaps of other chats
    /// Titles of the newest conversations that came up, this one included, oldest first.
    QStringList titles;
    /// How often the planted link was clicked since the page was loaded, and the newest addresses, oldest first.
    int clicks = 0;
    QStringList clicked;
    /// Clicks of a person in the page since it was loaded: they may have opened a chat.
    int personClicks = 0;
};

/// A message of somebody else, as the open chat shows it.
struct ArrivedMessage {
    QString key;                ///< unlike that of any other message
    QString title;              ///< of its chat
    QString messageId, chatId;  ///< as the page names them; empty on a page that doesn't
    QString number;
    QString headerPicture;  ///< address of the chat's picture; empty when there is none
    bool inGroup = false;
    QString sender;  ///< in a group: who wrote, if that is known
    QString kind;    ///< "text", "photo", "voice" …; empty where only the list tells of the message
    QString text;    ///< whole, with its line breaks; of other kinds their name in brackets, and the caption
    QString time;    ///< the message's own, "yyyy-MM-dd HH:mm"; empty where the page doesn't tell
    int ageMs = 0;
    /// On a page without ids, for one whose mark the opening of its chat took away: the chat's row as it was before.
    QStringList lines;
    QString badge;
};

/// A chat that was open on a page which has gone.
struct LostChat {
    QString title;
    QString takenId;        ///< what stands below this message came in since; empty: what came in since it was opened
    qint64 openedAtMs = 0;  ///< since 1970
};

/// What was known before the page was loaded.
struct KnownMessages {
    QStringList storedIds;   ///< of the messages that were stored last, oldest first
    QList<LostChat> opened;  ///< where something may have come in that nobody was told of
};

/// The unread messages of a chat that was opened to read them.
struct UnreadMessages {
    bool hasIds = false;             ///< false: the page gives its messages no ids, and the newest one is told at most
    QList<ArrivedMessage> messages;  ///< oldest first
};

/// How far the saving of what a message carries has got.
struct MediaStep {
    enum class State {
        Asked,  ///< a download was asked for, or what has to come before it
        None,   ///< the message offers none
        Gone    ///< the open chat doesn't show the message
    };
    State state = State::Gone;
    QString suffix;  ///< of a document's name, as the page shows it
};

/// What one tick of the step machine needs to know, read in one command.
struct PageLook {
    enum class Presence {
        Here,    ///< the page answered
        Silent,  ///< no answer this time (busy page, time-out): try again at the next tick
        Gone     ///< the browser window or the session no longer exists
    };
    Presence presence = Presence::Silent;

    bool noPage = false;      ///< the browser shows its own error or empty page: the start page could not be loaded
    bool errorPage = false;   ///< something matches XX_ErrorPage
    QString otherSite;        ///< host of the page where it isn't the start page's; empty when it is
    int useHereButtons = 0;   ///< matches of XX_UseHere: the account is open in another window
    bool hasUpdate = false;   ///< something matches XX_Update
    int newChatControls = 0;  ///< matches of XX_NewChat: 0 when not logged in
    int qrCodes = 0;
    QString qrData;  ///< attribute data-ref of the QR holder
    int qrReloads = 0;
    bool hasBanner = false;
    QString banner;
    QString linkText;        ///< where the planted link points; empty when the page holds none
    QString ownPicture;      ///< address of the account's own picture; empty when there is none
    bool hasNotice = false;  ///< something matches XX_InvalidNumber
    QString notice;
    bool hasChatList = false;   ///< something matches XX_ChatList
    bool hasBox = false;        ///< something matches XX_ChatBox
    QStringList misunderstood;  ///< locators among these that the browser doesn't understand
    /// What the chat list doesn't mark as unread: it came in while its chat was open, or the chat was opened to write
    /// while it was unread. Only chats that were opened by a click of ours are listened to. Until they are forgotten,
    /// again with each look.
    QList<ArrivedMessage> arrived;
    OpenChat chat;
};

/// How far a message of ours has got, as the page draws it beside the message.
struct ShownTick {
    QString id;     ///< of the message
    int ticks = 0;  ///< 0 a clock, 1 sent, 2 delivered, 3 read
};

/// The same in a row of the chat list, for the chat's last message. No other row in sight has this title.
struct EntryTick {
    QString title;
    QString preview;  ///< the row's last line: what it shows of the message
    int ticks = 0;
};

/// What the readiness check after opening a chat reads, in one command.
struct ChatLook {
    QString linkText;        ///< where the planted link points; empty when the page holds none
    bool hasNotice = false;  ///< something matches XX_InvalidNumber
    QString notice;
    bool hasBox = false;      ///< the message box is there
    bool boxFocused = false;  ///< and typing goes to it
    QString boxText;
    QString headerPicture;   ///< address of the open chat's picture; empty when there is none
    QList<ShownTick> ticks;  ///< of the newest messages
    OpenChat chat;
};

/// One message of the open chat.
struct ChatMessage {
    QString id;        ///< empty when it bears none
    bool own = false;  ///< sent from this account
    QString text;      ///< with what the page draws around it: time, ticks, names
};

/// A row of the chat list as the page shows it.
struct ChatEntry {
    QString title;       ///< the chat's name; empty for a row that is no chat (archive, filters, notices)
    QString badge;       ///< the count of unread messages, which is the last line then; empty when there is none
    QStringList lines;   ///< visible text, without blank lines, outer blanks and direction marks
    bool marked = true;  ///< the badge is marked as such, not told by its place alone

    // Title and badge are read only where the last line is a number, as that of an unread chat is.
};

/// The rows of the chat list that exist at one scroll position: the page holds only those near the ones in sight.
struct ChatListLook {
    QList<ChatEntry> entries;  ///< in their order; empty ones for rows that were not asked for
    int nextOffset = -1;       ///< scroll position, in pixels, that shows the rows below; -1 at the end of the list
    QString ownPicture;        ///< address of the account's own picture; empty when there is none
    bool search = false;       ///< a search was left above the list, which shows its results only
    int length = 0;            ///< length of the list's text
};

/// A chat of the list as `listChats` finds it.
struct ListedChat {
    QString title;    ///< the chat's name, or the number as the page formats it
    QString picture;  ///< address of its picture where that names the number; else empty
};

/// What can be read in the first rows of the chat list, and by which signs they look unread.
struct ListSigns {
    int filled = 0;           ///< rows of several lines
    int titled = 0;           ///< rows with a title
    int counted = 0;          ///< rows that look unread by their last line
    int marked = 0;           ///< those of them that bear a mark with this number
    int markedElsewhere = 0;  ///< rows with a mark that is not their last line
    int lines = 0;            ///< of the list's whole text, where no row has a title
};

/// What tells whether the chat list deserves a look.
struct ChatListGlance {
    int length = 0;                       ///< length of the list's text
    QString unread;                       ///< differs whenever the unread rows do; empty when none is unread
    QList<EntryTick> ticks;               ///< every few seconds; empty otherwise
    std::optional<ListSigns> signs = {};  ///< likewise, unless something is searched
};

/// The page at the moment of a click on a row of the chat list.
struct ClickedEntry {
    bool found = false;  ///< false: the row has gone or shows something else by now, and nothing was clicked
    OpenChat before;
};

/// The page at the moment of a click on the link.
struct ClickedLink {
    OpenChat before;         ///< the conversation that was open
    int chatListLength = 0;  ///< length of the chat list's text
};

/// The boxes of the page that are typed into.
enum class Box {
    Message,  ///< of the open chat
    Caption,  ///< of the preview of a chosen file
    Search    ///< above the chat list
};

/// A box after typing or after Enter.
struct BoxLook {
    bool asExpected = false;
    int chatSerial = 0;        ///< the conversation that the page shows
    bool linkPointed = false;  ///< the planted link points where it was asked to
    QString lastMessageId;     ///< of the conversation, see OpenChat
};

/// The page's two ways to take a file. The one for stickers is never used.
enum class FileInput { Media, Document };

/// The preview that follows the choice of a file.
struct PreviewLook {
    bool hasCaption = false;
    bool hasSendButton = false;
    bool captionFocused = false;  ///< typing goes to the caption
    int chatSerial = 0;           ///< the conversation that the page shows
};

/// What became of a preview that was sent.
struct FileSentLook {
    bool previewGone = false;
    bool inChat = false;  ///< an outgoing message stands there that was not there before
    int chatSerial = 0;
    QString lastMessageId = {};  ///< of the conversation, see OpenChat
};

/// The chat list while something is searched in it.
struct SearchLook {
    bool hasBox = false;
    QString text;           ///< in the search box
    QStringList titles;     ///< of the chats listed, from the top, each as often as it is there
    bool complete = false;  ///< false: the list is too long to be read to its end
};

/// The page at the moment of a click on a chat-list entry.
struct EntryClick {
    bool happened = false;  ///< false: no such entry
    OpenChat before;        ///< the conversation that was open
};

/// The chat page, at the level on which the engine's procedures speak. A member costs one browser command, or two or
/// three where it says so, because a command that touches the page takes 10 to 20 ms.
///
/// A failing command has been handled by the error policy when a member returns: booleans are false then and
/// optionals empty. All texts are as the page shows them; no-break blanks come as blanks.
class ChatPage {
 public:
    ChatPage() = default;
    ChatPage(const ChatPage&) = delete;
    ChatPage& operator=(const ChatPage&) = delete;
    virtual ~ChatPage() = default;

    /// Reads what a tick needs. The planted link is pointed at `nextAddress` first, unless that is empty.
    virtual PageLook look(const QString& nextAddress = {}) = 0;

    /// Adds the link element (id "kirim") with `address` to the page.
    virtual bool plantLink(const QString& address) = 0;
    /// Points the planted link at `address`; false when the page holds no such link.
    virtual bool pointLink(const QString& address) = 0;
    /// Clicks the link whose text is `address`; nothing when there is none.
    virtual std::optional<ClickedLink> clickLink(const QString& address) = 0;

    /// Reads the opened chat; with `focusBox` the message box is given the focus first, if it is there.
    virtual std::optional<ChatLook> lookAtChat(bool focusBox) = 0;

    /// The messages of the open chat that the page holds, newest last.
    virtual std::optional<QList<ChatMessage>> lastMessages() = 0;

    /// The newest `count` messages of others in the open chat `title`, which was clicked in the list, without those
    /// above the account's own last one; scrolled up to as far as needed. Empty while that chat isn't there.
    virtual std::optional<UnreadMessages> readUnread(const QString& title, int count) = 0;

    /// The page need not keep these messages any more.
    virtual bool forgetArrived(const QStringList& keys) = 0;
    /// Each time the page is loaded it learns what `known` gives, and what stands below that in an opened chat is new.
    /// May be empty.
    virtual void goBy(std::function<KnownMessages()> known) = 0;

    /// Pastes `text` into `box` by an event, provided that the conversation is still `chatSerial`, and waits, at most
    /// `milliseconds`, until it stands there.
    virtual std::optional<BoxLook> pasteText(Box box, const QString& text, int chatSerial, int milliseconds) = 0;
    /// Types `text` into the focused element; line feeds become line breaks inside the message. Two commands a line.
    virtual bool typeText(const QString& text) = 0;
    /// The same by one key event a character, a hundred of them a command.
    virtual bool typeKeys(const QString& text) = 0;
    /// Pastes what is on the clipboard into the focused element.
    virtual bool pressPaste() = 0;
    /// Waits, at most `milliseconds`, until `box` holds `text` (empty: until it is empty).
    virtual std::optional<BoxLook> awaitBoxText(Box box, const QString& text, int milliseconds) = 0;
    /// Waits, at most `milliseconds`, until the message box is empty, as Enter leaves it. Then the planted link is
    /// pointed at `nextAddress`, unless that is empty.
    virtual std::optional<BoxLook> awaitSent(const QString& nextAddress, int milliseconds) = 0;
    /// Empties `box` and leaves it focused. Up to three commands.
    virtual bool clearBox(Box box) = 0;

    /// Gives the file `path` to the page. False when the page has no such input or can't read the file. Two commands.
    virtual bool chooseFile(FileInput input, const QString& path) = 0;
    /// Reads the preview; with `focusCaption` its caption is given the focus first, if it is there.
    virtual std::optional<PreviewLook> lookAtPreview(bool focusCaption) = 0;
    /// Presses the preview's send button. False: it has none, so nothing was sent; empty: it may have been pressed.
    virtual std::optional<bool> sendPreview() = 0;
    /// Waits, at most `milliseconds`, until what `sendPreview` sent stands in the chat.
    virtual std::optional<FileSentLook> awaitFileSent(int milliseconds) = 0;

    /// Reads the whole chat list, scrolling through it.
    virtual std::optional<SearchLook> lookAtSearch() = 0;
    /// Clicks the first chat-list entry with exactly this title, as a mouse does. Empty when it is not known whether
    /// the click happened. Two commands.
    virtual std::optional<EntryClick> clickEntry(const QString& title) = 0;

    /// Downloads go into `folder` from now on, under names of the browser's own, with ".crdownload" behind them until
    /// they are complete; empty: where the browser usually puts them.
    virtual bool downloadInto(const QString& folder) = 0;
    /// Ends the download of this name.
    virtual bool cancelDownload(const QString& name) = 0;
    /// Has the browser download what the message of the open chat carries, a `kind` of ArrivedMessage, or does the next
    /// thing towards it; call it until the download begins. `begins`: the first call for this message. Up to two
    /// commands.
    virtual std::optional<MediaStep> saveMedia(const QString& messageId, const QString& kind, bool begins) = 0;

    virtual bool pressEnter() = 0;
    virtual bool pressEscape() = 0;
    /// Presses it twice, so many milliseconds apart.
    virtual bool pressEscapeTwice(int milliseconds) = 0;

    /// Sets the browser window's title and glances at the chat list.
    virtual std::optional<ChatListGlance> watchChatList(const QString& title) = 0;
    /// Reads the rows of the chat list at the scroll position `offset` in pixels, scrolling there if need be: those
    /// that may be unread, and that of the chat `title`. New messages show at the top, so leave the list there.
    virtual std::optional<ChatListLook> readChatList(int offset, const QString& title = {}) = 0;
    /// The chats that the list holds at its present scroll position, read or not.
    virtual std::optional<QList<ListedChat>> listChats() = 0;
    /// Clicks the unread row that still shows exactly `entry`, wherever it stands by now.
    virtual std::optional<ClickedEntry> clickEntry(const ChatEntry& entry) = 0;
    /// Clears a search that was left above the chat list; returns the length of the list's text.
    virtual std::optional<int> leaveSearch() = 0;
    /// Loads the page anew.
    virtual bool refresh() = 0;
    /// Opens the start page once more.
    virtual bool openStartPage() = 0;
    virtual bool clickQrReload() = 0;
    /// Answers "open in another window": the account is used here.
    virtual bool clickUseHere() = 0;
    /// A PNG of the QR code, of the whole page; empty when it can't be taken.
    virtual QByteArray qrPicture() = 0;
    virtual QByteArray pagePicture() = 0;
    /// Closes tabs that the page opened; returns how many.
    virtual int closeStrayTabs() = 0;
    /// Ends the browser session.
    virtual void end() = 0;
};

}  // namespace kibo
