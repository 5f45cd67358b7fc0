#include <gtest/gtest.h>

#include <QThread>

#include "store/database.h"
#include "store/transaction.h"
#include "store_under_test.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

class LostConnectionTest : public testing::Test {
 protected:
    void SetUp() override { ASSERT_TRUE(database_.OpenDatabase(server_.settings(false), {})); }
    bool run(const char* sql) { return database_.Execute(QLatin1String(sql)); }

    test::MariaDbServer& server_ = test::MariaDbServer::shared();
    SystemClock clock_;
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
};

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
    EXPECT_FALSE(run("delete from outbox")) << "opened again inside a transaction";
    { const auto ended = std::move(open); }
    EXPECT_TRUE(run("delete from outbox"));
    EXPECT_EQ(rows.value()->text(999, 0), QString());

    Settings settings = server_.settings(true);
    settings.password = QStringLiteral("wrong");
    const Result<void> opened = database_.OpenDatabase(settings, {});
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.failure().text.find("Access denied for user 'kibo'@"), 0u) << opened.failure().text;
}

TEST_F(LostConnectionTest, SurfacesOnceAndIsOpenedAgainAllTheSame) {
    policy_.setDebugMode(true);
    EXPECT_THROW(run("delete from nowhere"), SurfacedError);
    EXPECT_FALSE(run("delete from nowhere")) << "a box each time would never end";
    EXPECT_THROW(run("delete from nowhere_else"), SurfacedError);
    server_.stop();
    EXPECT_THROW(run("delete from tmp"), SurfacedError);
    EXPECT_FALSE(run("delete from tmp") || run("delete from outbox"));
    EXPECT_FALSE(database_.problem().isEmpty());
    server_.start();
    QThread::sleep(2);
    EXPECT_TRUE(run("delete from tmp"));
    EXPECT_EQ(database_.problem(), QString());
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
