#include "engine/chat_opener.h"

#include <QRegularExpression>
#include <exception>

#include "base/log.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

const QString kBuiltInDummy = QStringLiteral("6281200000001");

}  // namespace

ChatOpener::ChatOpener(GatewayState& state, const Settings& settings, ChatPage& page, Clock& clock, Pacing& pacing)
    : state_(state), settings_(settings), page_(page), clock_(clock), pacing_(pacing) {}

QString ChatOpener::chatAddress(const QString& number) const {
    return (settings_.ChatAddress.isEmpty() ? QString(kDefaultChatAddress) : settings_.ChatAddress) + number;
}

// What stands in the link becomes part of the page, so nothing but digits and a plain address may get there.
QString ChatOpener::linkAddress(const QString& number) const {
    const QString cleaned = cleanedNumber(number);
    return isPositiveNumber(cleaned) && canBuildLinks() ? chatAddress(cleaned) : QString();
}

QString ChatOpener::addressAfterMessage() const {
    return isYes(settings_.DisableRead) ? QString() : linkAddress(openedDummy_);
}

bool ChatOpener::canBuildLinks() const {
    static const QRegularExpression kPlain(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9:/._?=%~-]+")));
    return kPlain.match(chatAddress({})).hasMatch();
}

QString ChatOpener::dummyNumber() const {
    const QString configured = destinationNumber(state_.txt_DUMMY.text, settings_.Prefix, settings_.CountryCode);
    return isPositiveNumber(configured) ? configured : kBuiltInDummy;
}

void ChatOpener::plantLink(const QString& number) {
    state_.wait.visible = false;
    const QString cleaned = cleanedNumber(number);
    const QString address = chatAddress(isPositiveNumber(cleaned) ? cleaned : QString());
    linkText_ = page_.plantLink(address) ? address : QString();
    if (linkPlanted()) log::info("engine", QStringLiteral("link planted"));
    clock_.wait(kPlantWaitMs);
}

bool ChatOpener::GOTONOMOR(const QString& number) {
    // An error that surfaces from here leaves nobody who could switch the timers on again.
    struct SwitchOnWhenBrokenOff {
        ChatOpener& opener;
        int exceptions = std::uncaught_exceptions();
        ~SwitchOnWhenBrokenOff() {
            if (std::uncaught_exceptions() > exceptions) opener.enableTimers();
        }
    } const timers{*this};
    const QString cleaned = cleanedNumber(number);
    const QString address = linkAddress(cleaned);
    if (!address.isEmpty() && !linkPlanted()) plantLink(cleaned);
    state_.Timer_KIBO.setEnabled(false);
    state_.Timer1.setEnabled(false);
    if (address.isEmpty()) return false;

    if (linkText_ != address) {
        if (!page_.pointLink(address)) {  // a new page, or one that was loaded anew
            plantLink(cleaned);
            page_.pointLink(address);
        }
        linkText_ = address;
    }
    pacing_.WA_WAIT(500);
    for (int attempt = 1; attempt <= kTryLimit; ++attempt) {
        pacing_.WA_WAIT(50);
        if (cleaned.size() < kShortestNumber) continue;
        clickLink(cleaned);
        enableTimers();
        return true;
    }
    return false;
}

void ChatOpener::clickLink(const QString& number) {
    const auto clicked = page_.clickLink(chatAddress(number));
    if (clicked) {
        ledger_.clicked(number, clicked->before, clock_.monotonicMs());
        state_.len1.text = QString::number(clicked->chatListLength);
    } else {
        // The answer may have been lost after the click: its chat may still come up.
        ledger_.clickedBlindly(number, clock_.monotonicMs());
    }
}

bool ChatOpener::openEntry(const QString& title) {
    const QString key = OpenLedger::entryKey(title);
    const auto click = page_.clickEntry(title);
    if (!click) {
        ledger_.clickedBlindly(key, clock_.monotonicMs());
    } else if (click->happened) {
        ledger_.clicked(key, click->before, clock_.monotonicMs());
    }
    return !click || click->happened;
}

void ChatOpener::KE_DUMMY(const QString& ownPicture) {
    if (!isYes(settings_.DisableRead)) openDummy(ownPicture);
}

bool ChatOpener::openDummy(const QString& ownPicture) {
    const QString own = numberInPicture(ownPicture);
    openedDummy_ = own.isEmpty() ? dummyNumber() : own;
    const bool clicked = GOTONOMOR(openedDummy_);
    if (!clicked) enableTimers();
    return clicked;
}

void ChatOpener::awaitSettled(qint64 milliseconds) {
    constexpr int kLookEveryMs = 100;
    const qint64 latest = clock_.monotonicMs() + milliseconds;
    while (!settled() && clock_.monotonicMs() < latest && !clock_.waitingStopped()) {
        if (const auto look = page_.lookAtChat(false)) observe(look->chat, look->linkText);
        if (!settled()) pacing_.WA_WAIT(kLookEveryMs);
    }
}

void ChatOpener::enableTimers() {
    state_.Timer_KIBO.setEnabled(true);
    state_.Timer1.setEnabled(true);
}

}  // namespace kibo
