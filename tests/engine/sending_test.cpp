#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
const QString kAni = u"6281111111111"_qs;

class Sending : public Engine {
 protected:
    Sending() {
        page.names = {{kAni, u"Ani"_qs}, {kDummy, u"Dummy"_qs}};
        tick();  // connects: plants the link and opens the dummy
        page.commands.clear();
    }
    QString sendOne(const QString& number, const QString& text, int mode = 0, const QString& media = {}) {
        const qint64 id = queue(number, text, mode, media);
        runQueue();
        return status(id);
    }
};

TEST_F(Sending, NameIsAwaitedWhereTheNumberIsKnownBefore) {
    page.namedNumber = kAni;
    page.titleDelay = 1000;
    EXPECT_EQ(sendOne(kAni, u"for %NAME%"_qs), QString());
    page.titleDelay = 100'000;
    EXPECT_EQ(sendOne(kAni, u"for %name%."_qs), QString());
    ASSERT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(page.delivered[0].text + page.delivered[1].text, u"for ANIfor ."_qs);
}

TEST_F(Sending, SendsTextsAsTheyStandWhereTheyAreNotExpanded) {
    const char* text = R"(Invoice [4711] in C:\new ~r for %name% at %time%, [a|b] and ] too)";
    settings.ExpandText = u"N"_qs;
    EXPECT_EQ(sendOne(kAni, QString::fromLatin1(text)), QString());
    settings.ExpandText.clear();
    EXPECT_EQ(sendOne(kAni, u"Invoice [4711] in C:\\new"_qs), QString());
    ASSERT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(page.delivered[0].text.toStdString(), text);
    EXPECT_EQ(page.delivered[1].text.toStdString(), "Invoice 4711 in C:\new");
}

TEST_F(Sending, TakesTheDemandedWaitsOnly) {
    queue(kAni, u"hello"_qs);
    const qint64 before = clock.waited();
    gateway.machine.Timer_KIBO_Timer();
    // Escape 2 × 100, link 500 + 50, dwell 300, readiness 100, after sending 500, dummy 500 + 50.
    EXPECT_EQ(clock.waited() - before, 2200);
}

