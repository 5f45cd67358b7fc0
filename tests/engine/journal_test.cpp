#include <gtest/gtest.h>

#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
const QString kAni = u"6281111111111"_qs;

/// Each test is the second start after a crash at some point of a send.
class Crash : public Engine {
 protected:
    Crash() {
        page.names = {{kDummy, u"Dummy"_qs}};
        queueRow(u"hello"_qs);
    }
    void queueRow(const QString& text) {
        id = queue(kAni, text);
        row = {
            QString::number(id), u"0"_qs, kAni, text, {}, {}, field("select wa_time from outbox where id = ?", {id})};
    }
    /// The gateway as it is built at its next start, from what is on the disk.
    void restart() {
        journal = SendJournal();
        ASSERT_TRUE(journal.open(journalFile()).ok());
    }
    void take() {
        ASSERT_TRUE(journal.taken(row));
        ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    }
    void takeAndType(const QString& lastMessage = u"true_1"_qs) {
        take();
        ASSERT_TRUE(journal.typed(row.id, kAni, row.text, lastMessage));
    }
    void copyToSent() {
        execute(
            "insert into sent (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) select id, wa_mode, wa_no, "
            "wa_text, wa_media, wa_file, wa_time from outbox");
    }
    void settle() {
        for (int i = 0; i < 20 || (i < 100 && !journal.entries().empty()); ++i) tick();
        EXPECT_TRUE(journal.entries().empty());
    }
    void settleAfterRestart() {
        restart();
        settle();
    }
    void expectSent(size_t messages) {
        EXPECT_EQ(status(id), QString());
        EXPECT_EQ(page.delivered.size(), messages);
    }
    void expectMarked(const char* reason) {
        EXPECT_EQ(status(id), u"fail"_qs);
        EXPECT_TRUE(lastReason().contains(QLatin1String(reason))) << lastReason().toStdString();
    }

    qint64 id = 0;
    QueuedRow row;
};

TEST_F(Crash, BeforeTheQueueWasTouchedSendsTheMessageOnce) {
    ASSERT_TRUE(journal.taken(row));
    journal = SendJournal();
    test::written(journalFile(), test::contentOf(journalFile()) + "{\"do\":\"typed\",\"id\":\"1");  // half a record
    settleAfterRestart();
    expectSent(1);
    EXPECT_EQ(count("sent"), 1);
    EXPECT_EQ(test::contentOf(journalFile()), QByteArray()) << "texts are not kept";
}

TEST_F(Crash, BetweenCopyAndDeleteSendsTheMessageOnce) {
    // An older message of the same id is not its copy.
    execute("insert into sent (id, wa_no, wa_text) values (?, '1', 'old')", {id});
    ASSERT_TRUE(journal.taken(row));
    copyToSent();
    settleAfterRestart();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count("sent"), 2) << "the old one and this one";
}

TEST_F(Crash, BeforeTypingPutsTheMessageBackOnce) {
    take();
    restart();
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_EQ(count("sent"), 0);
    EXPECT_FALSE(test::contentOf(journalFile()).contains("hello")) << "texts are not kept";
    restart();
    take();  // it may be this message that ends the gateway
    settleAfterRestart();
    expectMarked("for the second time");
    EXPECT_EQ(count("sent") - count("outbox"), 1);

    // What somebody has changed in the sent log since is not moved back.
    queueRow(u"other"_qs);
    take();
    execute("update sent set wa_text = 'changed' where id = ?", {id});
    settleAfterRestart();
    EXPECT_EQ(status(id), u"fail"_qs);
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(Crash, BeforeTheRowWasWithdrawnWritesNothing) {
    ASSERT_TRUE(journal.taken(row));
    execute("delete from outbox");
    settleAfterRestart();
    EXPECT_EQ(count("sent") + count("outbox"), 0) << "not raised from the dead";
    EXPECT_EQ(state.ms2.rowCount(), 1);
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(Crash, OfTheAnswerToTheTakingSendsTheMessageOnce) {
    execute("alter table sent rename to away");
    ticks(3);
    ASSERT_EQ(journal.entries().size(), 1u) << "what became of it is not known";
    // As a server leaves it whose answer to COMMIT did not arrive.
    execute("alter table away rename to sent");
    copyToSent();
    execute("delete from outbox");
    settle();
    expectSent(1);
    EXPECT_EQ(count("sent"), 1);
}

TEST_F(Crash, SettledAgainstASentLogThatRefusesHoldsUpNoOthers) {
    // A store that lost its last statements has what was typed in the queue again, from where it must not go out.
    ASSERT_TRUE(journal.taken(row));
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, u"true_1"_qs));
    queue(kAni, u"other"_qs);
    refuse("insert on sent when new.wa_text = 'hello'");
    settleAfterRestart();
    ticks(20);
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, u"other"_qs);
    EXPECT_EQ(field("select wa_mode from outbox"), u"3"_qs);

    // A copy that can't be taken back.
    execute("drop trigger refuse");
    execute("update outbox set wa_mode = 0");
    ASSERT_TRUE(journal.taken(row));
    copyToSent();
    refuse("delete on sent when old.wa_text = 'hello'");
    settleAfterRestart();
    EXPECT_EQ(page.delivered.size(), 2u);
}

