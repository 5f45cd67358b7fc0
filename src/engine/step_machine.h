#pragma once

#include <functional>
#include <optional>

#include "app/clock.h"
#include "app/database.h"
#include "app/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/chat_opener.h"
#include "engine/gateway_state.h"
#include "engine/message_sender.h"
#include "engine/outbox_queue.h"
#include "engine/pacing.h"
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
        Database& database;
        ChatPage& page;
        Clock& clock;
        Pacing& pacing;
        ChatOpener& opener;
        OutboxQueue& queue;
        MessageSender& sender;
        SendJournal& journal;
        SendRecovery& recovery;
        RandomSource random;
        /// Whether another screen drives the page at the moment.
        std::function<bool()> pageInUse;
    };
    explicit StepMachine(Parts parts);

    /// One tick.
    void Timer_KIBO_Timer();
    /// Ends the WebDriver session.
    void TUTUP_WA();

 private:
    bool publishQr(const PageLook& look);
    void showStatus(bool ready);
    void setLoginCode(const QString& code);
    bool loggedIn(const PageLook& look);
    bool KIRIM_WA(const PageLook& look);
    bool mayTakeMessage();
    bool loadMessage();
    void dispatch(const QString& mode);
    void finishMessage(const PageLook& look);
    void idle(const QString& step);
    bool silentTooLong(const PageLook& look);

    Parts p_;
    std::optional<qint64> silentSinceMs_;
    std::optional<qint64> startPageAskedMs_;
};

}  // namespace kibo
