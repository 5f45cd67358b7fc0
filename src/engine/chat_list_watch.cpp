#include "engine/chat_list_watch.h"

namespace kibo {

ChatListWatch::ChatListWatch(GatewayState& state, ChatPage& page, std::function<void()> BACA_WA)
    : state_(state), page_(page), BACA_WA_(std::move(BACA_WA)) {}

void ChatListWatch::Timer2_Timer() {
    // While a message is being sent the page is not to be touched, and a change noticed now would be forgotten.
    if (state_.status.caption != QStringLiteral("Ready") || state_.stepRunning) return;
    const auto length = page_.watchChatList(QStringLiteral("[%1]").arg(state_.cb_Profil.text));
    if (!length || state_.len1.text == QString::number(*length)) return;
    if (BACA_WA_) BACA_WA_();
    state_.len1.text = QString::number(*length);
}

}  // namespace kibo
