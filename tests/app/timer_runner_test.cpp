#include "app/timer_runner.h"

#include <QElapsedTimer>

#include "base/clock.h"
#include "base/error_policy.h"
#include "support/window_fixture.h"

namespace kibo::test {
namespace {

class TimerRunnerTest : public testing::Test {
 protected:
    AnsweringDialogs dialogs;
    ErrorEdge edge{dialogs};
    SystemClock clock;
};

TEST_F(TimerRunnerTest, runsTicksOnlyWhileSwitchedOn) {
    StateTimer timer(20, false);
    int ticks = 0;
    TimerRunner runner(edge);
    runner.add(timer, [&] { ++ticks; });
    clock.wait(100);
    EXPECT_EQ(ticks, 0);
    timer.setEnabled(true);
    QTRY_VERIFY_WITH_TIMEOUT(ticks >= 3, 5000);
    timer.setEnabled(false);
    const int until = ticks;
    clock.wait(100);
    EXPECT_EQ(ticks, until);
    runner.stopAll();
    timer.setEnabled(true);
    clock.wait(100);
    EXPECT_EQ(ticks, until) << "stopped for good";

    StateTimer slow(300, true);
    TimerRunner other(edge);
    other.add(slow, [&] { ++ticks; });
    for (int i = 0; i < 8; ++i) {
        clock.wait(100);
        slow.setEnabled(true);
    }
    EXPECT_EQ(ticks, until) << "switching on starts a full interval";
    QTRY_VERIFY_WITH_TIMEOUT(ticks > until, 5000);
}

TEST_F(TimerRunnerTest, neverEntersATickAgainButLetsOthersRunInItsWait) {
    StateTimer slow(10, true);
    StateTimer quick(10, true);
    int inside = 0, deepest = 0, slowTicks = 0, quickInsideSlow = 0;
    TimerRunner runner(edge);
    runner.add(slow, [&] {
        deepest = std::max(deepest, ++inside);
        ++slowTicks;
        clock.wait(80);
        // Off and on again inside the tick must not start a second one either.
        slow.setEnabled(false);
        slow.setEnabled(true);
        clock.wait(80);
        --inside;
    });
    runner.add(quick, [&] { quickInsideSlow += inside; });
    QTRY_VERIFY_WITH_TIMEOUT(slowTicks >= 3, 10000);
    EXPECT_EQ(deepest, 1);
    EXPECT_GT(quickInsideSlow, 3);
}

TEST_F(TimerRunnerTest, showsOneBoxAtATimeForErrorsThatSurface) {
    StateTimer timers[] = {StateTimer(10, true), StateTimer(10, true)};
    int ticks[] = {0, 0};
    TimerRunner runner(edge);
    for (const int i : {0, 1}) {
        runner.add(timers[i], [&ticks, i] {
            ++ticks[i];
            throw SurfacedError({FailureKind::Database, "no such table: outbox"});
        });
    }
    dialogs.leaveOpen = true;
    for (std::size_t boxes = 1; boxes <= 2; ++boxes) {
        QTRY_VERIFY_WITH_TIMEOUT(dialogs.shown.size() == boxes, 10000);
        const int before[] = {ticks[0], ticks[1]};
        clock.wait(100);
        EXPECT_EQ(dialogs.shown.size(), boxes);
        EXPECT_NE(ticks[0] == before[0], ticks[1] == before[1]) << "the one whose box is open is held";
        dialogs.answerOpen();
    }
    EXPECT_EQ(dialogs.said(0), "Kibo|no such table: outbox");
    EXPECT_EQ(dialogs.shown[0].icon, MessageBox::Icon::Critical);
}

}  // namespace
}  // namespace kibo::test
