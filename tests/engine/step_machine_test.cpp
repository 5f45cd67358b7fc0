#include "engine/step_machine.h"

#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
const QString kAni = u"6281111111111"_qs;

class Steps : public Engine {
 protected:
    bool says(const char* words) const { return state.step.contains(QLatin1String(words)); }
    void queueMany(int messages) {
        for (; messages > 0; --messages) queue(kAni, u"x"_qs);
    }
    /// Runs the queue to its end; then so many messages have arrived.
    void expectRunsTo(size_t arrived) {
        runQueue();
        EXPECT_EQ(page.delivered.size(), arrived);
    }
    qsizetype loaded() const { return page.commands.count(u"openStartPage"_qs); }
};

TEST_F(Steps, DummyIsOpenedOncePerConnectionAndLinkPlantedOncePerPage) {
    ticks(3);
    EXPECT_EQ(page.clicks, QStringList(kDummy));
    EXPECT_EQ(page.commands.count(u"plantLink"_qs), 1);
    page.reload();
    queueMany(1);
    expectRunsTo(1);
    EXPECT_EQ(page.commands.count(u"plantLink"_qs), 2);
    page.clicks.clear();
    settings.DisableRead = u"Y"_qs;  // an instance that only sends
    queueMany(1);
    expectRunsTo(2);
    EXPECT_EQ(page.clicks, QStringList(kAni));
}

TEST_F(Steps, PageThatStaysSilentForAMinuteEndsTheSession) {
    tick();
    state.Timer_KIBO.setEnabled(true);
    page.silent = true;
    ticks(100);
    EXPECT_EQ(page.ended, 0);
    ticks(21);
    EXPECT_EQ(page.ended, 1);
    EXPECT_FALSE(state.Timer_KIBO.enabled() || state.dummyOpened);
    EXPECT_EQ(state.waurl.text, u"!!"_qs);
}

TEST_F(Steps, PageIsBroughtBackButNotAtEveryTick) {
    page.shown.noPage = true;
    tick();
    page.shown.noPage = true;  // still not
    tick();
    EXPECT_TRUE(says("can't be reached")) << state.step.toStdString();
    page.shown.noPage = false;
    tick();
    EXPECT_EQ(loaded(), 1);
    page.shown.otherSite = u"login.hotel.example"_qs;
    tick();
    page.shown.otherSite = u"login.hotel.example"_qs;
    ticks(40);
    EXPECT_EQ(loaded(), 2) << "not at every tick";
    ticks(50);
    EXPECT_EQ(loaded(), 3);

    page.shown.useHereButtons = 1;  // over the chats
    queueMany(1);
    ticks(2);
    EXPECT_TRUE(says("open in another window")) << state.step.toStdString();
    EXPECT_TRUE(page.delivered.empty());
    page.shown.useHereButtons = 0;

    page.loggedIn = false;  // a blank page is loaded anew after minutes
    ticks(130);
    EXPECT_TRUE(says("neither chats nor a QR code")) << state.step.toStdString();
    EXPECT_EQ(loaded(), 3);
    ticks(500);
    EXPECT_EQ(loaded(), 4);
}

TEST_F(Steps, MissingMessageBoxHoldsSendingBeforeAnyMessageIsLost) {
    ticks(2);
    page.open(u"6289999999999"_qs);  // a chat without one that a person has opened holds nothing
    page.boxRenamed = true;
    ticks(20);
    EXPECT_TRUE(says("Queue empty")) << state.step.toStdString();
    page.open(kDummy);
    page.clicks.clear();
    queueMany(1);
    state.dummyOpened = false;
    ticks(60);
    EXPECT_TRUE(says("Page changed: XX_ChatBox")) << state.step.toStdString();
    EXPECT_EQ(count("outbox"), 1) << "seen in the dummy's chat";
    EXPECT_EQ(page.clicks.count(kDummy), 1 + 1) << "looked at again, once a minute";
    page.boxRenamed = false;
    expectRunsTo(1);
    EXPECT_EQ(state.failedCount, 0);
}

