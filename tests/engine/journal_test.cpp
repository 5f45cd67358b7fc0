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
        id = queue(kAni, u"hello"_qs);
        row = {QString::number(id), u"0"_qs, kAni, u"hello"_qs, {}, {}, {}};
        row.time = field("select wa_time from outbox");
    }
    /// The gateway as it is built at its next start, from what is on the disk.
    void restart() {
        journal = SendJournal();
        ASSERT_TRUE(journal.open(journalFile()).ok());
    }
    void settle() {
        for (int i = 0; i < 20 || (i < 100 && !journal.entries().empty()); ++i) tick();
        EXPECT_TRUE(journal.entries().empty());
    }
    void expectMarked(const char* reason) {
        EXPECT_EQ(status(id), u"fail"_qs);
        EXPECT_EQ(count("sent"), 1);
        EXPECT_EQ(count("outbox"), 0);
        EXPECT_TRUE(lastReason().contains(QLatin1String(reason))) << lastReason().toStdString();
        EXPECT_TRUE(page.delivered.empty());
    }

    qint64 id = 0;
    QueuedRow row;
};

TEST_F(Crash, BeforeTheQueueWasTouchedSendsTheMessageOnce) {
    ASSERT_TRUE(journal.taken(row));
    restart();
    ASSERT_EQ(journal.entries().size(), 1u);
    settle();
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count("sent"), 1);
    EXPECT_EQ(status(id), QString());
    EXPECT_EQ(QFileInfo(journalFile()).size(), 0) << "texts are not kept";
}

TEST_F(Crash, BetweenCopyAndDeleteSendsTheMessageOnce) {
    // An older message of the same id is not its copy.
    execute("insert into sent (id, wa_no, wa_text) values (?, '1', 'old')", {id});
    ASSERT_TRUE(journal.taken(row));
    execute(
        "insert into sent (id, wa_mode, wa_no, wa_text, wa_time) select id, wa_mode, wa_no, wa_text, "
        "wa_time from outbox");
    restart();
    settle();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count("sent"), 2) << "the old one and this one";
}

TEST_F(Crash, BeforeTypingPutsTheMessageBackOnce) {
    const auto crashBeforeTyping = [this] {
        ASSERT_TRUE(journal.taken(row));
        ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
        restart();
    };
    crashBeforeTyping();
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_EQ(count("sent"), 0);
    QFile file(journalFile());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("hello")) << "texts are not kept";
    restart();
    crashBeforeTyping();  // it may be this message that ends the gateway
    settle();
    expectMarked("for the second time");

    // What somebody has changed in the sent log since is not moved back.
    id = queue(kAni, u"other"_qs);
    gateway.queue.cmd_OutboxRefresh_Click();
    row = gateway.queue.nextRow().value();
    crashBeforeTyping();
    execute("update sent set wa_text = 'changed' where id = ?", {id});
    settle();
    EXPECT_EQ(status(id), u"fail"_qs);
}

TEST_F(Crash, BeforeTheRowWasWithdrawnWritesNothing) {
    ASSERT_TRUE(journal.taken(row));
    execute("delete from outbox");
    restart();
    settle();
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
    execute(
        "insert into sent (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) select id, wa_mode, "
        "wa_no, wa_text, wa_media, wa_file, wa_time from outbox");
    execute("delete from outbox");
    settle();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(status(id), QString());
    EXPECT_EQ(count("sent"), 1);
}

TEST_F(Crash, SettledAgainstASentLogThatRefusesHoldsUpNoOthers) {
    const auto refuse = [this](const char* what) {
        EXPECT_TRUE(
            database.Execute(u"create trigger refuse before %1 = 'hello' begin select "
                             "raise(abort, 'refused'); end"_qs.arg(QLatin1String(what))));
    };
    // A store that lost its last statements has what was typed in the queue again, from where it must not go out.
    ASSERT_TRUE(journal.taken(row));
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, u"true_1"_qs));
    queue(kAni, u"other"_qs);
    refuse("insert on sent when new.wa_text");
    restart();
    settle();
    ticks(20);
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, u"other"_qs);
    EXPECT_EQ(field("select wa_mode from outbox"), u"3"_qs);

    // A copy that can't be taken back.
    execute("drop trigger refuse");
    execute("update outbox set wa_mode = 0");
    ASSERT_TRUE(journal.taken(row));
    execute(
        "insert into sent (id, wa_no, wa_text, wa_time) select id, wa_no, wa_text, wa_time from "
        "outbox");
    refuse("delete on sent when old.wa_text");
    restart();
    settle();
    EXPECT_EQ(page.delivered.size(), 2u);
}

TEST_F(Crash, AroundEnterIsDecidedByTheChat) {
    const auto crashAroundEnter = [this](const QString& text) {
        id = queue(kAni, text);
        row.id = QString::number(id);
        row.text = text;
        row.time = field("select wa_time from outbox where id = ?", {id});
        EXPECT_TRUE(journal.taken(row).ok());
        EXPECT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
        EXPECT_TRUE(journal.typed(row.id, kAni, text, page.messageIds(kAni).value(0)).ok());
    };
    settle();  // the first message, so that the chat is not empty
    const size_t before = page.delivered.size();
    crashAroundEnter(u"sent"_qs);
    page.deliver(kAni, u"sent"_qs);
    restart();
    settle();
    EXPECT_EQ(status(id), QString());
    crashAroundEnter(u"not sent"_qs);
    restart();
    settle();
    EXPECT_EQ(status(id), u"fail"_qs);
    EXPECT_FALSE(lastReason().contains(u"in doubt"_qs)) << lastReason().toStdString();
    crashAroundEnter(u"drawn late"_qs);
    page.deliver(kAni, u"drawn late"_qs);
    page.hideHistory = true;
    restart();
    clock.at(clock.monotonicMs() + 8000, [this] { page.hideHistory = false; });
    settle();
    EXPECT_EQ(status(id), QString());
    crashAroundEnter(u"hidden"_qs);
    page.hideHistory = true;
    restart();
    settle();
    EXPECT_EQ(status(id), u"fail"_qs);
    EXPECT_TRUE(lastReason().startsWith(u"in doubt"_qs)) << lastReason().toStdString();
    EXPECT_EQ(page.delivered.size(), before + 2) << "nothing is sent a second time";
}

