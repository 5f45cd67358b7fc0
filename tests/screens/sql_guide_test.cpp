// The SQL guide on every kind of store, through its window.
#include "screens/sql_guide_screen.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include "platform/machine.h"
#include "screens/sql_samples.h"
#include "support/answering_dialogs.h"
#include "support/eventually.h"
#include "support/mariadb_server.h"
#include "support/stores.h"

namespace kibo::test {
namespace {

/// Verb and danger of each statement.
std::string judged(const char* text, DatabaseKind kind = DatabaseKind::MySql) {
    const char* const dangers[] = {"", "!changes", "!deletes", "!drops", "!truncates", "!unseen"};
    QString all;
    for (const SqlStatement& one : sqlStatements(QString::fromUtf8(text), kind))
        all += one.verb + QLatin1String(dangers[static_cast<int>(one.danger)]) + u' ';
    return all.trimmed().toStdString();
}

TEST(SqlStatements, AreJudgedWhateverStandsAroundThem) {
    const auto local = [](const char* text) { return judged(text, DatabaseKind::Access); };
    EXPECT_EQ(judged("select 1; ;\n-- only this\n/* and ; that */;# or that"), "SELECT");
    EXPECT_EQ(judged(" \t\n( select 1 )"), "SELECT");
    EXPECT_EQ(judged("delete from outbox where id=1; DeLeTe\nfrom outbox"), "DELETE DELETE!deletes");
    EXPECT_EQ(judged("/* x */ delete from outbox -- where id=1\n# where\n/* where */"), "DELETE!deletes");
    EXPECT_EQ(judged("update outbox set wa_text=' where ', `where`=1, \"where\"=2, t.where=3, a=@where"),
              "UPDATE!changes");
    EXPECT_EQ(judged("delete from outbox order by (select 1 from sent where 1)"), "DELETE!deletes");
    EXPECT_EQ(judged("with a as (select 1 where 1) delete from outbox"), "DELETE!deletes");
    EXPECT_EQ(judged("with a as (delete) update t set x=1 where y"), "UPDATE");
    EXPECT_EQ(judged("set statement max_statement_time=1 for delete from outbox; analyze update t set a=1"),
              "DELETE!deletes UPDATE!changes");
    EXPECT_EQ(judged("explain delete from outbox; insert into t values (1) on duplicate key update a=1"),
              "EXPLAIN INSERT");
    EXPECT_EQ(judged("/*!50000 drop */ table outbox; create or replace table t (a int); alter table t drop a"),
              "DROP!drops CREATE!drops ALTER!drops");
    EXPECT_EQ(judged("truncate outbox; execute immediate 'drop table t'; begin not atomic delete from t"),
              "TRUNCATE!truncates EXECUTE!unseen BEGIN!unseen");
    EXPECT_EQ(judged("insert into t values ('it''s; \\'; drop table t; '); select 1"), "INSERT SELECT");
    EXPECT_EQ(judged("select 5--3; delete from t"), "SELECT DELETE!deletes") << "two signs";
    EXPECT_EQ(local("select 5--3; delete from t"), "SELECT") << "a comment";
    EXPECT_EQ(local("select '\\'; delete from t; --'"), "SELECT DELETE!deletes") << "no escape";
    EXPECT_EQ(local("select 1 as [a;b], \"c;d\""), "SELECT");
    EXPECT_EQ(judged(smsTrigger().toUtf8().constData()), "CREATE");
    EXPECT_EQ(judged("create trigger a after insert on b for each row begin if x then delete from c; end if; select "
                     "case when 1 then 2 end; end; delete from t"),
              "CREATE DELETE!deletes");
}

class SqlGuideTest : public testing::TestWithParam<bool> {
 protected:
    void SetUp() override {
        if (GetParam()) {
            server = &MariaDbServer::shared();
            server->empty();
            settings = server->settings(false);
        } else {
            createStores(folder.path());
            settings.UseMDB = QStringLiteral("Y");
        }
        ASSERT_TRUE(database.OpenDatabase(settings, folder.path()).ok());
        screen.open();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&screen));
    }
    QString outside(const QString& sql) {
        return server ? server->run(sql) : sqlite(folder.filePath(QStringLiteral("kb.mdb")), sql);
    }
    std::string queued() {
        return outside(QStringLiteral("select wa_no, wa_text from outbox")).trimmed().toStdString();
    }
    template <class Control>
    Control* find(const char* name) {
        return screen.findChild<Control*>(QLatin1String(name));
    }
    std::string status() { return find<QLabel>("sql_status")->text().toStdString(); }
    void start(const QString& sql) {
        find<QPlainTextEdit>("Text1")->setPlainText(sql);
        QTest::keyClick(&screen, Qt::Key_Return, Qt::ControlModifier);
    }
    bool atRest() {
        return eventually(
            [this] { return find<QAbstractButton>("Command1")->text() == QStringLiteral("&Testing SQL"); });
    }
    std::string run(const char* sql) {
        start(QString::fromUtf8(sql));
        EXPECT_TRUE(atRest());
        return status();
    }

