#pragma once

#include <functional>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/chat_opener.h"
#include "engine/gateway_state.h"
#include "engine/locator_check.h"
#include "engine/login_watch.h"
#include "engine/message_files.h"
#include "engine/message_sender.h"
#include "engine/outbox_queue.h"
#include "engine/pacing.h"
#include "engine/queue_forecast.h"
#include "engine/send_journal.h"
#include "engine/send_recovery.h"
#include "engine/text_expansion.h"

namespace kibo {

/// The engine's main tick: connection and login state, then at most one send attempt. All that outlives a tick
/// stands in GatewayState.
class StepMachine {
 public:
    /// What the step machine works on; all of it must outlive the step machine.
    struct Parts {
        GatewayState& state;
        Settings& settings;
        const ElementTable& elements;
        ChatPage& page;
        Clock& clock;
        Pacing& pacing;
        ChatOpener& opener;
        OutboxQueue& queue;
        LocatorCheck& locators;
        MessageFiles& files;
        MessageSender& sender;
        SendJournal& journal;
        SendRecovery& recovery;
        LoginWatch& login;
        RandomSource random;
        /// Whether another screen drives the page at the moment.
        std::function<bool()> pageInUse;
        /// Takes the messages that came in while their chat was open, and has the page forget them.
        std::function<void(const QList<ArrivedMessage>&)> takeArrived;
    };
    explicit StepMachine(Parts parts);

    /// One tick.
    void Timer_KIBO_Timer();
    /// Ends the WebDriver session.
    void TUTUP_WA();

 private:
    void browserHasGone();
    bool waitForLogin(const PageLook& look);
    void showStatus(bool ready);
    bool loggedIn(const PageLook& look);
    bool KIRIM_WA(const PageLook& look);
    bool mayTakeMessage(const PageLook& look);
    QString nothingToSend();
    QString pausedWords() const;
    bool storeRefuses();
    bool standsBy();
    QString nextAttempt();
    void tryJournal();
    QString destination(const QString& written) const;
    QString nextLink() const;
    std::optional<QueuedRow> loadMessage();
    void fetchFiles(const QueuedRow& row);
    void dispatch(const QString& mode);
    void leaveChat(const PageLook& look);
    void finishMessage(const PageLook& look);
    void idle(const QString& step);
    void stopMeasuring();
    void showForecast();
    bool silentTooLong(const PageLook& look);

    Parts p_;
    int attempts_ = 0;  // to send a message, since the program started
    qint64 tryJournalMs_ = 0;
    std::optional<qint64> refusedAtMs_;  // when the store last took no message
    std::optional<qint64> silentSinceMs_;
    QueueForecast forecast_;
    std::optional<qint64> workingSinceMs_;  // since the end of the last message, unless something held sending up
};

}  // namespace kibo
