#include <gtest/gtest.h>

#include "engine_fixture.h"

namespace kibo {
namespace {

using test::Engine;
const QString kAni = QStringLiteral("6281111111111");

/// Each test is the second start after a crash at some point of a send.
class Crash : public Engine {
 protected:
    Crash() {
        page.names = {{kDummy, QStringLiteral("Dummy")}};
        id = queue(kAni, QStringLiteral("hello"));
        row = {QString::number(id), QStringLiteral("0"), kAni, QStringLiteral("hello"), {}, {}, {}};
        row.time = database.OpenRecordset(QStringLiteral("select wa_time from outbox")).field(0);
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
        EXPECT_EQ(status(id), QStringLiteral("fail"));
        EXPECT_EQ(count(QStringLiteral("sent")), 1);
        EXPECT_EQ(count(QStringLiteral("outbox")), 0);
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
    EXPECT_EQ(count(QStringLiteral("sent")), 1);
    EXPECT_EQ(status(id), QString());
    EXPECT_EQ(QFileInfo(journalFile()).size(), 0) << "texts are not kept";
}

TEST_F(Crash, BetweenCopyAndDeleteSendsTheMessageOnce) {
    // An older message of the same id is not its copy.
    ASSERT_TRUE(database.execute(QStringLiteral("insert into sent (id, wa_no, wa_text) values (?, '1', 'old')"), {id}));
    ASSERT_TRUE(journal.taken(row));
    ASSERT_TRUE(database.Execute(
        QStringLiteral("insert into sent (id, wa_mode, wa_no, wa_text, wa_time) select id, wa_mode, wa_no, wa_text, "
                       "wa_time from outbox")));
    restart();
    settle();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(count(QStringLiteral("sent")), 2) << "the old one and this one";
}

TEST_F(Crash, BeforeTypingPutsTheMessageBackOnce) {
    const auto crashBeforeTyping = [this] {
        ASSERT_TRUE(journal.taken(row));
        ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
        restart();
    };
    crashBeforeTyping();
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    EXPECT_EQ(count(QStringLiteral("sent")), 0);
    QFile file(journalFile());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("hello")) << "texts are not kept";
    restart();
    crashBeforeTyping();  // it may be this message that ends the gateway
    settle();
    expectMarked("for the second time");

    // What somebody has changed in the sent log since is not moved back.
    id = queue(kAni, QStringLiteral("other"));
    gateway.queue.cmd_OutboxRefresh_Click();
    row = gateway.queue.nextRow().value();
    crashBeforeTyping();
    ASSERT_TRUE(database.execute(QStringLiteral("update sent set wa_text = 'changed' where id = ?"), {id}));
    settle();
    EXPECT_EQ(status(id), QStringLiteral("fail"));
}

TEST_F(Crash, BeforeTheRowWasWithdrawnWritesNothing) {
    ASSERT_TRUE(journal.taken(row));
    ASSERT_TRUE(database.Execute(QStringLiteral("delete from outbox")));
    restart();
    settle();
    EXPECT_EQ(count(QStringLiteral("sent")) + count(QStringLiteral("outbox")), 0) << "not raised from the dead";
    EXPECT_EQ(state.ms2.rowCount(), 1);
    EXPECT_TRUE(page.delivered.empty());
}

TEST_F(Crash, OfTheAnswerToTheTakingSendsTheMessageOnce) {
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table sent rename to away")));
    for (int i = 0; i < 3; ++i) tick();
    ASSERT_EQ(journal.entries().size(), 1u) << "what became of it is not known";
    // As a server leaves it whose answer to COMMIT did not arrive.
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table away rename to sent")));
    ASSERT_TRUE(database.Execute(
        QStringLiteral("insert into sent (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) select id, wa_mode, "
                       "wa_no, wa_text, wa_media, wa_file, wa_time from outbox")));
    ASSERT_TRUE(database.Execute(QStringLiteral("delete from outbox")));
    settle();
    EXPECT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(status(id), QString());
    EXPECT_EQ(count(QStringLiteral("sent")), 1);
}

TEST_F(Crash, SettledAgainstASentLogThatRefusesHoldsUpNoOthers) {
    const auto refuse = [this](const char* what) {
        EXPECT_TRUE(database.Execute(QStringLiteral("create trigger refuse before %1 = 'hello' begin select "
                                                    "raise(abort, 'refused'); end")
                                         .arg(QLatin1String(what))));
    };
    // A store that lost its last statements has what was typed in the queue again, from where it must not go out.
    ASSERT_TRUE(journal.taken(row));
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, QStringLiteral("true_1")));
    queue(kAni, QStringLiteral("other"));
    refuse("insert on sent when new.wa_text");
    restart();
    settle();
    for (int i = 0; i < 20; ++i) tick();
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, QStringLiteral("other"));
    EXPECT_EQ(database.OpenRecordset(QStringLiteral("select wa_mode from outbox")).field(0), QStringLiteral("3"));

    // A copy that can't be taken back.
    ASSERT_TRUE(database.Execute(QStringLiteral("drop trigger refuse")));
    ASSERT_TRUE(database.Execute(QStringLiteral("update outbox set wa_mode = 0")));
    ASSERT_TRUE(journal.taken(row));
    ASSERT_TRUE(database.Execute(
        QStringLiteral("insert into sent (id, wa_no, wa_text, wa_time) select id, wa_no, wa_text, wa_time from "
                       "outbox")));
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
        row.time = database.OpenRecordset(QStringLiteral("select wa_time from outbox where id = ?"), {id}).field(0);
        EXPECT_TRUE(journal.taken(row).ok());
        EXPECT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
        EXPECT_TRUE(journal.typed(row.id, kAni, text, page.messageIds(kAni).value(0)).ok());
    };
    settle();  // the first message, so that the chat is not empty
    const size_t before = page.delivered.size();
    crashAroundEnter(QStringLiteral("sent"));
    page.deliver(kAni, QStringLiteral("sent"));
    restart();
    settle();
    EXPECT_EQ(status(id), QString());
    crashAroundEnter(QStringLiteral("not sent"));
    restart();
    settle();
    EXPECT_EQ(status(id), QStringLiteral("fail"));
    EXPECT_FALSE(lastReason().contains(QStringLiteral("in doubt"))) << lastReason().toStdString();
    crashAroundEnter(QStringLiteral("drawn late"));
    page.deliver(kAni, QStringLiteral("drawn late"));
    page.hideHistory = true;
    restart();
    clock.at(clock.monotonicMs() + 8000, [this] { page.hideHistory = false; });
    settle();
    EXPECT_EQ(status(id), QString());
    crashAroundEnter(QStringLiteral("hidden"));
    page.hideHistory = true;
    restart();
    settle();
    EXPECT_EQ(status(id), QStringLiteral("fail"));
    EXPECT_TRUE(lastReason().startsWith(QStringLiteral("in doubt"))) << lastReason().toStdString();
    EXPECT_EQ(page.delivered.size(), before + 2) << "nothing is sent a second time";
}

