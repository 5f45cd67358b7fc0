#include "session/queue_actions.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QTest>
#include <numeric>

#include "support/answering_dialogs.h"
#include "support/manual_clock.h"
#include "support/stores.h"

namespace kibo::test {
namespace {

class QueueActionsTest : public testing::Test {
 protected:
    QueueActionsTest() {
        createStores(folder.path());
        settings.UseMDB = QStringLiteral("Y");
        state.cb_Profil.text = QStringLiteral("7");
        EXPECT_TRUE(database.OpenDatabase(settings, folder.path()).ok());
    }
    std::string rows(const char* sql) const {
        QString found = sqlite(folder.filePath(QStringLiteral("kb.mdb")), QString::fromUtf8(sql)).trimmed();
        return found.replace(u'\t', u'|').replace(u'\n', u' ').toStdString();
    }
    void run(const char* sql) const { rows(sql); }
    void fail(qint64 id, const QString& reason) {
        unsent.add(QStringLiteral("62"), QStringLiteral("expanded"), reason, QString::number(id));
    }
    void settle() { QTRY_VERIFY(state.work.isEmpty()); }

    QTemporaryDir folder;
    GatewayState state;
    Settings settings;
    ManualClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    AnsweringDialogs dialogs;
    UnsentList unsent{state, settings, database, clock};
    int refreshed = 0;
    QueueActions actions{{.state = state,
                          .settings = settings,
                          .database = database,
                          .dialogs = dialogs,
                          .unsent = unsent,
                          .refreshOutbox = [this] { ++refreshed; },
                          .refreshInbox = [this] { ++refreshed; },
                          .guarded = [](const auto& step) { step(); }}};
};

TEST_F(QueueActionsTest, clearsAWholeQueueOnlyAfterAQuestionThatNamesItsRows) {
    run("insert into outbox (wa_no, wa_mode) values ('1', 0), ('2', 3)");
    run("insert into multi (tipe, profil, wa_no) values ('O', '7', '1'), ('I', '7', '2'), ('O', '8', '3')");
    dialogs.answers = {false, true, true};
    actions.cmd_ClearOutbox_Click();
    EXPECT_EQ(dialogs.said(0), "Clear Outbox|Are You Sure Clear All Data in Outbox ?\n\n2 messages, 1 of them held");
    EXPECT_EQ(rows("select count(1) from outbox"), "2");
    actions.cmd_ClearOutbox_Click();
    EXPECT_EQ(rows("select count(1) from outbox"), "0");
    settings.Multi = QStringLiteral("Y");
    actions.cmd_ClearInbox_Click();
    EXPECT_EQ(rows("select wa_no, tipe from multi order by wa_no"), "1|O 3|O");
    EXPECT_EQ(refreshed, 2);
}

TEST_F(QueueActionsTest, deletesTheMessagesThatWereChosenAndSaysWhichWereGone) {
    run("insert into outbox (id, wa_no) values (1, 'a'), (2, 'b'), (3, 'c')");
    actions.cmd_DelOut_Click({3, 1, 9});
    EXPECT_EQ(rows("select id, wa_no from outbox"), "2|b");
    EXPECT_EQ(dialogs.said(0), "Kibo|2 of 3 messages deleted. 1 was no longer there: sent or deleted meanwhile.");
    actions.cmd_DelOut_Click({});
    EXPECT_EQ(dialogs.said(1), "Kibo|Select one or more lines first.");

    settings.Multi = QStringLiteral("Y");
    run("insert into multi (id, tipe, profil, wa_no) values (1, 'O', '7', 'mine'), (2, 'O', '8', 'other')");
    actions.cmd_DelOut_Click({1, 2});
    EXPECT_EQ(rows("select id, wa_no from multi"), "2|other");
    state.cb_Profil.text = QStringLiteral("shop");
    actions.cmd_DelOut_Click({2});
    EXPECT_NE(dialogs.said(3).find("its name is not a number"), std::string::npos) << dialogs.said(3);
}

TEST_F(QueueActionsTest, muchWorkIsDoneInPortionsAndAStoreThatRefusesLeavesTheRestAsItIs) {
    run("with recursive n(i) as (select 1 union all select i + 1 from n where i < 1200) "
        "insert into outbox (id, wa_no) select i, 'x' from n");
    std::vector<qint64> all(1200);
    std::iota(all.begin(), all.end(), 1);
    actions.cmd_DelOut_Click(all);
    EXPECT_EQ(state.work, QStringLiteral("Deleting 500 of 1,200 messages"));
    actions.cmd_DelOut_Click({7});
    EXPECT_NE(dialogs.said(0).find("wait"), std::string::npos) << "one thing at a time";
    run("create trigger no before delete on outbox when old.id > 900 begin select raise(abort, 'not that'); end");
    settle();
    EXPECT_EQ(rows("select count(1) as cnt, min(id) as least from outbox"), "700|501") << "whole portions";
    EXPECT_NE(dialogs.said(1).find("The others stay as they are"), std::string::npos) << dialogs.said(1);
}

TEST_F(QueueActionsTest, queuesTheRawRowAgainAndAsksWhereAMessageMayHaveArrived) {
    run("insert into sent (id, wa_mode, wa_no, wa_text, wa_media, wa_file, status) values "
        "(1, 9, '62', '[a|b]', 'm.png', 'f.pdf', 'fail'), (2, 1, '63', 'two', '', '', 'fail'), "
        "(3, 1, '64', 'three', '', '', '')");
    run("insert into kibo_message (source, outbox_id, ended, result) select 'outbox', id, '2026-11-20 11:00:00', "
        "'fail' "
        "from sent");
    for (qint64 id : {1, 2, 3, 4}) fail(id, id == 2 ? QStringLiteral("in doubt: …") : QStringLiteral("no"));
    dialogs.answers = {false};
    actions.cmd_MoveOutbox_Click({1, 2});
    EXPECT_NE(dialogs.said(0).find("1 of 2 messages may have arrived"), std::string::npos) << dialogs.said(0);
    EXPECT_EQ(rows("select count(1) from outbox"), "0");

    actions.cmd_MoveOutbox_Click({4, 3, 1});
    EXPECT_EQ(rows("select wa_mode, wa_no || wa_text || wa_media || wa_file from outbox"), "0|62[a|b]m.pngf.pdf");
    EXPECT_EQ(state.ms2.rowCount(), 4) << "what could not be queued stays in the list";
    EXPECT_EQ(state.ms2.text(1, UnsentColumn::Id), QStringLiteral("2"));
    EXPECT_EQ(rows("select outbox_id from kibo_message where handled is not null"), "1") << "for the next start";
    actions.cmd_ClearUnSent_Click();
    EXPECT_EQ(state.ms2.rowCount(), 1);
    EXPECT_EQ(rows("select count(1) from kibo_message where handled is not null"), "3");
    settings.Multi = QStringLiteral("Y");
    run("insert into multi (id, tipe, profil, id_outbox, wa_no, status) values (8, 'S', '8', 5, 'other', 'fail'), "
        "(9, 'S', '7', 5, 'mine', 'fail')");
    actions.cmd_MoveOutbox_Click({5});
    EXPECT_EQ(rows("select wa_no, profil from multi where tipe = 'O'"), "mine|7");
}

}  // namespace
}  // namespace kibo::test
