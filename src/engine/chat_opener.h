#pragma once

#include <QString>
#include <functional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"
#include "engine/open_ledger.h"
#include "engine/pacing.h"

namespace kibo {

/// Opens chats by number without touching the page's search box: a link of our own in the page is pointed at the
/// click-to-chat address and clicked, and the page opens the chat in place.
class ChatOpener {
 public:
    ChatOpener(GatewayState& state, const Settings& settings, ChatPage& page, Clock& clock, Pacing& pacing);

    /// Numbers shorter than this are never clicked.
    static constexpr int kShortestNumber = 5;
    /// Attempts of every loop that waits for the page.
    static constexpr int kTryLimit = 20;
    /// How long the page needs to notice a newly planted link.
    static constexpr int kPlantWaitMs = 6000;

    /// Whether `ChatAddress` can stand in the link, whose text becomes part of the page: letters, digits, ":/.-_?=%~".
    bool canBuildLinks() const;

    /// Adds the link element to the page and waits until the page has taken it. Anything but a number is left out.
    void plantLink(const QString& number);

    /// Opens the chat of `number`; false when it gave up (too short, or no number at all). The step machine's timers
    /// are off meanwhile, and stay off after a failure: switching them on again is the caller's business.
    bool GOTONOMOR(const QString& number);

    /// Opens the chat of the chat-list entry with exactly this title, by a click on it. False when there is none.
    bool openEntry(const QString& title);

    /// Leaves the contact's chat by opening the dummy contact's. With `DisableRead` "Y" nothing is opened.
    /// `ownPicture` is the address of the account's own picture, which may name the account's number.
    void KE_DUMMY(const QString& ownPicture);

    /// Opens the chat that is opened between messages, the account's own if its picture names the number. False when
    /// there is none.
    bool openDummy(const QString& ownPicture);
    /// Whether that one is on the page.
    bool dummyIsOpen() const { return isOpen(openedDummy_); }

    /// Switches the step machine's timers on again.
    void enableTimers();

    /// What the page showed. Every look that reads the open chat is passed here, so that chats can be told apart.
    void observe(const OpenChat& chat, const QString& linkText) {
        ledger_.observe(chat, clock_.monotonicMs());
        linkText_ = linkText;
        if (onSeen_) onSeen_(chat);
    }
    /// Passes each of these on. May be empty.
    void tell(std::function<void(const OpenChat&)> onSeen) { onSeen_ = std::move(onSeen); }
    /// The chat with this title was clicked in the chat list.
    void clickedName(const QString& title, const OpenChat& before) {
        ledger_.clickedName(title, before, clock_.monotonicMs());
    }
    /// The same where the page did not answer.
    void clickedNameBlindly(const QString& title) { ledger_.clickedNameBlindly(title, clock_.monotonicMs()); }
    bool linkPlanted() const { return !linkText_.isEmpty(); }
    /// The page has pointed the link at `address` on the way, so that this takes no command of its own.
    void linkPointed(const QString& address) { linkText_ = address; }
    /// Whether the conversation on the page is known to be the one of `number` (as given to GOTONOMOR).
    bool isOpen(const QString& number) const { return ledger_.isOpen(number); }
    /// The same for an entry (as given to openEntry).
    bool isEntryOpen(const QString& title) const { return ledger_.isOpen(OpenLedger::entryKey(title)); }
    /// False while a chat that was asked for earlier may still come up.
    bool settled() const { return ledger_.settled(clock_.monotonicMs()); }
    /// Looks at the page until that is so, for `milliseconds` at most: an earlier chat would come up under the one that
    /// is about to be clicked.
    void awaitSettled(qint64 milliseconds);
    /// The page shows a notice that a number can't be opened. Returns the number it is about.
    QString refusedBy(const QString& notice) { return ledger_.refusedBy(notice); }
    /// The chat of `number` was not recognised in time.
    void notRecognised(const QString& number) { ledger_.forgetName(number); }

    /// The click-to-chat address of a number, as the planted link's text shows it.
    QString chatAddress(const QString& number) const;
    /// The same for the link: empty where nothing that may stand in it comes of `number`.
    QString linkAddress(const QString& number) const;
    /// Where the link will most likely point after a message: at the chat that was opened last time. May be empty.
    QString addressAfterMessage() const;

    /// The dummy contact's number: of the settings, or the built-in one.
    QString dummyNumber() const;

 private:
    void clickLink(const QString& number);

    GatewayState& state_;
    const Settings& settings_;
    ChatPage& page_;
    Clock& clock_;
    Pacing& pacing_;
    OpenLedger ledger_;
    QString openedDummy_;
    std::function<void(const OpenChat&)> onSeen_;
    QString linkText_;  // of the link as far as it is known; empty: there is none
};

}  // namespace kibo
