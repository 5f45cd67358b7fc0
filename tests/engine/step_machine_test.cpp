#include "engine/step_machine.h"

#include "engine/chat_list_watch.h"
#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
const QString kAni = u"6281111111111"_qs;

class Steps : public Engine {
 protected:
    Steps() { EXPECT_TRUE(database.Execute(u"insert into web_user (id, qr) values ('7', '')"_qs)); }
    QString publishedQr() { return field("select qr from web_user"); }
};

TEST_F(Steps, LoginCodeIsPublishedUntilLoggedIn) {
    page.loggedIn = false;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(publishedQr(), u"wait"_qs);
    EXPECT_EQ(state.status.background, colour::kRed);
    page.qrCodes = 1;
    page.qrData = u"2@it's,a=code"_qs;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(publishedQr(), page.qrData);
    page.qrReloads = 2;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(page.reloadsClicked, 0) << "two reload controls are left alone";
    page.qrReloads = 1;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(page.reloadsClicked, 1);
    EXPECT_EQ(publishedQr(), u"wait"_qs) << "an expired code is not offered to be scanned";
    page.loggedIn = true;
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(state.status.caption, u"Ready"_qs);
    EXPECT_EQ(state.status.background, colour::kGreen);
    EXPECT_FALSE(state.cmd_OpenWA.enabled);
}

TEST_F(Steps, PhoneThatIsOffStopsSending) {
    queue(kAni, u"x"_qs);
    page.banner = u" phone NOT connected "_qs;
    tick();
    EXPECT_EQ(state.status.caption, u"Not Connect"_qs);
    EXPECT_EQ(count("outbox"), 1);
    page.banner = u"Get WhatsApp for Windows"_qs;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, DummyIsOpenedOncePerConnectionAndLinkPlantedOncePerPage) {
    ticks(3);
    EXPECT_EQ(page.clicks, QStringList(kDummy));
    EXPECT_EQ(page.commands.count(u"plantLink"_qs), 1);
    page.reload();
    queue(kAni, u"x"_qs);
    runQueue();
    EXPECT_EQ(page.commands.count(u"plantLink"_qs), 2);
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, BrowserThatHasGoneEndsTheSession) {
    tick();
    state.Timer_KIBO.setEnabled(true);
    page.presence = PageLook::Presence::Gone;
    queue(kAni, u"x"_qs);
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(page.ended, 1);
    EXPECT_FALSE(state.Timer_KIBO.enabled());
    EXPECT_EQ(state.waurl.text, u"!!"_qs);
    EXPECT_EQ(state.status.caption, u"Not Connect"_qs);
    EXPECT_FALSE(state.dummyOpened) << "the next connection opens it again";
    EXPECT_EQ(count("outbox"), 1);
}

TEST_F(Steps, PageThatCannotBeLoadedIsAskedForAgain) {
    page.noPage = true;
    tick();
    page.noPage = true;  // still not
    tick();
    EXPECT_TRUE(state.step.contains(u"can't be reached"_qs)) << state.step.toStdString();
    page.noPage = false;
    tick();
    EXPECT_EQ(state.status.caption, u"Ready"_qs);
    EXPECT_EQ(page.commands.count(u"openStartPage"_qs), 1);
}

TEST_F(Steps, WhatStandsInThePageSPlaceIsNamedAndPutRight) {
    const auto opened = [this] { return page.commands.count(u"openStartPage"_qs); };
    page.errorPage = true;
    tick();
    EXPECT_EQ(state.step, u"The page shows an error, trying again"_qs);
    page.otherSite = u"login.hotel.example"_qs;
    ticks(20);
    EXPECT_TRUE(state.step.contains(page.otherSite)) << state.step.toStdString();
    EXPECT_EQ(opened(), 1) << "not at every tick";
    ticks(50);
    EXPECT_EQ(opened(), 2);
    EXPECT_EQ(state.status.caption, u"Ready"_qs);

    page.openElsewhere = true;  // over the chats
    queue(kAni, u"x"_qs);
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_TRUE(state.step.contains(u"open in another window"_qs)) << state.step.toStdString();
    EXPECT_EQ(state.status.caption, u"Not Connect"_qs);
    EXPECT_TRUE(page.delivered.empty());
    page.updateOffered = true;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_TRUE(state.pageNotice.contains(u"update"_qs)) << state.pageNotice.toStdString();
}

TEST_F(Steps, BlankPageIsLoadedAnewAfterMinutes) {
    page.loggedIn = false;
    ticks(130);
    EXPECT_TRUE(state.step.contains(u"neither chats nor a QR code"_qs)) << state.step.toStdString();
    EXPECT_EQ(page.commands.count(u"openStartPage"_qs), 0);
    ticks(500);
    EXPECT_EQ(page.commands.count(u"openStartPage"_qs), 1);
}

TEST_F(Steps, MissingMessageBoxHoldsSendingBeforeAnyMessageIsLost) {
    page.boxRenamed = true;
    queue(kAni, u"x"_qs);
    ticks(60);
    EXPECT_EQ(state.step, u"Page changed: XX_ChatBox"_qs);
    EXPECT_EQ(count("outbox"), 1) << "seen in the dummy's chat";
    EXPECT_EQ(page.clicks.count(kDummy), 1 + 1) << "looked at again, once a minute";
    page.boxRenamed = false;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(state.failedCount, 0);
}

