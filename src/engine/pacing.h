#pragma once

#include <QString>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"

namespace kibo {

/// The pace of sending: the waits between browser actions, the dwell on a freshly opened chat, batches with
/// breaks, and the operator's pause. What it decides stands in GatewayState (`cmd_Pause`, `BreakTime`, counters).
class Pacing {
 public:
    Pacing(GatewayState& state, const Settings& settings, Clock& clock);

    /// Returns after `milliseconds`; clicks and other timers' ticks run meanwhile. With `VBSleep` "Y" the wait is
    /// measured in seconds since midnight, which restarts from 0: such a wait across midnight ends late.
    void WA_WAIT(int milliseconds);

    /// Milliseconds to dwell on a freshly opened chat, by `Speed`.
    int dwell() const;

    /// One more message has been tried: counts the batch, and begins a break after the last one. Returns true when
    /// a break begins; the caller then refreshes the queue.
    bool countMessage();

    /// Tick of `BreakTime`, every second while a break lasts.
    void BreakTime_Timer();
    /// The pause button: pauses, or continues with a fresh batch.
    void cmd_Pause_Click();

    bool isPaused() const { return state_.cmd_Pause.caption == QStringView(kPausedCaption); }
    bool isBreak() const { return state_.BreakTime.enabled(); }

    /// Captions of the pause button; in the symbol font they show "pause" and "play".
    static constexpr const char16_t* kRunningCaption = u";";
    static constexpr const char16_t* kPausedCaption = u"4";

    void takeRunningLook();
    void takePausedLook();

 private:
    int batchSize() const { return settings_.AfterSend.toInt(); }

    GatewayState& state_;
    const Settings& settings_;
    Clock& clock_;
};

}  // namespace kibo
