#include "base/setting_list.h"

namespace kibo {
namespace {

using enum SettingPage;
using enum SettingKind;

constexpr const char *kDb = "DB", *kKibo = "kibo";

constexpr SettingPage kPages[] = {Database, Browser, Sending, Files, Receiving, Instances, Program};

}  // namespace

const std::vector<SettingEntry>& settingList() {
    static const std::vector<SettingEntry> list{
        {Database, kDb, "UseMDB", "optMDB", Mode, "The local file kb.mdb", "off, so a server; in a new folder on",
         "On: the queue is the local file `kb.mdb`; the other keys of this page are ignored then."},
        {Database, kDb, "MySQL_WithoutDSN", "optMy", Mode, "A server without a data source name", "off",
         "On: the server is described by the next keys. Off: `dsn` names an ODBC data source."},
        {Database, kDb, "dsn", "txtDSN", Text, "Data source name", "none",
         "An ODBC data source; used where the server isn't described by the next keys.", "", "DSN"},
        {Database, kDb, "MySQL_Server", "txtServer", Text, "Server", "none",
         "Name or address of the server. Write `127.0.0.1` rather than `localhost` where it listens on TCP only."},
        {Database, kDb, "Port", "txtPORT", Port, "Port", "3306", "The server's port."},
        {Database, kDb, "MySQL_DB", "txtDB", Text, "Database", "none", "The database on the server."},
        {Database, kDb, "user", "txtUser", Text, "User", "none", "The account on the server."},
        {Database, kDb, "password", "txtPass", Password, "Password", "none",
         "Its password. It stands in the file, which Kibo makes its owner's alone."},
        {Database, kKibo, "DBMS", "cb_DBMS", Choice, "Kind of server", "none",
         "A note for people; Kibo speaks to MySQL and MariaDB alike.", "MySQL MariaDB"},
        {Database, kKibo, "LimitSelect", "c_Limit", YesNo, "Fetch at most 10 rows at a time", "off",
         "Those waiting are counted once a second then. Server only; for very long queues."},
        {Database, kKibo, "MessageDays", "MessageDays", Number, "Days to keep what became of messages", "90",
         "How long the tables `kibo_message` and `kibo_inbox` keep their rows."},
        {Database, kKibo, "AskTables", "AskTables", YesNo, "Offer to complete the server's tables", "on",
         "`N`, written by a No: the start doesn't offer any more to make Kibo's own tables on a server that lacks "
         "them."},

        {Browser, kKibo, "Profil", "Profil", Text, "Profile", "none",
         "Name of the browser profile, which holds the login; the main window's list **Profile** writes it."},
        {Browser, kKibo, "AutoStart", "chkRun", YesNo, "Open WhatsApp when Kibo starts", "off",
         "Off: press **Open WhatsApp**."},
        {Browser, kKibo, "Headless", "c_Headless", YesNo, "Chrome without a window", "off",
         "For computers without a screen. A page may some day refuse it."},
        {Browser, kKibo, "HideChrome", "HideChrome", YesNo, "Hide Chrome's window", "off",
         "From the moment it can be told by its title, and no other Chrome's; the main window's check box writes it. "
         "Not "
         "with a driver on another computer."},
        {Browser, kKibo, "Incognito", "c_Incognito", YesNo, "No profile", "off", "Every start needs a new login."},
        {Browser, kKibo, "ChromePortable", "c_Chrome", YesNo, "Another browser program", "off",
         "On: the program that `ChromeBinary` names is started. Off: ChromeDriver looks for Chrome, then Chromium."},
        {Browser, kKibo, "ChromeBinary", "txtChrome", File, "Browser program", "none", "See above."},
        {Browser, kKibo, "ChromeDriver", "ChromeDriver", Text, "ChromeDriver", "`chromedriver` from the search path",
         "Path of ChromeDriver, or the `http://…` address of one that runs already."},
        {Browser, kKibo, "StartAddress", "StartAddress", Address, "Start page", "`https://web.whatsapp.com/`",
         "The page to open."},
        {Browser, kKibo, "PageLanguage", "PageLanguage", Text, "Language of the page", "`en`",
         "The language that the page is asked for, as `id` or `pt-BR`."},
        {Browser, kKibo, "ChatAddress", "ChatAddress", Address, "Chat address", "`https://wa.me/`",
         "Beginning of the addresses that open a chat, the number follows; letters, digits and `:/.-_?=%~` only."},
        {Browser, kKibo, "BrowserMaxMB", "BrowserMaxMB", Number, "Largest browser, MB", "1500",
         "One that uses more memory is closed and opened anew when nothing is waiting or a break runs. 0: never. The "
         "login is kept."},
        {Browser, kKibo, "BrowserMaxHours", "BrowserMaxHours", Number, "Oldest browser, hours", "24",
         "The same for one that is open longer."},
        {Browser, kKibo, "CaptureQR", "c_QR", YesNo, "Show the QR code in Kibo's window", "off",
         "It is also saved as a picture in the folder `CaptureImage`."},
        {Browser, kKibo, "UseCapture", "c_Capt", YesNo, "Picture of the page", "off",
         "On: the page's picture is written to `screen000001.jpg` (for profile 1) in the folder `CaptureImage` every "
         "second "
         "while no message is being sent."},
        {Browser, kKibo, "CaptureImage", "txtIMG", Folder, "Folder for pictures", "the program folder",
         "A whole path, made when it is missing."},
        {Browser, kKibo, "NoSandBox", "NoSandBox", YesNo, "No sandbox", "off",
         "On passes two of Chrome's options a second time, which changes nothing, and takes the sandbox of the bot's "
         "browser "
         "away too."},

        {Sending, kKibo, "DummyContact", "DummyContact", Text, "Dummy contact", "6281200000001, which is not yours",
         "Number whose chat is opened between messages. No message is sent to it."},
        {Sending, kKibo, "CountryCode", "CC", Text, "Country code", "none",
         "A number that begins with `Prefix` gets it in the prefix's place."},
        {Sending, kKibo, "Prefix", "txtPrefix", Text, "Prefix", "`0`", "See above."},
        {Sending, kKibo, "ExpandText", "ExpandText", YesNo, "Expand texts", "on",
         "`N`: every text is sent as it stands, with its brackets, `~r`, `\\n`, `%time%` and `%name%`. See "
         "[Texts as they stand](#texts-as-they-stand)."},
        {Sending, kKibo, "Speed", "cSPEED", Choice, "Speed", "`NORMAL`",
         "How long to rest on an opened chat: `NORMAL` 0.3 s, `SLOW` 5 s, `VERYSLOW` 12 s, anything else 0.",
         "NORMAL SLOW VERYSLOW"},
        {Sending, kKibo, "AfterSend", "txtAfterSend", Number, "Messages in a batch", "no breaks",
         "A break follows after so many messages, failed ones included. 0: no breaks."},
        {Sending, kKibo, "Break", "txtBreak", Number, "Break, seconds", "none", "Length of a break."},
        {Sending, kKibo, "Scheduled", "c_Scheduled", YesNo, "Wait for a message's time", "off",
         "On: a row waits for its `wa_time`. Server only."},
        {Sending, kKibo, "SendUsingClipboard", "c_Clip", YesNo, "Paste texts from the clipboard", "off",
         "It takes 1 s, or 3 s from 1000 characters on. What was on the clipboard is put back. Without effect with "
         "`Headless=Y`."},
        {Sending, kKibo, "VBSleep", "c_Sleep", YesNo, "Waits by the time of day", "off",
         "On: waits are measured by the time of day."},
        {Sending, kKibo, "SendUsingDummy", "c_Dummy", YesNo, "Send by the dummy contact", "off",
         "Kept for other programs; nothing depends on it."},
        {Sending, kKibo, "IntervalMode1", "txtInterval", Text, "Interval", "none",
         "Kept for other programs; nothing depends on it. The screen writes `SendInterval`.", "", "SendInterval"},

        {Files, kKibo, "TmpFolder", "txtTmpFolder", Folder, "Folder for fetched files", "`tmp` in the program folder",
         "For files that a row names by a web address; it is made when missing."},
        {Files, kKibo, "ClearTmp", "c_ClearTmp", YesNo, "Remove fetched files", "off",
         "On: a file that was fetched for a message is removed after it."},
        {Files, kKibo, "MaxFileMB", "MaxFileMB", Number, "Largest file, MB", "64",
         "Largest picture, video or document that is sent."},

        {Receiving, kKibo, "DisableRead", "c_SendOnly", YesNo, "Send only", "off",
         "On: the inbox isn't read, and the contact's chat stays open after a message."},
        {Receiving, kKibo, "InboxRead", "InboxRead", Choice, "Rows of a chat", "`every`",
         "`every`: each unread message of a chat becomes a row. `last`: only the chat's last one.", "every last"},
        {Receiving, kKibo, "InboxMedia", "InboxMedia", YesNo, "Save pictures, videos, voice notes and documents", "off",
         "On: what a received message carries is saved as a file. See [Files of received messages]"
         "(#files-of-received-messages)."},
        {Receiving, kKibo, "InboxFolder", "InboxFolder", Folder, "Folder for received files",
         "`inbox` in the program folder", "It is made when it is missing."},
        {Receiving, kKibo, "InboxMaxMB", "InboxMaxMB", Number, "Largest size of that folder, MB", "2000",
         "Nothing more is saved once it holds so much."},
        {Receiving, kKibo, "GetNumberInbox", "c_GetNumber", YesNo, "Look for the sender's number", "on",
         "In the opened chat. The first start leaves `Y` in the file."},
        {Receiving, kKibo, "DisableDoubleInbox", "c_DisableDoubleInbox", YesNo, "No double messages", "off",
         "Kept for other programs; nothing depends on it."},
        {Receiving, kKibo, "UseBotPHP", "c_Bot", YesNo, "Ask a web bot", "off",
         "For every message. See the [integrator's guide](integrator.md#reply-bots)."},
        {Receiving, kKibo, "PHP", "txtURL", Address, "The web bot's address", "none", "See above."},
        {Receiving, kKibo, "UseBotEXE", "c_bot2", YesNo, "Start a program as a bot", "off", "For every message."},
        {Receiving, kKibo, "EXE", "txtEXE", File, "The bot's program", "none", "See above."},
        {Receiving, kKibo, "UseIE", "UseIE", YesNo, "Ask the web bot in a browser", "on",
         "Its address is opened in a second browser."},
        {Receiving, kKibo, "ShowIE", "ShowIE", YesNo, "Show that browser", "off", "With a window."},

        {Instances, kKibo, "Multi", "ChkMulti", YesNo, "Several instances on one database", "off",
         "See [A fleet](#a-fleet-several-instances)."},
        {Instances, kKibo, "NoAgent", "c_noAgent", YesNo, "No agent program", "on",
         "With `N`, `Multi=Y` and a server, the program `Tarro.exe` in the program folder is started."},
        {Instances, kKibo, "HIDE_ME", "HIDE_ME", YesNo, "Hide Kibo's window", "off",
         "Read while Kibo runs, with `Multi=Y` only: `Y` hides the window, anything else shows it again."},

        {Program, kKibo, "ElementServer", "ElementServer", Address, "Element service", "no service",
         "Host or address, for the [element screen](#the-element-screen)'s *Fetch* and *Upload*. A bare host is asked "
         "over "
         "https; write `http://…` for one without it."},
        {Program, kKibo, "Language", "Language", Choice, "Language of the windows", "the system's",
         "`id` for Indonesian, `en` for English. What isn't translated stays English.", "id en"},
        {Program, kKibo, "InstallId", "InstallId", Text, "Identifier for the element service", "none",
         "Names this installation to the element service: a random identifier that Kibo writes when it first fetches. "
         "Delete it to get another."},
        {Program, kKibo, "SupportNumber", "SupportNumber", Text, "Support's number", "none",
         "Whose chat *Help › About* opens: the number of whoever helps you with Kibo."},
        {Program, kKibo, "LastBuild", "LastBuild", Text, "Installed build", "the program's own",
         "Date of the installed build, as `2023-09-20`, for the [update check](#updates); an updater writes it. A "
         "later one "
         "than the program's own doesn't count."},
        {Program, kKibo, "DebugMode", "DebugMode", YesNo, "Show faults in boxes", "off",
         "On: what fails is shown in a box instead of only in the log. For finding faults; what failed stops until its "
         "box "
         "is closed."},
    };
    return list;
}

QString pageTitle(SettingPage page) {
    switch (page) {
        case Database:
            return QStringLiteral("Database");
        case Browser:
            return QStringLiteral("Browser");
        case Sending:
            return QStringLiteral("Sending");
        case Files:
            return QStringLiteral("Files");
        case Receiving:
            return QStringLiteral("Receiving");
        case Instances:
            return QStringLiteral("Instances");
        case Program:
            break;
    }
    return QStringLiteral("Program");
}

QString settingsInMarkdown() {
    QString text;
    for (const SettingPage page : kPages) {
        text += QStringLiteral("### %1\n\n| key | section | empty means | meaning |\n|---|---|---|---|\n")
                    .arg(pageTitle(page));
        for (const SettingEntry& one : settingList())
            if (one.page == page)
                text += QStringLiteral("| `%1` | `%2` | %3 | %4: %5 |\n")
                            .arg(QLatin1String(one.key), QLatin1String(one.section), QString::fromUtf8(one.fallback),
                                 QString::fromUtf8(one.label), QString::fromUtf8(one.help));
        text += u'\n';
    }
    return text;
}

}  // namespace kibo