TEST_F(Steps, MissingMessageBoxCostsOneMessageWhereNoChatIsOpenedBetween) {
    settings.DisableRead = u"Y"_qs;
    queueMany(5);
    page.boxRenamed = true;
    ticks(300);
    EXPECT_EQ(lastReason(), u"Page changed: XX_ChatBox"_qs);
    EXPECT_EQ(state.failedCount, 1);
    EXPECT_EQ(count("outbox"), 4);
    page.reload();  // whoever reloads the page has perhaps mended it
    page.boxRenamed = false;
    expectRunsTo(4);
}

TEST_F(Steps, LineSaysWhatIsWaitedForAndWhenTheQueueWillBeDone) {
    queueMany(4);
    runQueue();
    tick();
    EXPECT_EQ(state.doneAbout, QString()) << "nothing waits";
    queueMany(3600);
    tick();
    EXPECT_TRUE(state.doneAbout.startsWith(u"Done about "_qs)) << state.doneAbout.toStdString();
    gateway.pacing.cmd_Pause_Click();
    tick();
    EXPECT_TRUE(says("Paused"));
    EXPECT_EQ(state.doneAbout, QString());
    execute("delete from outbox");
    tick();
    EXPECT_TRUE(says("Paused")) << "also with an empty queue";
    gateway.pacing.cmd_Pause_Click();

    settings.UseMDB = u"N"_qs;  // a schedule is a server's
    settings.Scheduled = u"Y"_qs;
    const QDateTime due = clock.now().addSecs(90);
    execute("update outbox set wa_time = ? where id = ?", {due, queue(kAni, u"later"_qs)});
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
    EXPECT_EQ(forecast.untilDone({.waiting = 10, .batchSize = 5, .breakMs = 60'000}), 20'000 + 60'000);
    EXPECT_EQ(forecast.untilDone({.waiting = 10, .batchSize = 5, .sentInBatch = 1, .breakMs = 60'000}),
              20'000 + 2 * 60'000);
    EXPECT_EQ(forecast.untilDone({.waiting = 2, .batchSize = 1, .breakMs = 60'000, .breakLeftMs = 7'000}),
              7'000 + 4'000 + 60'000);
    for (int i = 0; i < 20; ++i) forecast.messageTook(500);
    EXPECT_EQ(forecast.untilDone({.waiting = 3}), 1500) << "the last twenty count";
}

TEST_F(Steps, ChatAddressThatCannotStandInALinkIsNamed) {
    settings.ChatAddress = u"https://x/\" onclick="_qs;
    queueMany(1);
    ticks(3);
    EXPECT_TRUE(says("ChatAddress")) << state.step.toStdString();
    EXPECT_EQ(page.commands.count(u"plantLink"_qs), 0);
    settings.ChatAddress = u"https://x/send?phone="_qs;
    expectRunsTo(1);
}

TEST_F(Steps, NothingIsSentWithoutPhoneWhilePausedOnBreakOrReading) {
    tick();
    queueMany(3);
    const auto expectHeld = [this] {
        ticks(3);
        EXPECT_EQ(count("outbox"), 3) << state.step.toStdString();
    };
    page.shown.banner = u" phone NOT connected "_qs;
    expectHeld();
    EXPECT_EQ(state.status.caption, u"Not Connect"_qs);
    page.shown.banner = u"Get WhatsApp for Windows"_qs;
    gateway.pacing.cmd_Pause_Click();
    expectHeld();
    gateway.pacing.cmd_Pause_Click();
    state.BreakTime.setEnabled(true);
    expectHeld();
    state.BreakTime.setEnabled(false);
    for (bool* reading : {&state.waitread.visible, &state.busy}) {
        *reading = true;
        expectHeld();
        *reading = false;
    }
    settings.AfterSend = u"1"_qs;
    settings.Break = u"60"_qs;
    ticks(5);
    EXPECT_EQ(page.delivered.size(), 1u) << "a batch of one breaks after every message";
    EXPECT_TRUE(state.BreakTime.enabled());
    EXPECT_EQ(state.Outbox_Cnt.caption, u"2"_qs);
}

}  // namespace
}  // namespace kibo