TEST_F(Sending, FailuresAreMarkedWithTheirReasonAndTheQueueGoesOn) {
    page.unknown = {u"6280000000000"_qs};
    const struct {
        const char* number;
        const char* text;
        int mode;
        const char* reason;
    } cases[] = {{"6280000000000", "x", 0, "the number is not on WhatsApp"},
                 {"1234", "x", 1, "too short"},
                 {"62<script>1", "x", 1, "more than digits"},
                 {"62'81", "x", 0, "no chat has this name"},
                 {"", "x", 0, "neither a number nor a name"},
                 {"6281111111111", "", 0, "empty"},
                 {"6281111111111", " ~r\t ", 0, "empty"},
                 {"An", "x", 2, "no chat has this name"},
                 {"6281111111111", "x", 4, "unknown wa_mode 4"}};
    for (const auto& c : cases) {
        EXPECT_EQ(sendOne(QString::fromUtf8(c.number), QString::fromUtf8(c.text), c.mode), u"fail"_qs);
        EXPECT_TRUE(lastReason().contains(QString::fromUtf8(c.reason))) << lastReason().toStdString();
    }
    EXPECT_TRUE(page.delivered.empty());
    EXPECT_EQ(sendOne(kAni, QString(65'533, u'x') + u"%name%"_qs), QString()) << "as long as a message may be";
    EXPECT_EQ(sendOne(kAni, QString(65'534, u'x') + u"%name%"_qs), u"fail"_qs) << "with the name in it";
    EXPECT_EQ(lastReason(), u"the text has 65537 characters, and a message at most 65536"_qs);
    execute("insert into outbox (wa_no, wa_text) values (null, null)");
    EXPECT_EQ(sendOne(kAni, u"a\x01\x1b(b"_qs), QString()) << "without control characters";
    EXPECT_EQ(page.delivered.back().text, u"a(b"_qs);
    EXPECT_TRUE(state.Timer_KIBO.enabled());
}

TEST_F(Sending, ChatThatDoesNotOpenIsGivenUpAndWaitedForBeforeTheNext) {
    page.openDelay = [](const QString& number) { return number == kAni ? 8000 : 0; };
    EXPECT_EQ(sendOne(kAni, u"x"_qs), u"fail"_qs);
    EXPECT_EQ(page.commands.count(u"lookAtChat"_qs), 21);
    EXPECT_EQ(lastReason(), u"the chat did not open in time"_qs);
    const qint64 next = queue(u"6282222222222"_qs, u"y"_qs);
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(status(next), u"(no row)"_qs) << "still waiting in the queue";
    EXPECT_EQ(state.step, u"Waiting for an earlier chat to open"_qs);
    runQueue();
    EXPECT_EQ(status(next), QString());
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].number, u"6282222222222"_qs);
}

TEST_F(Sending, DummyThatIsNotOnWhatsAppDoesNotHoldUpTheQueue) {
    page.unknown = {kDummy};
    const qint64 before = clock.monotonicMs();
    for (int i = 0; i < 5; ++i) queue(kAni, u"x"_qs);
    runQueue();
    EXPECT_EQ(page.delivered.size(), 5u);
    EXPECT_LT(clock.monotonicMs() - before, 5 * 4000);
}

TEST_F(Sending, TextGoesOutOnlyWhenReadBackInTheSameChat) {
    page.loseTexts = 3;
    EXPECT_EQ(sendOne(kAni, u"lost"_qs), u"fail"_qs);
    page.loseTexts = 2;
    EXPECT_EQ(sendOne(kAni, u"found"_qs), QString());
    EXPECT_EQ(page.commands.count(u"typeKeys"_qs), 2) << "what the box doesn't take is typed by keys";
    page.swallowEnters = 1;
    EXPECT_EQ(sendOne(kAni, u"stuck"_qs), u"fail"_qs);
    EXPECT_TRUE(page.box().isEmpty()) << "the box is cleared";
    EXPECT_TRUE(lastReason().startsWith(u"the message was not sent"_qs)) << lastReason().toStdString();
    page.swallowEnters = 1;  // and what the page shows after it isn't true
    page.beforeEnter = [this] { page.deliver(kAni, page.box()); };
    EXPECT_EQ(sendOne(kAni, u"gone all the same"_qs), QString());
    page.beforeEnter = nullptr;
    // The operator opens another chat while the link preview is awaited.
    const qint64 now = clock.monotonicMs();
    clock.at(now + 3000, [this] { page.open(u"6283333333333"_qs); });
    EXPECT_EQ(sendOne(kAni, u"see http://x"_qs), u"fail"_qs);
    ASSERT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(page.delivered[0].text, u"found"_qs);
}

TEST_F(Sending, DraftOrASilentPageCostsNothingElse) {
    page.openDelay = [this](const QString&) {
        clock.at(clock.monotonicMs() + 200, [this] { page.setBox(u"draft "_qs); });
        return 100;
    };
    EXPECT_EQ(sendOne(kAni, u"clean"_qs), QString());
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, u"clean"_qs);
    const qint64 id = queue(kAni, u"x"_qs);
    clock.at(clock.monotonicMs() + 150, [this] { page.silent = true; });
    gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(status(id), u"fail"_qs);
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Sending, StopBeforeEnterPutsTheMessageBack) {
    const qint64 id = queue(kAni, u"x"_qs);
    clock.at(clock.monotonicMs() + 700, [this] {
        clock.stopWaiting();
        page.presence = PageLook::Presence::Gone;  // the stop ends the browser too
    });
    for (int i = 0; i < 2; ++i) gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(status(id), u"(no row)"_qs);
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_EQ(state.failedCount, 0);
    EXPECT_EQ(QFileInfo(journalFile()).size(), 0);
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(Sending, SurfacedErrorLeavesTheMessageMarked) {
    policy.setDebugMode(true);
    queue(kAni, u"y"_qs);
    page.openDelay = [](const QString&) -> int { throw SurfacedError(Failure{FailureKind::Remote, "boom"}); };
    EXPECT_THROW(gateway.machine.Timer_KIBO_Timer(), SurfacedError);
    EXPECT_EQ(status(1), u"fail"_qs);
    EXPECT_FALSE(state.stepRunning);
    EXPECT_TRUE(state.Timer_KIBO.enabled()) << "or nothing would ever be sent again";
}

}  // namespace
}  // namespace kibo
