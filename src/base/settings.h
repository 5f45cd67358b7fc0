#pragma once

#include <QList>
#include <QString>

namespace kibo {

/// What is wrong with the settings file or one of its values.
struct SettingProblem {
    QString key;          ///< the option; empty: the whole file
    QString text;         ///< in words for the operator
    bool ofConnection{};  ///< the database may be out of reach because of it
};

/// All options of the gateway, one member per key and named like it, as read once at process start.
/// Options of kind yes/no hold "Y" or "N"; ask with isYes(): only "Y" means yes, anything else means no.
struct Settings {
    // Section DB
    QString dsn, user, password;
    // Section kibo
    QString Profil, DummyContact, UseBotPHP, UseBotEXE, PHP, EXE, CountryCode, IntervalMode1, Incognito, UseCapture,
        CaptureImage, SendUsingClipboard, SendUsingDummy;
    QString MySQL_WithoutDSN, MySQL_Server, MySQL_DB;  // DB
    QString DebugMode;
    QString Port;  // DB
    QString DisableRead, DisableDoubleInbox, AutoStart, HideChrome, Multi, Break, AfterSend, GetNumberInbox, Scheduled,
        ChromePortable, VBSleep, ChromeBinary, Headless, TmpFolder, ClearTmp, CaptureQR, Prefix;
    QString UseMDB, HideMe;  // DB
    QString Slow, Speed, NoAgent, LimitSelect, NoSandBox, UseIE, ShowIE;

    // Further keys of section kibo: the file need not have them and they are never written at start.
    QString StartAddress;  ///< page to open; empty: kDefaultStartAddress
    QString ChatAddress;   ///< click-to-chat address; empty: kDefaultChatAddress
    QString PageLanguage;  ///< language that the page is asked for; empty: "en"
    QString InboxRead;     ///< "every" unread message becomes a row, or each chat's "last"; empty: every
    QString ExpandText;    ///< "N": texts are sent as they stand
    QString InboxMedia;    ///< "Y": what received messages carry is saved
    QString InboxFolder;   ///< where to; empty: `inbox` in the program folder
    QString InboxMaxMB;    ///< largest size of that folder, in megabytes; empty: 2000
    QString MaxFileMB;     ///< largest file that is sent, in megabytes; empty: 64
    QString BrowserMaxMB, BrowserMaxHours;  ///< from when on the browser is opened anew; empty: 1500 and 24
    QString MessageDays;                    ///< how long Kibo's own tables keep what they say of a message; empty: 90
    QString ChromeDriver;   ///< empty: chromedriver from the path; a path; or the http address of a running driver
    QString SupportNumber;  ///< whose chat the about window opens; empty: none
    QString ElementServer;  ///< host or address of the element service; empty: none

    QList<SettingProblem> problems;  ///< what was found when they were read

    // Built-in values, not in the file.
    QString applicationName = QStringLiteral("KB App");  ///< of the main window, and in `tmp`
    QString buildDate = QStringLiteral("2023-09-20");
};

/// The program's name wherever it speaks for itself: in boxes, the log, its own files.
inline const QString kProgramName = QStringLiteral("Kibo");

/// WhatsApp's own addresses: the web client, and the links that open a chat with a number.
inline const QString kDefaultStartAddress = QStringLiteral("https://web.whatsapp.com/");
inline const QString kDefaultChatAddress = QStringLiteral("https://wa.me/");

inline bool isYes(const QString& option) {
    return option == QStringLiteral("Y");
}

/// The answering program's file in its folder, "autochat", on Windows "autochat.exe". `EXE` may name it with a path of
/// any length, since nobody chooses how long the path of the gateway's folder is.
QString responderFileName();

/// Reads every option from `file` (full path of "kibo.ini"), then gives empty ones their defaults, which are also
/// written into the file. Nothing here fails: what can't be read is empty and takes its default.
Settings loadSettings(const QString& file);

/// Why `file` can't be read, in words for the operator; empty when it can, and when there is none yet.
QString settingsProblem(const QString& file);

}  // namespace kibo
