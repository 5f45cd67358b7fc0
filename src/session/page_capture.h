#pragma once

#include <QString>

#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"

namespace kibo {

/// The page's picture for whoever watches this instance from outside: `UseCapture` "Y" has it written into the folder
/// `CaptureImage` as "screen", the profile's six digits and ".jpg".
class PageCapture {
 public:
    /// All must outlive it. `programFolder` takes the picture where `CaptureImage` names no folder.
    PageCapture(const GatewayState& state, const Settings& settings, ChatPage& page, QString programFolder)
        : state_(state), settings_(settings), page_(page), programFolder_(std::move(programFolder)) {}

    /// Replaces the picture in one step, so that no reader meets half of it; leaves the page alone while it is needed
    /// for a message or the inbox. A picture that can't be written is told once in the log.
    void capture();

 private:
    const GatewayState& state_;
    const Settings& settings_;
    ChatPage& page_;
    QString programFolder_;
    bool refused_ = false;
};

}  // namespace kibo