TEST_F(Crash, AroundEnterIsDecidedByTheChat) {
    settle();  // the first message, so that the chat is not empty
    const auto crashAroundEnter = [this](const QString& text) {
        queueRow(text);
        takeAndType(page.messageIds(kAni).value(0));
    };
    crashAroundEnter(u"sent"_qs);
    page.deliver(kAni, row.text);
    settleAfterRestart();
    expectSent(2);
    crashAroundEnter(u"not sent"_qs);
    settleAfterRestart();
    expectMarked("the message was not sent");
    crashAroundEnter(u"drawn late"_qs);
    page.deliver(kAni, row.text);
    page.hideHistory = true;
    clock.at(clock.monotonicMs() + 8000, [this] { page.hideHistory = false; });
    settleAfterRestart();
    expectSent(3);
    crashAroundEnter(u"hidden"_qs);
    page.hideHistory = true;
    settleAfterRestart();
    expectMarked("in doubt");
    EXPECT_EQ(page.delivered.size(), 3u) << "nothing is sent a second time";
}

TEST_F(Crash, OfTheBrowserOrAnErrorAroundEnterIsDecidedByTheChat) {
    settle();
    id = queue(kAni, u"second"_qs);
    page.beforeEnter = [this] { page.presence = PageLook::Presence::Gone; };
    tick();
    EXPECT_EQ(page.delivered.size(), 2u);
    ASSERT_EQ(journal.entries().size(), 1u) << "neither sent nor failed yet";
    page.beforeEnter = nullptr;
    tick();
    page.presence = PageLook::Presence::Here;
    settle();
    expectSent(2);
    EXPECT_EQ(state.sentCount, 2);

    policy.setDebugMode(true);
    id = queue(kAni, u"third"_qs);
    page.beforeEnter = [this] {
        page.deliver(kAni, u"third"_qs);
        throw SurfacedError(Failure{FailureKind::Transport, "time-out"});
    };
    EXPECT_THROW(gateway.machine.Timer_KIBO_Timer(), SurfacedError);
    policy.setDebugMode(false);
    page.beforeEnter = nullptr;
    settle();
    expectSent(3);

    // What is written to the chat from the phone before Enter is not the message.
    id = queue(kAni, u"see http://x"_qs);
    clock.at(clock.monotonicMs() + 2500, [&] { page.deliver(kAni, u"see http://x"_qs); });
    page.beforeEnter = [this] {
        page.setBox({});
        page.presence = PageLook::Presence::Gone;
    };
    tick();
    ASSERT_EQ(journal.entries().size(), 1u);
    page.presence = PageLook::Presence::Here;
    settle();
    expectMarked("the message was not sent");
    EXPECT_EQ(page.delivered.size(), 4u);
}

TEST_F(Crash, LookThatEndsTheBrowserTwiceHoldsTheQueueNoLonger) {
    tick();  // connects
    takeAndType();
    queue(u"6282222222222"_qs, u"next"_qs);
    page.openDelay = [this](const QString& number) {
        if (number == kAni) clock.at(clock.monotonicMs() + 100, [this] { page.presence = PageLook::Presence::Gone; });
        return number == kAni ? 2000 : 0;
    };
    for (int i = 0; i < 60; ++i) {
        if (page.presence == PageLook::Presence::Gone) page.reload();
        page.presence = PageLook::Presence::Here;
        restart();
        tick();
    }
    EXPECT_EQ(page.clicks.count(kAni), 2);
    expectMarked("in doubt");
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, u"next"_qs);
}