    QTemporaryDir folder;
    MariaDbServer* server = nullptr;  // none: a local file
    Settings settings;
    SystemClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    AnsweringDialogs dialogs;
    int refreshed = 0;
    SqlGuideScreen screen{{database, dialogs, [this] { ++refreshed; }}};
};

INSTANTIATE_TEST_SUITE_P(Stores, SqlGuideTest, testing::Bool(),
                         [](const auto& form) { return form.param ? "Server" : "LocalFile"; });

TEST_P(SqlGuideTest, QueuesWhatItsSamplesSayAndTellsWhatCameOfStatements) {
    std::atomic<int> commits = 0;
    Database::onLocalStatement = [&](const QString& sql, const Database::Values&) {
        commits += sql.contains(QStringLiteral("commit"), Qt::CaseInsensitive) ? 1 : 0;
    };
    EXPECT_EQ(find<QPlainTextEdit>("Text1")->toPlainText(), testStatement().remove(u'\r'));
    QTest::mouseClick(find<QAbstractButton>("Command1"), Qt::LeftButton);
    EXPECT_TRUE(atRest());
    EXPECT_EQ(status(), "1 row changed.");
    EXPECT_EQ(queued(), "6281200000001\tHello.. Just testing for *Kibo*");
    EXPECT_EQ(refreshed, 1);
    QTest::keyClick(&screen, Qt::Key_M, Qt::AltModifier);
    QTest::keyClicks(find<QComboBox>("Combo1"), QStringLiteral("2"));
    QTest::keyClick(find<QComboBox>("Combo1"), Qt::Key_Down);
    QTest::keyClick(find<QComboBox>("Combo1"), Qt::Key_Up);
    EXPECT_TRUE(find<QPlainTextEdit>("Text1")->toPlainText().contains(QStringLiteral("2020-11-27 21:38:59")));

    EXPECT_EQ(run("update outbox set wa_mode=1 where wa_no='6281200000001'; select wa_no from outbox where 1=0"),
              "1 row changed. 0 rows found.");
    EXPECT_EQ(screen.findChild<QTableView*>()->model()->headerData(0, Qt::Horizontal).toString(),
              QStringLiteral("wa_no"));
    refreshed = 0;
    const std::string refused = run("delete from outbox where id < 0; insert into nowhere values ('x')");
    EXPECT_NE(refused.find("Statement 2 of 2 is refused"), std::string::npos) << refused;
    EXPECT_NE(refused.find("nowhere"), std::string::npos) << refused;
    EXPECT_EQ(dialogs.shown.back().icon, MessageBox::Icon::Critical);
    EXPECT_EQ(refreshed, 0);
    dialogs.answers = {false};
    EXPECT_EQ(run("delete from outbox"), "Nothing was run.");
    EXPECT_NE(dialogs.said(dialogs.shown.size() - 1).find("every row"), std::string::npos);
    EXPECT_NE(queued(), "");
    run("delete from outbox");
    EXPECT_EQ(queued(), "");
    run(" ; -- nothing");
    EXPECT_EQ(refreshed, 1);
    if (server) run("set autocommit=0; insert into outbox (wa_no, wa_text) values ('1', 'committed')");
    EXPECT_EQ(queued(), server ? "1\tcommitted" : "");
    EXPECT_EQ(commits, 0) << "on a local file";
    Database::onLocalStatement = nullptr;
    QTest::keyClick(&screen, Qt::Key_Escape);
    EXPECT_FALSE(screen.isVisible());
}

