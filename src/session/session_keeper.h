#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/browser.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Opens the browser session, and opens it again when it was lost: at once the first time, then with pauses that
/// double from 5 seconds to 5 minutes. They begin anew only after a session that has proved itself, by a message sent
/// or by a minute of "Ready": one that comes up and breaks down again doesn't count.
class SessionKeeper {
 public:
    struct Needs {
        GatewayState& state;
        const Settings& settings;
        Clock& clock;
        std::function<Result<void>(const LaunchOptions&)> openBrowser;
        std::function<void()> closeBrowser;
        std::function<void()> showState = {};    ///< brings the window in line before the browser starts; may be empty
        std::function<void()> readProfile = {};  ///< see LaunchOptions; may be empty
    };
    /// What it is given must outlive it.
    explicit SessionKeeper(Needs needs) : n_(std::move(needs)) {}

    /// Starts the browser now. One that can't be started is tried again if it was lost or `AutoStart` is "Y".
    void cmd_OpenWA_Click();
    /// Ends the session, and doesn't open it again until the operator does.
    void close();
    /// Tick of `timer_start`: the one automatic start.
    void timer_start_Timer();
    /// Part of every tick of `Timer1`: opens a lost session when its pause is over, and says so until then.
    void keepOpen();

 private:
    void noticeProof();
    void planNextTry();
    qint64 nowMs() const { return n_.clock.monotonicMs(); }

    Needs n_;
    bool opening_ = false;
    bool closed_ = false;               // by the operator
    qint64 pauseMs_ = 0;                // before the next try; 0: at once
    std::optional<qint64> reopenAtMs_;  // while a lost session waits for it
    std::optional<qint64> readySinceMs_;
    int sentBefore_ = 0;  // when the session was opened
    QString lastProblem_;
};

}  // namespace kibo
