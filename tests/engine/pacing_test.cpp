#include "engine/pacing.h"

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace kibo {
namespace {

class PacingTest : public ::testing::Test {
 protected:
    GatewayState state;
    Settings settings;
    test::ManualClock clock{QDateTime(QDate(2026, 3, 14), QTime(23, 59, 58, 800))};
    Pacing pacing{state, settings, clock};
};

TEST_F(PacingTest, BatchEndsInABreakAndSendingGoesOnByItselfOrByTheButton) {
    EXPECT_FALSE(pacing.countMessage()) << "without batches nothing is counted";
    EXPECT_TRUE(state.Kirim_Cnt.caption.isEmpty());
    settings.AfterSend = u"2"_qs;
    settings.Break = u"2"_qs;
    pacing.countMessage();
    pacing.cmd_Pause_Click();
    EXPECT_TRUE(pacing.isPaused() && !pacing.isBreak());
    pacing.cmd_Pause_Click();
    EXPECT_FALSE(pacing.isPaused());
    EXPECT_FALSE(pacing.countMessage()) << "the batch starts anew";
    EXPECT_EQ(state.Kirim_Cnt.caption, u"1/2"_qs);
    EXPECT_TRUE(pacing.countMessage());
    EXPECT_TRUE(pacing.isPaused() && pacing.isBreak());
    pacing.BreakTime_Timer();
    EXPECT_EQ(state.wait2.caption, u"BREAK - 1 / 2"_qs);
    EXPECT_TRUE(pacing.isBreak());
    pacing.BreakTime_Timer();
    EXPECT_FALSE(pacing.isBreak() || pacing.isPaused());
    EXPECT_TRUE(state.wait2.visible) << "stays until the next attempt";

    settings.AfterSend = u"1"_qs;
    EXPECT_TRUE(pacing.countMessage());
    pacing.cmd_Pause_Click();
    EXPECT_FALSE(pacing.isBreak() || pacing.isPaused()) << "during a break the button ends it";
    settings.Break.clear();
    pacing.countMessage();
    pacing.BreakTime_Timer();
    EXPECT_FALSE(pacing.isBreak()) << "an empty break ends on its first second";
}

TEST_F(PacingTest, WaitsLastAsLongAsAskedByEitherClockAndEndAfterMidnight) {
    const auto lasts = [this] {
        const qint64 start = clock.monotonicMs();
        pacing.WA_WAIT(500);
        return clock.monotonicMs() - start;
    };
    EXPECT_EQ(lasts(), 500);
    settings.VBSleep = u"Y"_qs;
    EXPECT_NEAR(static_cast<double>(lasts()), 500, 10);
    const qint64 acrossMidnight = lasts();
    EXPECT_TRUE(acrossMidnight > 500 && acrossMidnight < 65'000) << acrossMidnight;
    clock.stopWaiting();
    pacing.WA_WAIT(500);
}

}  // namespace
}  // namespace kibo
