#include "engine/locator_check.h"

#include "base/log.h"

namespace kibo {
namespace {

/// How long the page may take to draw an opened chat.
constexpr qint64 kDrawingMs = 5'000;
constexpr qint64 kLookAgainPauseMs = 60'000;
/// Without any chat to look at, the next message is tried after so long.
constexpr qint64 kLongestBlindHoldMs = 300'000;

}  // namespace

QString LocatorCheck::missingIn(const OpenChat& chat, bool hasBox) {
    if (!chat.open) return hasBox ? QStringLiteral("XX_Conversation") : QString();
    if (!hasBox) return QStringLiteral("XX_ChatBox");
    return chat.title.isEmpty() ? QStringLiteral("XX_To") : QString();
}

void LocatorCheck::observe(const PageLook& look, bool ownChat) {
    const QString missing = missingIn(look.chat, look.hasBox);
    const qint64 now = clock_.monotonicMs();
    if (sendingIsHeld()) {
        const bool found = look.chat.open && missing.isEmpty();
        if (found) release("everything is found again");
        if (look.linkText.isEmpty()) release("the page was loaded anew");
        if (!look.chat.open && now - heldSinceMs_ >= kLongestBlindHoldMs) release("trying again");
    }
    if (missing.isEmpty() || !(ownChat || missing == QStringLiteral("XX_Conversation"))) {
        missingSinceMs_.reset();
        return;
    }
    if (!missingSinceMs_) missingSinceMs_ = now;
    if (now - *missingSinceMs_ >= kDrawingMs) hold(missing);
}

void LocatorCheck::missed(const QString& locator) {
    if (!locator.isEmpty()) hold(locator);
}

bool LocatorCheck::shallLookAgain() {
    if (clock_.monotonicMs() < lookAgainMs_) return false;
    lookAgainMs_ = clock_.monotonicMs() + kLookAgainPauseMs;
    return true;
}

void LocatorCheck::hold(const QString& locator) {
    if (state_.pageChanged == locator) return;
    state_.pageChanged = locator;
    heldSinceMs_ = clock_.monotonicMs();
    lookAgainMs_ = heldSinceMs_ + kDrawingMs;
    log::error("engine", QStringLiteral("sending stops: %1 matches nothing in an open chat, the page seems to have "
                                        "changed; correct its row in element.sys")
                             .arg(locator));
}

void LocatorCheck::release(const char* why) {
    if (!sendingIsHeld()) return;
    state_.pageChanged.clear();
    log::info("engine", QStringLiteral("sending goes on: %1").arg(QString::fromLatin1(why)));
}

}  // namespace kibo
