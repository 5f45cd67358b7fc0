#include "engine/pacing.h"

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace kibo {
namespace {

class PacingTest : public ::testing::Test {
 protected:
    void second() {
        clock.wait(1000);
        if (state.BreakTime.enabled()) pacing.BreakTime_Timer();
    }

    GatewayState state;
    Settings settings;
    test::ManualClock clock;
    Pacing pacing{state, settings, clock};
};

TEST_F(PacingTest, BatchEndsInABreakAndSendingGoesOnByItself) {
    settings.AfterSend = QStringLiteral("2");
    settings.Break = QStringLiteral("3");
    EXPECT_FALSE(pacing.countMessage());
    EXPECT_EQ(state.Kirim_Cnt.caption, QStringLiteral("1/2"));
    EXPECT_TRUE(pacing.countMessage());
    EXPECT_TRUE(pacing.isPaused());
    EXPECT_EQ(state.cmd_Pause.hint, QStringLiteral("Continue Sending.."));

    second();
    second();
    EXPECT_EQ(state.wait2.caption, QStringLiteral("BREAK - 2 / 3"));
    EXPECT_TRUE(pacing.isBreak());
    second();
    EXPECT_FALSE(pacing.isBreak());
    EXPECT_FALSE(pacing.isPaused());
    EXPECT_EQ(state.HitungKirim.text, QStringLiteral("0"));
    EXPECT_TRUE(state.wait2.visible) << "stays until the next attempt";
}

TEST_F(PacingTest, WithoutBatchesNothingIsCountedAndAnEmptyBreakIsShort) {
    for (const char* none : {"", "0", "x"}) {
        settings.AfterSend = QString::fromLatin1(none);
        EXPECT_FALSE(pacing.countMessage());
    }
    EXPECT_EQ(state.HitungKirim.text, QStringLiteral("0"));
    EXPECT_TRUE(state.Kirim_Cnt.caption.isEmpty());
    settings.AfterSend = QStringLiteral("1");
    EXPECT_TRUE(pacing.countMessage());
    second();
    EXPECT_FALSE(pacing.isBreak()) << "an empty break ends on its first second";
}

TEST_F(PacingTest, PauseButtonTogglesAndStartsAFreshBatch) {
    settings.AfterSend = QStringLiteral("2");
    settings.Break = QStringLiteral("60");
    pacing.countMessage();
    pacing.cmd_Pause_Click();
    EXPECT_TRUE(pacing.isPaused());
    EXPECT_FALSE(pacing.isBreak());
    pacing.cmd_Pause_Click();
    EXPECT_FALSE(pacing.isPaused());
    EXPECT_FALSE(pacing.countMessage()) << "the batch starts anew";
    EXPECT_TRUE(pacing.countMessage());
    pacing.cmd_Pause_Click();  // during a break: ends it
    EXPECT_FALSE(pacing.isBreak());
    EXPECT_FALSE(pacing.isPaused());
}

TEST_F(PacingTest, DwellFollowsTheSpeed) {
    const std::pair<const char*, int> speeds[] = {
        {"NORMAL", 300}, {"SLOW", 5000}, {"VERYSLOW", 12000}, {"normal", 0}, {"", 0}};
    for (const auto& [speed, dwell] : speeds) {
        settings.Speed = QString::fromLatin1(speed);
        EXPECT_EQ(pacing.dwell(), dwell) << speed;
    }
}

TEST_F(PacingTest, WaitsLastAsLongAsAskedByEitherClock) {
    for (const char* vbSleep : {"N", "Y"}) {
        settings.VBSleep = QString::fromLatin1(vbSleep);
        const qint64 start = clock.monotonicMs();
        pacing.WA_WAIT(500);
        EXPECT_NEAR(static_cast<double>(clock.monotonicMs() - start), 500, 10) << vbSleep;
    }
    clock.stopWaiting();
    pacing.WA_WAIT(500);
}

TEST(PacingMidnight, WaitByTheTimeOfDayEndsLateButEnds) {
    GatewayState state;
    Settings settings;
    settings.VBSleep = QStringLiteral("Y");
    test::ManualClock clock(QDateTime(QDate(2026, 3, 14), QTime(23, 59, 59, 800)));
    Pacing pacing(state, settings, clock);
    pacing.WA_WAIT(500);
    EXPECT_GT(clock.monotonicMs(), 500);
    EXPECT_LT(clock.monotonicMs(), 65'000);
}

}  // namespace
}  // namespace kibo