TEST_F(Crash, OfTheBrowserBeforeTypingPutsTheMessageBackOnce) {
    const auto loseBrowserWhileTheChatOpens = [this] {
        page.presence = PageLook::Presence::Here;
        page.openDelay = [this](const QString&) {
            clock.at(clock.monotonicMs() + 200, [this] { page.presence = PageLook::Presence::Gone; });
            return 2000;
        };
        tick();
        EXPECT_TRUE(journal.entries().empty());
    };
    tick();  // connects
    ASSERT_EQ(count("outbox"), 1);
    loseBrowserWhileTheChatOpens();
    EXPECT_EQ(count("sent"), 0);
    EXPECT_EQ(field("select wa_time from outbox where wa_no = ? and wa_text = 'hello'", {kAni}), row.time);
    // Who knows whether it isn't this message that ends the browser.
    page.reload();
    for (int i = 0; i < 60 && count("outbox") > 0; ++i) loseBrowserWhileTheChatOpens();
    expectMarked("the browser was lost");
    EXPECT_EQ(count("sent"), 1);
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(Crash, OfTheLookIntoTheChatLeavesTheMessageForTheNextStart) {
    takeAndType();
    tick();  // connects
    clock.at(clock.monotonicMs() + 700, [this] { clock.stopWaiting(); });
    for (int i = 0; i < 5; ++i) gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(journal.entries().size(), 1u);
    EXPECT_EQ(status(id), QString());
}

TEST_F(Crash, AfterAFailureThatCouldNotBeMarkedMarksItLater) {
    take();
    execute("alter table sent rename to away");
    state.txtid.text = row.id;
    gateway.sender.recordFailure(u"why"_qs);
    restart();
    tick();
    ASSERT_EQ(journal.entries().size(), 1u);
    execute("alter table away rename to sent");
    settle();
    expectMarked("why");
}

/// Two instances of one profile: this one asks the shared database right before it sends.
TEST_F(Crash, NothingIsSentOrMarkedWithoutTheHoldOfTheProfile) {
    state.instance = u"we"_qs;
    page.forgetHistory();
    for (int times = 0; times < 3; ++times) {
        hold = Hold::Unknown;
        for (int i = 0; i < 15; ++i) tick();
        EXPECT_TRUE(page.delivered.empty());
        hold = Hold::Ours;
        EXPECT_TRUE(gateway.recovery.settleInStore());
        EXPECT_EQ(status(id), u"(no row)"_qs) << "it goes back as often as the database doesn't answer";
    }
    for (const bool settledThere : {false, true}) {
        hold = Hold::Lost;
        for (int i = 0; i < 40; ++i) tick();
        ASSERT_EQ(journal.entries().size(), 1u);
        EXPECT_EQ(journal.entries()[0].stage, SendJournal::Stage::Taken);
        EXPECT_EQ(status(id), QString()) << "the other one's to mark or to move";
        EXPECT_EQ(count("outbox"), 0);
        gateway.recovery.settleInStore();
        EXPECT_EQ(journal.entries().size(), 1u);
        if (settledThere) execute("update kibo_message set ended = taken, result = 'sent' where ended is null");
        hold = Hold::Ours;
        state.standby = {};
        for (int i = 0; i < 20; ++i) tick();
        EXPECT_EQ(page.delivered.size(), 1u);
        EXPECT_TRUE(journal.entries().empty());
        if (!settledThere) queue(kAni, u"hello"_qs);
    }
    hold = Hold::Lost;
    state.txtid.text = QString::number(id);
    gateway.sender.recordFailure(u"why"_qs);
    EXPECT_EQ(status(id), QString());
}

TEST_F(Crash, WithoutAJournalNothingIsTaken) {
    journal = SendJournal();
    EXPECT_FALSE(journal.open(folder.filePath(u"missing/send.journal"_qs)).ok());
    ticks(5);
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_TRUE(state.step.contains(u"journal"_qs)) << state.step.toStdString();
    EXPECT_FALSE(state.journalProblem.isEmpty());

    fromOutside(u"delete from outbox"_qs);
    const QString file = folder.filePath(u"send.journal"_qs);
    ASSERT_TRUE(journal.open(file).ok());
    clock.wait(60'000);
    ticks(2);
    EXPECT_EQ(state.journalProblem.toStdString(), "") << "no message is needed to see it";
    EXPECT_EQ(QFileInfo(file).size(), 0);
}

}  // namespace
}  // namespace kibo
