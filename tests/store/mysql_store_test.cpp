#include <gtest/gtest.h>

#include <QThread>

#include "store/database.h"
#include "store/new_store.h"
#include "store_under_test.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

class LostConnectionTest : public testing::Test {
 protected:
    void SetUp() override { ASSERT_TRUE(database_.OpenDatabase(server_.settings(false), {})); }

    test::MariaDbServer& server_ = test::MariaDbServer::shared();
    SystemClock clock_;
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
};

TEST_F(LostConnectionTest, KilledConnectionIsNoticedAndReopenedUnlessTheLoginIsRefused) {
    server_.run(QStringLiteral("kill ") + database_.OpenRecordset(QStringLiteral("select connection_id()")).field(0));
    EXPECT_EQ(database_.OpenRecordset(QStringLiteral("select * from outbox")).state(), Recordset::State::Closed);
    EXPECT_FALSE(database_.isOpen());
    EXPECT_EQ(database_.OpenRecordset(QStringLiteral("select * from outbox")).state(), Recordset::State::Open)
        << "the next statement opens it again";

    Settings settings = server_.settings(true);
    settings.password = QStringLiteral("wrong");
    const Result<void> opened = Database(clock_, policy_).OpenDatabase(settings, {});
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.failure().text.find("Access denied for user 'kibo'@"), 0u) << opened.failure().text;
}

TEST_F(LostConnectionTest, ServerAwayAndBack) {
    Result<Transaction> open = Transaction::begin(database_);
    ASSERT_TRUE(open);
    const auto rows = database_.openRows(QStringLiteral("select seq from seq_1_to_1000"));
    ASSERT_TRUE(rows);
    server_.stop();
    const auto lost = database_.openRows(QStringLiteral("select * from outbox"));
    ASSERT_FALSE(lost);
    EXPECT_EQ(lost.failure().kind, FailureKind::ConnectionLost);
    EXPECT_FALSE(open.value().commit());
    EXPECT_EQ(rows.value()->text(999, 0), QStringLiteral("1000")) << "what was read before is still shown";
    const Result<void> away = database_.reopen();
    ASSERT_FALSE(away);
    EXPECT_EQ(away.failure().text.find("No answer from 127.0.0.1, port "), 0U) << away.failure().text;
    EXPECT_EQ(away.failure().text.find(test::MariaDbServer::password().toStdString()), std::string::npos);
    server_.start();
    QThread::sleep(2);
    EXPECT_FALSE(database_.Execute(QStringLiteral("delete from outbox"))) << "opened again inside a transaction";
    { const auto ended = std::move(open); }
    EXPECT_TRUE(database_.Execute(QStringLiteral("delete from outbox")));
    EXPECT_EQ(rows.value()->text(999, 0), QString());
}

TEST_F(LostConnectionTest, SurfacesOnceAndIsOpenedAgainAllTheSame) {
    policy_.setDebugMode(true);
    const auto ask = [this](const char* sql) { return database_.Execute(QLatin1String(sql)); };
    EXPECT_THROW(ask("delete from nowhere"), SurfacedError);
    EXPECT_FALSE(ask("delete from nowhere")) << "a box each time would never end";
    EXPECT_THROW(ask("delete from nowhere_else"), SurfacedError);
    server_.stop();
    EXPECT_THROW(ask("delete from tmp"), SurfacedError);
    EXPECT_FALSE(ask("delete from tmp") || ask("delete from outbox"));
    EXPECT_FALSE(database_.problem().isEmpty());
    server_.start();
    QThread::sleep(2);
    EXPECT_TRUE(ask("delete from tmp"));
    EXPECT_EQ(database_.problem(), QString());
}

TEST_F(LostConnectionTest, ServerWithoutOurTablesIsToldAtOnceAndCanBeGivenThem) {
    server_.run(
        QStringLiteral("create database bare; grant all on bare.* to kibo@'%'; create table bare.sent (own int)"));
    Settings settings = server_.settings(false);
    settings.MySQL_DB = QStringLiteral("bare");
    for (const auto& [multi, table] : {std::pair("N", "outbox"), std::pair("Y", "multi")}) {
        settings.Multi = QLatin1String(multi);
        const Result<void> opened = database_.OpenDatabase(settings, {});
        ASSERT_FALSE(opened);
        EXPECT_EQ(opened.failure().kind, FailureKind::NotFound);
        const QString said = QString::fromStdString(opened.failure().text);
        EXPECT_TRUE(said.contains(QStringLiteral("no table %1 ").arg(QLatin1String(table)))) << said.toStdString();
        EXPECT_TRUE(
            said.endsWith(QStringLiteral("mysql -h 127.0.0.1 -P %1 -u kibo -p bare < mysql.sql").arg(server_.port())))
            << said.toStdString();
        EXPECT_EQ(database_.problem(), said);
    }
    for (int time = 0; time < 2; ++time) {
        const Result<void> made = makeServerTables(settings);
        ASSERT_TRUE(made) << made.failure().text;
    }
    EXPECT_TRUE(database_.OpenDatabase(settings, {}));
    EXPECT_EQ(server_.run(QStringLiteral("show columns from bare.sent")).trimmed().section(u'\t', 0, 0),
              QStringLiteral("own"));
    const QString count = QStringLiteral("select count(*) from information_schema.tables where table_schema = '%1'");
    EXPECT_EQ(server_.run(count.arg(QStringLiteral("bare"))), server_.run(count.arg(QStringLiteral("kibo"))));
    server_.run(QStringLiteral("drop database bare"));
}

test::StoreUnderTest emptied(bool dsn) {
    test::MariaDbServer& server = test::MariaDbServer::shared();
    server.empty();
    return {server.settings(dsn), QStringLiteral("/nowhere"), [&](const QString& sql) { return server.run(sql); }};
}

}  // namespace

std::vector<test::StoreChoice> test::storeChoices() {
    return {{"MySqlDriver", [] { return emptied(false); }}, {"MySqlDsn", [] { return emptied(true); }}};
}

}  // namespace kibo
