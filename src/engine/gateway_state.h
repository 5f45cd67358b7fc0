#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <memory>

#include "base/controls.h"

namespace kibo {

/// The pause button's caption while paused, in the symbol font that the state speaks of.
inline constexpr char16_t kPausedCaption = u'4';

/// The columns of the list of failed messages.
struct UnsentColumn {
    enum { Number, Text, Time, Reason, Id };
};

/// Everything of the main window that must outlive a tick, under the product's own names. Plain values: the
/// engine reads and writes them, the main window shows them and sends clicks back. Owned by the composition root.
struct GatewayState {
    // Connection
    Label status{QStringLiteral("Not Connect"), colour::kRed, colour::kYellow};
    TextBox waurl;       ///< "!!" when the browser has gone
    Indicator pQR;       ///< login QR code on screen; caption: file of its picture
    Indicator dboff;     ///< caption: why the database is off, in words
    QString storeName;   ///< which store it works on; empty: none yet
    QString storePlace;  ///< the same more precisely; holds neither user nor password
    /// Another instance works for the profile, or that isn't known yet: nothing is sent or read. Caption: who, in
    /// words.
    Indicator standby;
    /// Names this run of the program in the records of messages, unlike any other; empty where nobody keeps who holds a
    /// profile.
    QString instance;
    QString pageNotice;      ///< what else the page has to say, in words; empty: nothing
    QString refusedOut;      ///< the messages that can't leave the queue, in words; empty: none
    QString inboxNotice;     ///< what keeps received messages out of the database, in words; empty: nothing
    QString mediaNotice;     ///< what keeps received files from being saved, in words; empty: nothing
    QString journalProblem;  ///< why the journal can't be written, in words; nothing is sent then
    QString pageChanged;     ///< the locator that matches nothing any more; sending is held while it is set
    QString readingChanged;  ///< the locator by which the chat list can't be read; reading is held while it is set
    /// So many messages got no second tick one after another, while earlier ones did.
    static constexpr int kUndelivered = 20;
    bool notDelivered = false;
    bool dummyOpened = false;
    int newChatCount = 0;
    bool stepRunning = false;  ///< a tick of Timer_KIBO is going on, perhaps inside one of its waits
    bool fetching = false;     ///< it waits for a message's files: the page may be used meanwhile

    // Queue
    Grid ms_out{{QStringLiteral("wa_mode"), QStringLiteral("wa_no"), QStringLiteral("wa_text"),
                 QStringLiteral("wa_media"), QStringLiteral("wa_file"), QStringLiteral("wa_time"),
                 QStringLiteral("id")}};
    Grid held{ms_out.header};  ///< rows that wait and are not to be sent, in the same columns; never in `ms_out` too
    Grid ms{{QStringLiteral("wa_no"), QStringLiteral("wa_text"), QStringLiteral("wa_time"), QStringLiteral("status")},
            std::make_shared<ListRows>(),
            0,
            3};
    Grid ms2{{QStringLiteral("wa_no"), QStringLiteral("wa_text"), QStringLiteral("time"), QStringLiteral("reason"),
              QStringLiteral("id")}};
    Label Outbox_Cnt{QStringLiteral("0")};

    // Message in progress
    TextBox txtid, txtNo, txtMedia, txtFile, txtMsg2;
    bool mode9 = false;  ///< the message is of wa_mode 9: its opened chat is not dwelt on
    QString step;        ///< what the engine does or waits for right now, in words
    QString work;        ///< how far something long is that the operator asked for, in words; empty: nothing
    QString doneAbout;   ///< when the queue will be done at the present pace, in words; empty: not known

    // Pacing
    Label Kirim_Cnt;
    TextBox HitungKirim{QStringLiteral("0")};
    TextBox DetikBreak{QStringLiteral("0")};
    Button cmd_Pause;
    Indicator wait, wait2, waitread;
    bool busy = false;  ///< the window's busy mark: the inbox reader is making a pass

    // Controls
    Button cmd_OpenWA{QStringLiteral("open"), QStringLiteral("Open WhatsApp Web")};
    Button cmd_STOP{QStringLiteral("stop"), QStringLiteral("End the browser and the program")};
    ComboBox cb_Profil;
    ComboBox cb_DummyContact;
    TextBox txt_DUMMY;
    CheckBox HideChrome;
    TextBox len1;                ///< length of the chat list's text at the last look
    CheckBox newestFirst{true};  ///< order of the inbox grid
    Label Inbox_Cnt{QString()};  ///< how many received messages have no status yet; empty: none
    Label lb[14];                ///< setting indicators lb1 to lb14
    Indicator l_disableread;

    // Counters since the program started
    int sentCount = 0;
    int failedCount = 0;
    /// Messages that became rows of the inbox on the day of the last one.
    struct {
        QDate on;
        int count = 0;
    } received;
    QString ownNumber;   ///< of the account, as the page's own picture of it names it; empty where it doesn't
    int readPasses = 0;  ///< passes over the chat list that reached its end

    /// The last pass over the chat list was broken off: there may be unread chats out of sight.
    bool readAgain = false;

    // Timers: interval in milliseconds, initial state
    StateTimer timer_start{1000, true};
    StateTimer Timer_variabel{500, true};
    StateTimer Timer2{500, true};
    StateTimer Timer1{1000, true};
    StateTimer Timer_KIBO{500, false};
    StateTimer Timer_cekURL{50, false};
    StateTimer timer_QR{500, false};
    StateTimer timer_grabchat{100, false};
    StateTimer BreakTime{1000, false};

    /// The pause button shows its way back.
    bool pausedByOperator() const { return cmd_Pause.caption == QChar(kPausedCaption) && !BreakTime.enabled(); }

    /// Whether a message is in hand or the inbox is read: what goes on then knows the page that it began on.
    bool atWork() const { return stepRunning || busy || waitread.visible; }

    /// Whether the page must be left to the message in progress.
    bool pageIsTaken() const { return (stepRunning || wait.visible) && !fetching; }
};

}  // namespace kibo
