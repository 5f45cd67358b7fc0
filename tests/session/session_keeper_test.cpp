#include "session/session_keeper.h"

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace kibo::test {
namespace {

/// A keeper whose browser opens or not as the test likes; time moves by `seconds`, a tick of Timer1 in each.
class SessionKeeperTest : public ::testing::Test {
 protected:
    SessionKeeperTest() { state.cb_Profil.text = u"1"_qs; }

    void seconds(int count) {
        for (int i = 0; i < count; ++i) {
            clock.wait(1000);
            keeper.keepOpen();
        }
    }
    void lose() {
        state.waurl.text = u"!!"_qs;
        state.status.caption = u"Not Connect"_qs;
        state.Timer_KIBO.setEnabled(false);
    }
    /// Seconds until it is opened again after being lost now.
    int reopenedAfter() {
        lose();
        const int before = opened;
        for (int i = 0; i < 1000; ++i) {
            seconds(1);
            if (opened > before) return i;
        }
        return -1;
    }

    ManualClock clock;
    GatewayState state;
    Settings settings;
    int opened = 0;
    bool works = true;
    SessionKeeper keeper{{.state = state,
                          .settings = settings,
                          .clock = clock,
                          .openBrowser = [this](const LaunchOptions& options) -> Result<void> {
                              ++opened;
                              if (!works) return Failure{FailureKind::Io, "no driver", {}};
                              options.armStepMachine();
                              return {};
                          },
                          .closeBrowser = [] {}}};
};

TEST_F(SessionKeeperTest, PausesGrowUntilASessionHasProvedItself) {
    keeper.cmd_OpenWA_Click();
    EXPECT_TRUE(state.Timer_KIBO.enabled());
    EXPECT_FALSE(state.cb_Profil.enabled);
    for (const int pause : {0, 5, 10, 20, 40, 80, 160, 300, 300}) {
        EXPECT_EQ(reopenedAfter(), pause);
        state.status.caption = u"Ready"_qs;  // it comes up, and breaks down again
        seconds(3);
    }
    ++state.sentCount;
    EXPECT_EQ(reopenedAfter(), 0) << "a message went out";
    EXPECT_EQ(reopenedAfter(), 5);
    state.status.caption = u"Ready"_qs;
    seconds(62);
    EXPECT_EQ(reopenedAfter(), 0) << "it has lasted";
}

TEST_F(SessionKeeperTest, CountsDownAndTellsWhyAndTheOperatorNeedNotWait) {
    works = false;
    keeper.cmd_OpenWA_Click();
    EXPECT_EQ(state.step, u"no driver"_qs);
    seconds(60);
    EXPECT_EQ(opened, 1) << "what was never there is not opened again by itself";
    settings.AutoStart = u"Y"_qs;
    keeper.timer_start_Timer();
    seconds(2);
    EXPECT_EQ(state.step, u"Opening WhatsApp again in 3 s: no driver"_qs);
    works = true;
    keeper.cmd_OpenWA_Click();
    EXPECT_EQ(opened, 3);
    EXPECT_EQ(state.waurl.text, QString());
    keeper.close();
    lose();
    seconds(400);
    EXPECT_EQ(opened, 3) << "closed by the operator";
    EXPECT_EQ(state.step, u"WhatsApp is not open"_qs);
}

}  // namespace
}  // namespace kibo::test