TEST_F(Crash, OfTheBrowserAroundEnterIsDecidedByTheChatWhenThePageIsBack) {
    settle();  // the first message, so that the chat is not empty
    id = queue(kAni, QStringLiteral("second"));
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
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, QStringLiteral("true_1")));
    queue(QStringLiteral("6282222222222"), QStringLiteral("next"));
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
    EXPECT_TRUE(lastReason().startsWith(QStringLiteral("in doubt"))) << lastReason().toStdString();
    EXPECT_EQ(status(id), QStringLiteral("fail"));
    ASSERT_EQ(page.delivered.size(), 1u);
    EXPECT_EQ(page.delivered[0].text, QStringLiteral("next"));
}

TEST_F(Crash, WhatWasWrittenToTheChatBeforeEnterIsNotTheMessage) {
    settle();
    const QString text = QStringLiteral("see http://x");
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
    EXPECT_EQ(status(id), QStringLiteral("fail"));
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
    ASSERT_EQ(count(QStringLiteral("outbox")), 1);
    loseBrowserWhileTheChatOpens();
    EXPECT_EQ(count(QStringLiteral("sent")), 0);
    const Recordset back = database.OpenRecordset(QStringLiteral("select wa_no, wa_text, wa_time from outbox"));
    EXPECT_EQ(back.field(0) + back.field(1) + back.field(2), kAni + QStringLiteral("hello") + row.time);
    // Who knows whether it isn't this message that ends the browser.
    page.reload();
    for (int i = 0; i < 60 && count(QStringLiteral("outbox")) > 0; ++i) loseBrowserWhileTheChatOpens();
    expectMarked("the browser was lost");
}

TEST_F(Crash, ErrorThatSurfacesAfterEnterIsDecidedByTheChatToo) {
    settle();
    policy.setDebugMode(true);
    id = queue(kAni, QStringLiteral("second"));
    page.beforeEnter = [this] {
        page.deliver(kAni, QStringLiteral("second"));
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
    ASSERT_TRUE(journal.typed(row.id, kAni, row.text, QStringLiteral("true_1")));
    tick();  // connects
    clock.at(clock.monotonicMs() + 700, [this] { clock.stopWaiting(); });
    for (int i = 0; i < 5; ++i) gateway.machine.Timer_KIBO_Timer();
    EXPECT_EQ(journal.entries().size(), 1u);
    EXPECT_EQ(status(id), QString());
}

TEST_F(Crash, AfterAFailureThatCouldNotBeMarkedMarksItLater) {
    ASSERT_TRUE(journal.taken(row));
    ASSERT_EQ(gateway.queue.take(row), OutboxQueue::Taken::Yes);
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table sent rename to away")));
    state.txtid.text = row.id;
    gateway.sender.recordFailure(QStringLiteral("why"));
    restart();
    tick();
    ASSERT_EQ(journal.entries().size(), 1u);
    ASSERT_TRUE(database.Execute(QStringLiteral("alter table away rename to sent")));
    settle();
    EXPECT_EQ(status(id), QStringLiteral("fail"));
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
    EXPECT_FALSE(journal.open(folder.filePath(QStringLiteral("missing/send.journal"))).ok());
    for (int i = 0; i < 5; ++i) tick();
    EXPECT_EQ(count(QStringLiteral("outbox")), 1);
    EXPECT_TRUE(state.step.contains(QStringLiteral("journal"))) << state.step.toStdString();
}

}  // namespace
}  // namespace kibo
