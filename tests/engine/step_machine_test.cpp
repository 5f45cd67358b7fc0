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
    EXPECT_EQ(publishedQr(), QStringLiteral("wait")) << "an expired code is not offered to be scanned";
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

TEST_F(Steps, WhatStandsInThePageSPlaceIsNamedAndPutRight) {
    const auto opened = [this] { return page.commands.count(QStringLiteral("openStartPage")); };
    page.errorPage = true;
    tick();
    EXPECT_EQ(state.step, QStringLiteral("The page shows an error, trying again"));
    page.otherSite = QStringLiteral("login.hotel.example");
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_TRUE(state.step.contains(page.otherSite)) << state.step.toStdString();
    EXPECT_EQ(opened(), 1) << "not at every tick";
    for (int i = 0; i < 50; ++i) tick();
    EXPECT_EQ(opened(), 2);
    EXPECT_EQ(state.status.caption, QStringLiteral("Ready"));

    page.openElsewhere = true;  // over the chats
    queue(kAni, QStringLiteral("x"));
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_TRUE(state.step.contains(QStringLiteral("open in another window"))) << state.step.toStdString();
    EXPECT_EQ(state.status.caption, QStringLiteral("Not Connect"));
    EXPECT_TRUE(page.delivered.empty());
    page.updateOffered = true;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_TRUE(state.pageNotice.contains(QStringLiteral("update"))) << state.pageNotice.toStdString();
}

TEST_F(Steps, BlankPageIsLoadedAnewAfterMinutes) {
    page.loggedIn = false;
    for (int i = 0; i < 130; ++i) tick();
    EXPECT_TRUE(state.step.contains(QStringLiteral("neither chats nor a QR code"))) << state.step.toStdString();
    EXPECT_EQ(page.commands.count(QStringLiteral("openStartPage")), 0);
    for (int i = 0; i < 500; ++i) tick();
    EXPECT_EQ(page.commands.count(QStringLiteral("openStartPage")), 1);
}

TEST_F(Steps, MissingMessageBoxHoldsSendingBeforeAnyMessageIsLost) {
    page.boxRenamed = true;
    queue(kAni, QStringLiteral("x"));
    for (int i = 0; i < 60; ++i) tick();
    EXPECT_EQ(state.step, QStringLiteral("Page changed: XX_ChatBox"));
    EXPECT_EQ(count(QStringLiteral("outbox")), 1) << "seen in the dummy's chat";
    EXPECT_EQ(page.clicks.count(kDummy), 1 + 1) << "looked at again, once a minute";
    page.boxRenamed = false;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(state.failedCount, 0);
}

TEST_F(Steps, MissingMessageBoxCostsOneMessageWhereNoChatIsOpenedBetween) {
    settings.DisableRead = QStringLiteral("Y");
    for (int i = 0; i < 5; ++i) queue(kAni, QStringLiteral("x"));
    page.boxRenamed = true;
    for (int i = 0; i < 300; ++i) tick();
    EXPECT_EQ(lastReason(), QStringLiteral("Page changed: XX_ChatBox"));
    EXPECT_EQ(state.failedCount, 1);
    EXPECT_EQ(count(QStringLiteral("outbox")), 4);
    page.reload();  // whoever reloads the page has perhaps mended it
    page.boxRenamed = false;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 4u);
}

TEST_F(Steps, ChatWithoutMessageBoxThatAPersonHasOpenedHoldsNothing) {
    tick();
    tick();
    page.open(QStringLiteral("6289999999999"));
    page.boxRenamed = true;
    for (int i = 0; i < 20; ++i) tick();
    EXPECT_EQ(state.step, QStringLiteral("Queue empty"));
}

TEST_F(Steps, LineSaysWhatIsWaitedForAndWhenTheQueueWillBeDone) {
    for (int i = 0; i < 4; ++i) queue(kAni, QStringLiteral("x"));
    runQueue();
    tick();
    EXPECT_EQ(state.doneAbout, QString()) << "nothing waits";
    for (int i = 0; i < 3600; ++i) queue(kAni, QStringLiteral("x"));
    tick();
    const QString soon = state.doneAbout;
    EXPECT_TRUE(soon.startsWith(QStringLiteral("Done about "))) << soon.toStdString();
    gateway.pacing.cmd_Pause_Click();
    tick();
    EXPECT_EQ(state.step, QStringLiteral("Paused"));
    EXPECT_EQ(state.doneAbout, QString());
    ASSERT_TRUE(database.Execute(QStringLiteral("delete from outbox")));
    tick();
    EXPECT_EQ(state.step, QStringLiteral("Paused")) << "also with an empty queue";
    gateway.pacing.cmd_Pause_Click();

    settings.UseMDB = QStringLiteral("N");  // a schedule is a server's
    settings.Scheduled = QStringLiteral("Y");
    const QDateTime due = clock.now().addSecs(90);
    const qint64 id = queue(kAni, QStringLiteral("later"));
    ASSERT_TRUE(database.execute(QStringLiteral("update outbox set wa_time = ? where id = ?"), {due, id}));
    for (int i = 0; i < 30; ++i) tick();
    EXPECT_EQ(state.step, QStringLiteral("Next message at %1").arg(due.toString(QStringLiteral("HH:mm"))));
    runQueue();
    EXPECT_GE(clock.now(), due);
}

TEST(QueueForecast, AddsMessagesAndTheBreaksBeforeTheLastOne) {
    QueueForecast forecast;
    EXPECT_EQ(forecast.untilDone({.waiting = 3}), std::nullopt) << "no message to go by";
    for (const qint64 ms : {1000, 3000}) forecast.messageTook(ms);
    EXPECT_EQ(forecast.untilDone({.waiting = 0}), std::nullopt);
    EXPECT_EQ(forecast.untilDone({.waiting = 3}), 6000);
    EXPECT_EQ(forecast.untilDone({.waiting = 10, .batchSize = 5, .sentInBatch = 0, .breakMs = 60'000}),
              20'000 + 60'000);
    EXPECT_EQ(forecast.untilDone({.waiting = 10, .batchSize = 5, .sentInBatch = 1, .breakMs = 60'000}),
              20'000 + 2 * 60'000);
    EXPECT_EQ(forecast.untilDone({.waiting = 2, .batchSize = 1, .breakMs = 60'000, .breakLeftMs = 7'000}),
              7'000 + 4'000 + 60'000);
    for (int i = 0; i < 20; ++i) forecast.messageTook(500);
    EXPECT_EQ(forecast.untilDone({.waiting = 3}), 1500) << "the last twenty count";
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
    EXPECT_TRUE(state.dboff.visible);
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table away rename to sent")));
    for (int i = 0; i < 10; ++i) tick();
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