TEST_P(SqlGuideTest, CountsAMillionRowsAndBreaksOffWhatTakesLong) {
    const auto before = platform::residentMemoryBytes();
    QElapsedTimer gap;
    qint64 longest = 0;
    QTimer beats;
    QObject::connect(&beats, &QTimer::timeout, &beats, [&] { longest = qMax(longest, gap.restart()); });
    gap.start();
    beats.start(10);
    const QString million = QStringLiteral(
        "with recursive n as (select 1 as i union all select i + 1 from n where i < 1000000) select i, hex(%1) from n");
    start(server ? QStringLiteral("set max_recursive_iterations=4000000000; ") +
                       million.arg(QStringLiteral("repeat('a', 200)"))
                 : million.arg(QStringLiteral("zeroblob(200)")));
    ASSERT_TRUE(eventually([this] { return status().find("1,000,000 rows found") == 0; }, 30'000)) << status();
    EXPECT_NE(status().find("999,000 beyond"), std::string::npos) << status();
    EXPECT_LT(platform::residentMemoryBytes(), before + 100'000'000) << "of 400 MB that were read";
    EXPECT_LT(longest, 1000);
    if (server) {
        const char* cross = "select * from information_schema.character_sets a, information_schema.character_sets b";
        EXPECT_EQ(run(cross).find("More than 1,000 rows found"), 0) << "columns of the same names: " << status();
        run("create temporary table copy as select 1 from information_schema.character_sets a, "
            "information_schema.character_sets b; select count(*) > 1000 from copy");
        EXPECT_EQ(screen.findChild<QTableView*>()->model()->index(0, 0).data().toString(), QStringLiteral("1"));
    }

    for (const bool closes : {false, true}) {
        start(server ? QStringLiteral("select sleep(600); insert into outbox (wa_no) values ('late')")
                     : QStringLiteral("with recursive n as (select 1 as i union all select i + 1 from n) select "
                                      "max(i) from n; insert into outbox (wa_no) values ('late')"));
        QTest::qWait(400);
        screen.setFocus();
        QElapsedTimer took;
        took.start();
        if (closes) {
            screen.close();
        } else {
            QTest::keyClick(&screen, Qt::Key_Escape);
        }
        EXPECT_TRUE(atRest());
        EXPECT_LT(took.elapsed(), 5000);
        EXPECT_EQ(status().find("Stopped"), 0) << status();
        EXPECT_EQ(queued(), "");
        screen.open();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&screen));
    }
    EXPECT_EQ(refreshed, server ? 3 : 1);
}

TEST(SqlGuideOnServerTest, TriggerQueuesWhatTheSmsGatewayQueues) {
    MariaDbServer& server = MariaDbServer::shared();
    server.empty();
    server.run(
        QStringLiteral("create database sms; use sms; create table outbox (ID int auto_increment primary key, "
                       "DestinationNumber varchar(20) not null default '', Text text, TextDecoded text)"));
    server.run(QStringLiteral("use sms;\n") + smsTrigger());
    server.run(QStringLiteral(
        "insert into sms.outbox (DestinationNumber, Text) values ('+6281', 'It''s ready'), ('+6282', 'x')"));
    EXPECT_EQ(server.run(QStringLiteral("select wa_mode, wa_no, wa_text, wa_media, wa_file from outbox")).toStdString(),
              "0\t+6281\tIt's ready\t\t\n0\t+6282\tx\t\t\n");
}

}  // namespace
}  // namespace kibo::test
