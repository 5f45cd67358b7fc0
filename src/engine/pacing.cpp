#include "engine/pacing.h"

#include "base/log.h"

namespace kibo {
namespace {

// A wait by the time of day that runs across midnight would last until the same time never comes; it is ended
// this long after it should have.
constexpr qint64 kLongestOverrunMs = 60'000;
constexpr int kPollMs = 10;

double secondsSinceMidnight(const Clock& clock) {
    return clock.now().time().msecsSinceStartOfDay() / 1000.0;
}

}  // namespace

Pacing::Pacing(GatewayState& state, const Settings& settings, Clock& clock)
    : state_(state), settings_(settings), clock_(clock) {
    takeRunningLook();
}

void Pacing::WA_WAIT(int milliseconds) {
    if (!isYes(settings_.VBSleep)) {
        clock_.wait(milliseconds);
        return;
    }
    const double end = secondsSinceMidnight(clock_) + milliseconds / 1000.0;
    const qint64 latest = clock_.monotonicMs() + milliseconds + kLongestOverrunMs;
    while (secondsSinceMidnight(clock_) < end && !clock_.waitingStopped()) {
        if (clock_.monotonicMs() > latest) {
            log::warning("engine",
                         QStringLiteral("a wait of %1 ms ran across midnight and was ended").arg(milliseconds));
            return;
        }
        clock_.wait(kPollMs);
    }
}

int Pacing::dwell() const {
    if (settings_.Speed == QStringLiteral("NORMAL")) return 300;
    if (settings_.Speed == QStringLiteral("SLOW")) return 5000;
    if (settings_.Speed == QStringLiteral("VERYSLOW")) return 12000;
    return 0;
}

bool Pacing::countMessage() {
    // Paused in the middle of a message: a break would end the pause, and continuing begins a fresh batch anyway.
    if (batchSize() <= 0 || isPaused()) return false;
    const int sent = state_.HitungKirim.text.toInt() + 1;
    state_.HitungKirim.text = QString::number(sent);
    state_.Kirim_Cnt.caption = QStringLiteral("%1/%2").arg(sent).arg(settings_.AfterSend);
    if (sent < batchSize()) {
        state_.wait.visible = false;
        return false;
    }
    state_.HitungKirim.text = QStringLiteral("0");
    state_.DetikBreak.text = QStringLiteral("0");
    takePausedLook();
    state_.wait.visible = false;
    state_.BreakTime.setEnabled(true);
    log::info("engine", QStringLiteral("batch of %1 done, break of %2 s").arg(sent).arg(settings_.Break.toInt()));
    return true;
}

void Pacing::BreakTime_Timer() {
    clock_.runPendingEvents();
    // A click on the pause button among those events has ended the break.
    if (!state_.BreakTime.enabled()) return;
    const int seconds = state_.DetikBreak.text.toInt() + 1;
    state_.DetikBreak.text = QString::number(seconds);
    state_.wait2.caption = QStringLiteral("BREAK - %1 / %2").arg(seconds).arg(settings_.Break);
    state_.wait2.visible = true;
    takePausedLook();
    state_.wait.visible = false;
    if (seconds < settings_.Break.toDouble()) return;
    takeRunningLook();
    state_.DetikBreak.text = QStringLiteral("0");
    state_.HitungKirim.text = QStringLiteral("0");
    state_.BreakTime.setEnabled(false);
    log::info("engine", QStringLiteral("break ended"));
}

void Pacing::cmd_Pause_Click() {
    if (isPaused()) {
        takeRunningLook();
    } else {
        takePausedLook();
        state_.wait.visible = false;
    }
    state_.HitungKirim.text = QStringLiteral("0");
    state_.DetikBreak.text = QStringLiteral("0");
    state_.BreakTime.setEnabled(false);
    log::info("engine", isPaused() ? QStringLiteral("paused") : QStringLiteral("continued"));
}

void Pacing::takeRunningLook() {
    state_.cmd_Pause.caption = QString::fromUtf16(kRunningCaption);
    state_.cmd_Pause.hint = QStringLiteral("Pause..");
    state_.cmd_Pause.background = colour::kLightGreen;
}

void Pacing::takePausedLook() {
    state_.cmd_Pause.caption = QString::fromUtf16(kPausedCaption);
    state_.cmd_Pause.hint = QStringLiteral("Continue Sending..");
    state_.cmd_Pause.background = colour::kLightRed;
}

}  // namespace kibo
