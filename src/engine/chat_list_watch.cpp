#include "engine/chat_list_watch.h"

namespace kibo {

ChatListWatch::ChatListWatch(GatewayState& state, ChatPage& page, Clock& clock, MessageTicks& ticks,
                             ReadingCheck& reading, std::function<void()> BACA_WA)
    : state_(state), page_(page), clock_(clock), ticks_(ticks), reading_(reading), BACA_WA_(std::move(BACA_WA)) {}

void ChatListWatch::Timer2_Timer() {
    // While a message is being sent the page is not to be touched, and a change noticed now would be forgotten.
    if (state_.status.caption != QStringLiteral("Ready") || state_.pageIsTaken()) return;
    const auto glance = page_.watchChatList(QStringLiteral("[%1]").arg(state_.cb_Profil.text));
    if (!glance) return;
    ticks_.see(glance->ticks);
    if (glance->signs) reading_.observe(*glance->signs);
    if (reading_.readingIsHeld()) return;
    // Unread rows count even if the length is known already: what comes in while a chat is left is within the length
    // that was stored then. Those that the last pass has met are not worth another one at once; but a chat that was
    // read and says the same again looks just like one that was not read.
    const qint64 now = clock_.monotonicMs();
    const bool met = handled_ == glance->unread && now - handledAtMs_ < kMeetAgainMs;
    const bool unread = !glance->unread.isEmpty() && !met;
    const bool changed = !handled_ || unread || state_.readAgain || state_.len1.text != QString::number(glance->length);
    if (glance->unread.isEmpty() && handled_) handled_ = QString();
    if (!changed || !BACA_WA_ || now - refusedAtMs_ < kRetryMs) return;
    const int passes = state_.readPasses;
    BACA_WA_();
    if (state_.readPasses == passes) {
        refusedAtMs_ = clock_.monotonicMs();
        return;
    }
    handled_ = glance->unread;
    handledAtMs_ = clock_.monotonicMs();
}

}  // namespace kibo
