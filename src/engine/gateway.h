#pragma once

#include <QString>
#include <functional>

#include "engine/abandoned_messages.h"
#include "engine/attachment_sender.h"
#include "engine/chat_list_watch.h"
#include "engine/chat_opener.h"
#include "engine/chat_target.h"
#include "engine/delivery_check.h"
#include "engine/held_rows.h"
#include "engine/locator_check.h"
#include "engine/login_watch.h"
#include "engine/message_files.h"
#include "engine/message_records.h"
#include "engine/message_sender.h"
#include "engine/message_ticks.h"
#include "engine/outbox_queue.h"
#include "engine/pacing.h"
#include "engine/reading_check.h"
#include "engine/send_journal.h"
#include "engine/send_recovery.h"
#include "engine/step_machine.h"
#include "engine/text_typer.h"
#include "engine/unsent_list.h"
#include "engine/waiting_reason.h"
#include "platform/result.h"

namespace kibo {

/// The engine as one piece: its classes, built on each other. Holds no widget and no state of its own, so it runs
/// behind a window, on a server and in tests alike. What it is given must outlive it.
struct Gateway {
    struct Needs {
        GatewayState& state;
        Settings& settings;
        const ElementTable& elements;
        Database& database;
        ChatPage& page;
        Clock& clock;
        SendJournal& journal;  ///< nothing is sent until it is open
        RandomSource random;
        std::function<void()> BACA_WA = {};    ///< reads the inbox; may be empty
        std::function<bool()> pageInUse = {};  ///< whether another screen drives the page; may be empty
        /// Takes messages that came in while their chat was open, those of each tick, also if there are none; may be
        /// empty.
        std::function<void(const QList<ArrivedMessage>&)> takeArrived = {};
        FetchMedia fetchMedia = {};      ///< fetches files given by address; may be empty
        ReleaseMedia releaseMedia = {};  ///< lets go of them; may be empty
        QString programFolder = {};      ///< takes the login code's picture where no setting names a folder
        Clipboard* clipboard = nullptr;  ///< may be null: then texts are always typed
        ConfirmHold confirmHold = {};    ///< may be empty: then nobody else can work for the profile
    };

    explicit Gateway(const Needs& n)
        : pacing(n.state, n.settings, n.clock),
          opener(n.state, n.settings, n.page, n.clock, pacing),
          records(n.state, n.settings, n.database, n.clock, n.journal),
          queue(n.state, n.settings, n.database, n.clock, records),
          ticks(n.state, n.settings, n.database, n.clock),
          held(n.state, n.settings, n.database, n.clock),
          locators(n.state, n.clock),
          reading(n.state, n.clock),
          target(n.state, n.page, n.elements, n.clock, pacing, opener, locators, ticks),
          typer(n.state, n.settings, n.page, n.clock, pacing, n.clipboard),
          files(n.settings, n.fetchMedia, n.releaseMedia),
          attachments(n.page, n.clock, pacing, typer),
          unsent(n.state, n.settings, n.database, n.clock),
          sender({n.state, n.settings, n.page, n.clock, pacing, opener, target, typer, files, attachments, queue,
                  n.journal, records, ticks, unsent, n.confirmHold}),
          deliveryCheck(n.page, n.clock, pacing, target),
          recovery(n.state, n.clock, n.journal, queue, sender, deliveryCheck, records, n.confirmHold),
          abandoned(n.state, n.settings, n.database, n.clock, n.journal, n.confirmHold),
          login(n.state, n.settings, n.database, n.page, n.clock, n.programFolder),
          machine({n.state, n.settings, n.elements, n.page, n.clock, pacing, opener, queue, locators, files, sender,
                   n.journal, recovery, login, n.random, n.pageInUse, n.takeArrived}),
          chatListWatch(n.state, n.page, n.clock, ticks, reading, n.BACA_WA),
          waitingReason(n.state, n.settings, n.database, queue, n.clock) {}
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    Pacing pacing;
    ChatOpener opener;
    MessageRecords records;
    OutboxQueue queue;
    MessageTicks ticks;
    HeldRows held;
    LocatorCheck locators;
    ReadingCheck reading;
    ChatTarget target;
    TextTyper typer;
    MessageFiles files;
    AttachmentSender attachments;
    UnsentList unsent;
    MessageSender sender;
    DeliveryCheck deliveryCheck;
    SendRecovery recovery;
    AbandonedMessages abandoned;
    LoginWatch login;
    StepMachine machine;
    ChatListWatch chatListWatch;
    WaitingReason waitingReason;
};

}  // namespace kibo
