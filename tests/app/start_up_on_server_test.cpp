#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "app/start_up.h"
#include "app/table_offer.h"
#include "support/answering_dialogs.h"
#include "support/mariadb_server.h"

namespace kibo::test {
namespace {

TEST(StartUpOnServer, asksBeforeItMakesTheTablesThatAServerLacks) {
    MariaDbServer server;
    server.run(
        QStringLiteral("create database bare; grant all on bare.* to kibo@'%'; create table bare.sent (own int)"));
    Settings settings = server.settings(false);
    settings.MySQL_DB = QStringLiteral("bare");
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    AnsweringDialogs dialogs;
    StartUp startUp(dialogs, {});

    const QString command = QStringLiteral("mysql -h 127.0.0.1 -P %1 -u kibo -p bare < mysql.sql").arg(server.port());
    for (const auto& [multi, table] : {std::pair("N", "no table outbox "), std::pair("Y", "no table multi ")}) {
        settings.Multi = QLatin1String(multi);
        dialogs.answers = {false, false};
        dialogs.shown.clear();
        EXPECT_FALSE(startUp.openDatabase(database, settings));
        ASSERT_EQ(dialogs.shown.size(), 2u) << "after No the usual box follows";
        EXPECT_TRUE(dialogs.shown[0].defaultIsNo);
        for (const QString& part : {QString::fromLatin1(table), command})
            EXPECT_TRUE(dialogs.shown[0].text.contains(part)) << dialogs.said(0);
        EXPECT_TRUE(database.problem().endsWith(command)) << database.problem().toStdString();
    }
    EXPECT_EQ(server.run(QStringLiteral("show tables in bare")).trimmed(), QStringLiteral("sent"));

    EXPECT_TRUE(startUp.openDatabase(database, settings));
    EXPECT_EQ(dialogs.shown.size(), 3u);
    EXPECT_TRUE(database.Execute(QStringLiteral("insert into outbox (wa_no, wa_text) values ('62811', 'a')")));
    EXPECT_EQ(server.run(QStringLiteral("show columns from bare.sent")).section(u'\t', 0, 0), QStringLiteral("own"));
    const QString count = QStringLiteral(
        "select count(*) from information_schema.tables where table_schema = '%1' and table_name <> 'kibo_outcome'");
    EXPECT_EQ(server.run(count.arg(QStringLiteral("bare"))), server.run(count.arg(QStringLiteral("kibo"))));

    // What an earlier version has made lacks one, and that one can be done without.
    const QTemporaryDir folder;
    TableOffer offer({database, settings, dialogs, folder.filePath(QStringLiteral("kibo.ini"))});
    const auto kept = [&] { return server.run(QStringLiteral("show tables in bare like 'kibo_message'")).trimmed(); };
    dialogs.shown.clear();
    offer.ask();
    EXPECT_EQ(dialogs.shown.size(), 0u) << "nothing is missing";
    server.run(QStringLiteral("drop table bare.kibo_message"));
    dialogs.answers = {true};
    offer.ask();
    ASSERT_EQ(dialogs.shown.size(), 1u) << dialogs.said(1);
    EXPECT_EQ(kept(), QStringLiteral("kibo_message"));
    server.run(QStringLiteral("drop table bare.kibo_message"));
    dialogs.answers = {false};
    for (int i = 0; i < 2; ++i) offer.ask();
    EXPECT_EQ(dialogs.shown.size(), 2u) << "a No is remembered";
    EXPECT_EQ(kept(), QString());
}

}  // namespace
}  // namespace kibo::test
