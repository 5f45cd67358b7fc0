#include <gtest/gtest.h>

#include "app/start_up.h"
#include "support/answering_dialogs.h"
#include "support/mariadb_server.h"

namespace kibo::test {
namespace {

TEST(StartUpOnServer, asksBeforeItMakesTheTablesThatAServerLacks) {
    MariaDbServer server;
    server.run(QStringLiteral("create database bare; grant all on bare.* to kibo@'%'"));
    Settings settings = server.settings(false);
    settings.MySQL_DB = QStringLiteral("bare");
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    AnsweringDialogs dialogs;
    StartUp startUp(dialogs, {});

    dialogs.answers = {false, false};
    EXPECT_FALSE(startUp.openDatabase(database, settings));
    ASSERT_EQ(dialogs.shown.size(), 2u) << "after No the usual box follows";
    EXPECT_TRUE(dialogs.shown[0].defaultIsNo);
    EXPECT_NE(dialogs.said(0).find("mysql -h"), std::string::npos) << dialogs.said(0);
    EXPECT_EQ(server.run(QStringLiteral("show tables in bare")), QString());

    EXPECT_TRUE(startUp.openDatabase(database, settings));
    EXPECT_EQ(dialogs.shown.size(), 3u);
    EXPECT_TRUE(database.Execute(QStringLiteral("insert into outbox (wa_no, wa_text) values ('62811', 'a')")));
}

}  // namespace
}  // namespace kibo::test