TEST_F(Crash, OfTheBrowserAroundEnterIsDecidedByTheChatWhenThePageIsBack) {
    settle();  // the first message, so that the chat is not empty
    id = queue(kAni, u"second"_qs);
    page.beforeEnter = [this] { page.presence = PageLook::Presence::Gone; };
    tick();
    EXPECT_EQ(page.delivered.size(), 2u);
    ASSERT_EQ(journal.entries().size(), 1u) << "neither sent nor failed yet";
    page.beforeEnter = nullptr;
    tick();
    page.presence = PageLook::Presence::Here;
    settle();
    EXPECT_EQ(status(id), QString());
    EXPECT_EQ(page.delivered.size(), 2u);
    EXPECT_EQ(state.sentCount, 2);
}

TEST_F(Crash, LookThatEndsTheBrowserTwiceHoldsTheQueueNoLonger) {
    tick();  // connects
    ASSERT_TRUE(journal.taken(row));
    ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, u"true_1"_qs));
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
    EXPECT_TRUE(lastReason().startsWith(u"in doubt"_qs)) << lastReason().toStdString();
    EXPECT_EQ(status(id), u"fail"_qs);
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, u"next"_qs);
}

TEST_F(Crash, WhatWasWrittenToTheChatBeforeEnterIsNotTheMessage) {
    settle();
    const QString text = u"see http://x"_qs;
    id = queue(kAni, text);
    clock.at(clock.monotonicMs() + 2500, [&] { page.deliver(kAni, text); });  // from the phone, meanwhile
    page.beforeEnter = [this] {
        page.setBox({});
        page.presence = PageLook::Presence::Gone;
    };
    tick();
    ASSERT_EQ(journal.entries().size(), 1u);
    page.presence = PageLook::Presence::Here;
    settle();
    EXPECT_EQ(status(id), u"fail"_qs);
    EXPECT_EQ(page.delivered.size(), 2u);
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
    const Recordset back = database.OpenRecordset(u"select wa_no, wa_text, wa_time from outbox"_qs);
    EXPECT_EQ(back.field(0) + back.field(1) + back.field(2), kAni + u"hello"_qs + row.time);
    // Who knows whether it isn't this message that ends the browser.
    page.reload();
    for (int i = 0; i < 60 && count("outbox") > 0; ++i) loseBrowserWhileTheChatOpens();
    expectMarked("the browser was lost");
}

TEST_F(Crash, ErrorThatSurfacesAfterEnterIsDecidedByTheChatToo) {
    settle();
    policy.setDebugMode(true);
    id = queue(kAni, u"second"_qs);
    page.beforeEnter = [this] {
        page.deliver(kAni, u"second"_qs);
        throw SurfacedError(Failure{FailureKind::Transport, "time-out"});
    };
    EXPECT_THROW(gateway.machine.Timer_KIBO_Timer(), SurfacedError);
    policy.setDebugMode(false);
    page.beforeEnter = nullptr;
    settle();
    EXPECT_EQ(status(id), QString());
    EXPECT_EQ(page.delivered.size(), 2u);
}

TEST_F(Crash, OfTheLookIntoTheChatLeavesTheMessageForTheNextStart) {
    ASSERT_TRUE(journal.taken(row));
    ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, u"true_1"_qs));
    tick();  // connects
    clock.at(clock.monotonicMs() + 700, [this] { clock.stopWaiting(); });
    for (int i = 0; i < 5; ++i) gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(journal.entries().size(), 1u);
    EXPECT_EQ(status(id), QString());
}

TEST_F(Crash, AfterAFailureThatCouldNotBeMarkedMarksItLater) {
    ASSERT_TRUE(journal.taken(row));
    ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    execute("alter table sent rename to away");
    state.txtid.text = row.id;
    gateway.sender.recordFailure(u"why"_qs);
    restart();
    tick();
    ASSERT_EQ(journal.entries().size(), 1u);
    execute("alter table away rename to sent");
    settle();
    EXPECT_EQ(status(id), u"fail"_qs);
}

TEST_F(Crash, InTheMiddleOfARecordLeavesTheOnesBeforeIt) {
    ASSERT_TRUE(journal.taken(row));
    journal = SendJournal();
    QFile file(journalFile());
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("{\"do\":\"typed\",\"id\":\"1");
    file.close();
    restart();
    ASSERT_EQ(journal.entries().size(), 1u);
    EXPECT_EQ(journal.entries().front().stage, SendJournal::Stage::Taken);
    settle();
    EXPECT_EQ(page.delivered.size(), 1u);
}

TEST_F(Crash, WithoutAJournalNothingIsTaken) {
    journal = SendJournal();
    EXPECT_FALSE(journal.open(folder.filePath(u"missing/send.journal"_qs)).ok());
    ticks(5);
    EXPECT_EQ(count("outbox"), 1);
    EXPECT_TRUE(state.step.contains(u"journal"_qs)) << state.step.toStdString();
}

}  // namespace
}  // namespace kibo
