#pragma once

#include "app/clock.h"
#include "app/database.h"
#include "app/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/chat_list_watch.h"
#include "engine/chat_opener.h"
#include "engine/message_sender.h"
#include "engine/outbox_queue.h"
#include "engine/pacing.h"
#include "engine/step_machine.h"
#include "main_window/timer_runner.h"

namespace kibo {

/// The engine's classes, put together. Everything given must outlive it.
struct GatewayEngine {
    struct Parts {
        GatewayState& state;
        Settings& settings;
        const ElementTable& elements;
        Database& database;
        ChatPage& page;
        Clock& clock;
        RandomSource random;
    };
    explicit GatewayEngine(const Parts& parts);

    /// Lets `timers` run the engine's ticks.
    void addTicks(GatewayState& state, TimerRunner& timers);

    Pacing pacing;
    OutboxQueue queue;
    ChatOpener opener;
    MessageSender sender;
    StepMachine machine;
    ChatListWatch chatListWatch;
};

}  // namespace kibo
