#include "engine/chat_target.h"

#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr int kSmallWaitMs = 100;
constexpr int kTriesPerTabLook = 5;

Failure failed(const char* why) {
    return {FailureKind::NotFound, why};
}

}  // namespace

ChatTarget::ChatTarget(const GatewayState& state, ChatPage& page, const ElementTable& elements, Clock& clock,
                       Pacing& pacing, ChatOpener& opener, LocatorCheck& locators, MessageTicks& ticks)
    : state_(state),
      page_(page),
      elements_(elements),
      clock_(clock),
      pacing_(pacing),
      opener_(opener),
      locators_(locators),
      ticks_(ticks),
      search_(page, clock, pacing) {}

bool ChatTarget::isByName(const QString& mode, const QString& destination) {
    if (mode == QStringLiteral("1") || mode == QStringLiteral("2")) return mode == QStringLiteral("2");
    return !isPositiveNumber(cleanedNumber(destination));
}

Result<ChatLook> ChatTarget::openNumber(const QString& number) {
    const QString cleaned = cleanedNumber(number);
    if (!opener_.GOTONOMOR(number)) {
        opener_.enableTimers();
        return failed(isPositiveNumber(cleaned) ? "the number is too short" : "the number holds more than digits");
    }
    if (!state_.mode9) pacing_.WA_WAIT(pacing_.dwell());
    Result<ChatLook> chat = awaitChat(cleaned, [&] { return opener_.isOpen(cleaned); });
    if (chat && chat.value().linkText != opener_.chatAddress(cleaned))
        return failed("the page holds another chat's link");
    return chat;
}

Result<ChatLook> ChatTarget::openName(const QString& name) {
    const Result<QString> title = search_.find(name);
    const bool clicked = title && opener_.openEntry(title.value());
    search_.leave();
    if (!title) return title.failure();
    if (!clicked) return failed("the chat's entry is not in the list any more");
    return awaitChat({}, [&] { return opener_.isEntryOpen(title.value()); });
}

Result<ChatLook> ChatTarget::awaitChat(const QString& number, const std::function<bool()>& isOpen) {
    for (int tries = 1;; ++tries) {
        pacing_.WA_WAIT(kSmallWaitMs);
        if (clock_.waitingStopped()) return failed("stopped by the operator");
        const auto look = page_.lookAtChat(true);
        if (look) opener_.observe(look->chat, look->linkText);
        if (look) ticks_.see(look->ticks);
        if (look && look->hasNotice && matchesNotice(elements_[QStringLiteral("XXInfo3")], look->notice)) {
            page_.pressEscape();
            pacing_.WA_WAIT(kSmallWaitMs);
            const QString refused = opener_.refusedBy(look->notice);
            if (!number.isEmpty() && refused == number) return failed("the number is not on WhatsApp");
        }
        if (tries > ChatOpener::kTryLimit) {
            const QString missing = look ? LocatorCheck::missingIn(look->chat, look->hasBox) : QString();
            if (!missing.isEmpty() && (isOpen() || missing != QStringLiteral("XX_ChatBox"))) {
                locators_.missed(missing);
                return Failure{FailureKind::NotFound, "Page changed: " + missing.toStdString()};
            }
            opener_.notRecognised(number);
            return failed("the chat did not open in time");
        }
        if (look && CEK_FAIL(*look, number, isOpen())) return *look;
        // A link that the page did not take has opened a tab, and a page behind another tab is slowed down.
        if (tries % kTriesPerTabLook == 1) page_.closeStrayTabs();
    }
}

/// Repairs a lost chat link; true when the chat asked for is there, its message box ready for typing.
bool ChatTarget::CEK_FAIL(const ChatLook& look, const QString& number, bool isOpen) {
    if (look.linkText.isEmpty()) {
        opener_.plantLink(number);
        return false;
    }
    return look.hasBox && look.boxFocused && isOpen;
}

}  // namespace kibo
