#include "engine/step_machine.h"

#include "engine/chat_list_watch.h"
#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
const QString kAni = QStringLiteral("6281111111111");

class Steps : public Engine {
 protected:
    Steps() { EXPECT_TRUE(database.Execute(QStringLiteral("insert into web_user (id, qr) values ('7', '')"))); }
    QString publishedQr() { return database.OpenRecordset(QStringLiteral("select qr from web_user")).field(0); }
};

TEST_F(Steps, LoginCodeIsPublishedUntilLoggedIn) {
    page.loggedIn = false;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(publishedQr(), QStringLiteral("wait"));
    EXPECT_EQ(state.status.background, colour::kRed);
    page.qrCodes = 1;
    page.qrData = QStringLiteral("2@it's,a=code");
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(publishedQr(), page.qrData);
    page.qrReloads = 2;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(page.reloadsClicked, 0) << "two reload controls are left alone";
    page.qrReloads = 1;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(page.reloadsClicked, 1);
    page.loggedIn = true;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(state.status.caption, QStringLiteral("Ready"));
    EXPECT_EQ(state.status.background, colour::kGreen);
    EXPECT_FALSE(state.cmd_OpenWA.enabled);
}

TEST_F(Steps, PhoneThatIsOffStopsSending) {
    queue(kAni, QStringLiteral("x"));
    page.banner = QStringLiteral(" phone NOT connected ");
    tick();
    EXPECT_EQ(state.status.caption, QStringLiteral("Not Connect"));
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    page.banner = QStringLiteral("Get WhatsApp for Windows");
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, DummyIsOpenedOncePerConnectionAndLinkPlantedOncePerPage) {
    for (int i = 0; i < 3; ++i) tick();
    EXPECT_EQ(page.clicks, QStringList(kDummy));
    EXPECT_EQ(page.commands.count(QStringLiteral("plantLink")), 1);
    page.reload();
    queue(kAni, QStringLiteral("x"));
    runQueue();
    EXPECT_EQ(page.commands.count(QStringLiteral("plantLink")), 2);
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, BrowserThatHasGoneEndsTheSession) {
    tick();
    state.Timer_KIBO.setEnabled(true);
    page.presence = PageLook::Presence::Gone;
    queue(kAni, QStringLiteral("x"));
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(page.ended, 1);
    EXPECT_FALSE(state.Timer_KIBO.enabled());
    EXPECT_EQ(state.waurl.text, QStringLiteral("!!"));
    EXPECT_EQ(state.status.caption, QStringLiteral("Not Connect"));
    EXPECT_FALSE(state.dummyOpened) << "the next connection opens it again";
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
}

TEST_F(Steps, PageThatCannotBeLoadedIsAskedForAgain) {
    page.noPage = true;
    tick();
    page.noPage = true;  // still not
    tick();
    EXPECT_TRUE(state.step.contains(QStringLiteral("can't be reached"))) << state.step.toStdString();
    page.noPage = false;
    tick();
    EXPECT_EQ(state.status.caption, QStringLiteral("Ready"));
    EXPECT_EQ(page.commands.count(QStringLiteral("openStartPage")), 1);
}

TEST_F(Steps, PageThatStaysSilentIsGivenUpAfterAMinute) {
    tick();
    page.silent = true;
    for (int i = 0; i < 100; ++i) tick();
    EXPECT_EQ(page.ended, 0);
    for (int i = 0; i < 30; ++i) tick();
    EXPECT_EQ(page.ended, 1);
    EXPECT_EQ(state.waurl.text, QStringLiteral("!!"));
}

TEST_F(Steps, ChatAddressThatCannotStandInALinkIsNamed) {
    settings.ChatAddress = QStringLiteral("https://x/\" onclick=");
    queue(kAni, QStringLiteral("x"));
    for (int i = 0; i < 3; ++i) tick();
    EXPECT_TRUE(state.step.contains(QStringLiteral("ChatAddress"))) << state.step.toStdString();
    EXPECT_EQ(page.commands.count(QStringLiteral("plantLink")), 0);
    settings.ChatAddress = QStringLiteral("https://x/send?phone=");
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, NothingIsSentWhilePausedOnBreakOrReading) {
    tick();
    queue(kAni, QStringLiteral("x"));
    gateway.pacing.cmd_Pause_Click();
    tick();
    EXPECT_EQ(state.step, QStringLiteral("Paused"));
    gateway.pacing.cmd_Pause_Click();
    state.waitread.visible = true;
    tick();
    state.waitread.visible = false;
    state.BreakTime.setEnabled(true);
    tick();
    state.BreakTime.setEnabled(false);
    state.busy = true;
    tick();
    EXPECT_TRUE(page.delivered.empty());
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    state.busy = false;
    tick();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, BatchOfOneBreaksAfterEveryMessage) {
    settings.AfterSend = QStringLiteral("1");
    settings.Break = QStringLiteral("60");
    queue(kAni, QStringLiteral("x"));
    queue(kAni, QStringLiteral("y"));
    for (int i = 0; i < 5; ++i) tick();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_TRUE(state.BreakTime.enabled());
    EXPECT_EQ(state.Outbox_Cnt.caption, QStringLiteral("1"));
}

TEST_F(Steps, SendOnlyInstanceNeverOpensTheDummy) {
    settings.DisableRead = QStringLiteral("Y");
    queue(kAni, QStringLiteral("x"));
    runQueue();
    EXPECT_EQ(page.clicks, QStringList(kAni));
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, StoreThatIsOffIsShownAndNothingIsTaken) {
    tick();
    queue(kAni, QStringLiteral("x"));
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table sent rename to away")));
    tick();
    EXPECT_TRUE(page.delivered.empty()) << "what can't be recorded is not sent";
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table away rename to sent")));
    tick();
    EXPECT_EQ(page.delivered.size(), 1u);
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table outbox rename to away")));
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_TRUE(state.dboff.visible);
}

TEST_F(Steps, ChatListWatchReadsOnAChangeAndNeverDuringASend) {
    int passes = 0;
    ChatListWatch watch(state, page, clock, [&] {
        ++passes;
        ++state.readPasses;
        state.len1.text = QString::number(page.chatListLength);
    });
    watch.Timer2_Timer();
    EXPECT_EQ(passes, 0) << "not connected";
    tick();
    watch.Timer2_Timer();
    watch.Timer2_Timer();
    EXPECT_EQ(passes, 1) << "once at the start, whatever the length";
    page.chatListLength = 99;
    state.stepRunning = true;
    watch.Timer2_Timer();
    EXPECT_EQ(passes, 1);
    state.stepRunning = false;
    watch.Timer2_Timer();
    watch.Timer2_Timer();
    EXPECT_EQ(passes, 2);
    page.list = {{QStringLiteral("Ani"), QStringLiteral("1"), {QStringLiteral("same length")}}};
    watch.Timer2_Timer();
    watch.Timer2_Timer();
    EXPECT_EQ(passes, 3) << "a new unread message, once, though the length is the same";
}

}  // namespace
}  // namespace kibo