TEST_F(Steps, MissingMessageBoxCostsOneMessageWhereNoChatIsOpenedBetween) {
    settings.DisableRead = u"Y"_qs;
    for (int i = 0; i < 5; ++i) queue(kAni, u"x"_qs);
    page.boxRenamed = true;
    ticks(300);
    EXPECT_EQ(lastReason(), u"Page changed: XX_ChatBox"_qs);
    EXPECT_EQ(state.failedCount, 1);
    EXPECT_EQ(count("outbox"), 4);
    page.reload();  // whoever reloads the page has perhaps mended it
    page.boxRenamed = false;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 4u);
}

TEST_F(Steps, ChatWithoutMessageBoxThatAPersonHasOpenedHoldsNothing) {
    tick();
    tick();
    page.open(u"6289999999999"_qs);
    page.boxRenamed = true;
    ticks(20);
    EXPECT_EQ(state.step, u"Queue empty"_qs);
}

TEST_F(Steps, LineSaysWhatIsWaitedForAndWhenTheQueueWillBeDone) {
    for (int i = 0; i < 4; ++i) queue(kAni, u"x"_qs);
    runQueue();
    tick();
    EXPECT_EQ(state.doneAbout, QString()) << "nothing waits";
    for (int i = 0; i < 3600; ++i) queue(kAni, u"x"_qs);
    tick();
    const QString soon = state.doneAbout;
    EXPECT_TRUE(soon.startsWith(u"Done about "_qs)) << soon.toStdString();
    gateway.pacing.cmd_Pause_Click();
    tick();
    EXPECT_EQ(state.step, u"Paused"_qs);
    EXPECT_EQ(state.doneAbout, QString());
    execute("delete from outbox");
    tick();
    EXPECT_EQ(state.step, u"Paused"_qs) << "also with an empty queue";
    gateway.pacing.cmd_Pause_Click();

    settings.UseMDB = u"N"_qs;  // a schedule is a server's
    settings.Scheduled = u"Y"_qs;
    const QDateTime due = clock.now().addSecs(90);
    const qint64 id = queue(kAni, u"later"_qs);
    execute("update outbox set wa_time = ? where id = ?", {due, id});
    ticks(30);
    EXPECT_EQ(state.step, u"Next message at %1"_qs.arg(due.toString(u"HH:mm"_qs)));
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
    ticks(100);
    EXPECT_EQ(page.ended, 0);
    ticks(30);
    EXPECT_EQ(page.ended, 1);
    EXPECT_EQ(state.waurl.text, u"!!"_qs);
}

TEST_F(Steps, ChatAddressThatCannotStandInALinkIsNamed) {
    settings.ChatAddress = u"https://x/\" onclick="_qs;
    queue(kAni, u"x"_qs);
    ticks(3);
    EXPECT_TRUE(state.step.contains(u"ChatAddress"_qs)) << state.step.toStdString();
    EXPECT_EQ(page.commands.count(u"plantLink"_qs), 0);
    settings.ChatAddress = u"https://x/send?phone="_qs;
    runQueue();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, NothingIsSentWhilePausedOnBreakOrReading) {
    tick();
    queue(kAni, u"x"_qs);
    gateway.pacing.cmd_Pause_Click();
    tick();
    EXPECT_EQ(state.step, u"Paused"_qs);
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
    EXPECT_EQ(count("outbox"), 1);
    state.busy = false;
    tick();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, BatchOfOneBreaksAfterEveryMessage) {
    settings.AfterSend = u"1"_qs;
    settings.Break = u"60"_qs;
    queue(kAni, u"x"_qs);
    queue(kAni, u"y"_qs);
    ticks(5);
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_TRUE(state.BreakTime.enabled());
    EXPECT_EQ(state.Outbox_Cnt.caption, u"1"_qs);
}

TEST_F(Steps, SendOnlyInstanceNeverOpensTheDummy) {
    settings.DisableRead = u"Y"_qs;
    queue(kAni, u"x"_qs);
    runQueue();
    EXPECT_EQ(page.clicks, QStringList(kAni));
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Steps, StoreThatIsOffIsShownAndNothingIsTaken) {
    tick();
    queue(kAni, u"x"_qs);
    execute("alter table sent rename to away");
    tick();
    EXPECT_TRUE(page.delivered.empty()) << "what can't be recorded is not sent";
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_TRUE(state.dboff.visible);
    execute("alter table away rename to sent");
    ticks(10);
    EXPECT_EQ(page.delivered.size(), 1u);
    execute("alter table outbox rename to away");
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
    page.list = {{u"Ani"_qs, u"1"_qs, {u"same length"_qs}}};
    watch.Timer2_Timer();
    watch.Timer2_Timer();
    EXPECT_EQ(passes, 3) << "a new unread message, once, though the length is the same";
}

}  // namespace
}  // namespace kibo
