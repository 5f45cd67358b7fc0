#pragma once

#include <QString>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// The ticks in which the page shows no chats: publishes the login code while there is one, and brings the page back
/// when something else stands in its place.
class LoginWatch {
 public:
    /// All must outlive it. `programFolder` takes the code's picture where `CaptureImage` names no folder.
    LoginWatch(GatewayState& state, const Settings& settings, Database& database, ChatPage& page, const Clock& clock,
               QString programFolder);

    /// One tick. Returns what is waited for, in words for the operator.
    QString tick(const PageLook& look);
    /// The chats are there.
    void loggedIn();

 private:
    void publish(const QString& code);
    void showPicture();
    void hidePicture();
    QString awaitPage(const PageLook& look);
    QString bringBack(const QString& what, qint64 pauseMs);
    bool due(qint64 pauseMs);

    GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    ChatPage& page_;
    const Clock& clock_;
    const QString programFolder_;

    std::optional<qint64> askedMs_;       // the page was asked for again, or pressed
    std::optional<qint64> blankSinceMs_;  // neither chats nor code
    bool pictureRefused_ = false;
};

}  // namespace kibo
