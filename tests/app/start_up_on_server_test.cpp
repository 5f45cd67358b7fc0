#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "app/start_up.h"
#include "app/table_offer.h"
#include "engine/held_rows.h"
#include "engine/unsent_list.h"
#include "support/answering_dialogs.h"
#include "support/mariadb_server.h"
#include "widgets/qt_dialogs.h"

namespace kibo::test {
namespace {

TEST(StartUpOnServer, asksBeforeItMakesTheTablesThatAServerLacks) {
    MariaDbServer server;
    server.run(u"create database bare; grant all on bare.* to kibo@'%'; create table bare.sent (own int)"_qs);
    Settings settings = server.settings(false);
    settings.MySQL_DB = u"bare"_qs;
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    AnsweringDialogs dialogs;
    StartUp startUp(dialogs, {});

    const QString command = u"mysql -h 127.0.0.1 -P %1 -u kibo -p bare < mysql.sql"_qs.arg(server.port());
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
    EXPECT_EQ(server.run(u"show tables in bare"_qs).trimmed(), u"sent"_qs);

    EXPECT_TRUE(startUp.openDatabase(database, settings));
    EXPECT_EQ(dialogs.shown.size(), 3u);
    EXPECT_TRUE(database.Execute(u"insert into outbox (wa_no, wa_text) values ('62811', 'a')"_qs));
    EXPECT_EQ(server.run(u"show columns from bare.sent"_qs).section(u'\t', 0, 0), u"own"_qs);
    const QString count =
        u"select count(*) from information_schema.tables where table_schema = '%1' and table_name <> 'kibo_outcome'"_qs;
    EXPECT_EQ(server.run(count.arg(u"bare"_qs)), server.run(count.arg(u"kibo"_qs)));

    // What an earlier version has made lacks one, and that one can be done without.
    const QTemporaryDir folder;
    TableOffer offer({database, settings, dialogs, folder.filePath(u"kibo.ini"_qs)});
    const auto kept = [&] { return server.run(u"show tables in bare like 'kibo_message'"_qs).trimmed(); };
    dialogs.shown.clear();
    offer.ask();
    EXPECT_EQ(dialogs.shown.size(), 0u) << "nothing is missing";
    server.run(
        u"drop table bare.kibo_message, bare.kibo_inbox; "
        "alter table bare.kibo_instance drop key kibo_instance_holds, drop column holds"_qs);
    dialogs.answers = {true};
    offer.ask();
    ASSERT_EQ(dialogs.shown.size(), 1u) << dialogs.said(1);
    EXPECT_EQ(kept(), u"kibo_message"_qs);
    EXPECT_TRUE(server.run(u"show index from bare.kibo_instance where column_name = 'holds'"_qs)
                    .contains(u"kibo_instance_holds"_qs));
    offer.ask();
    EXPECT_EQ(dialogs.shown.size(), 1u) << "tables and columns are complete";
    server.run(u"drop table bare.kibo_message, bare.kibo_inbox"_qs);
    UnattendedDialogs nobody;
    TableOffer({database, settings, nobody, folder.filePath(u"kibo.ini"_qs)}).ask();
    dialogs.answers = {false};
    for (int i = 0; i < 2; ++i) offer.ask();
    EXPECT_EQ(dialogs.shown.size(), 2u) << "a No is remembered";
    EXPECT_EQ(kept(), QString());
}

TEST(ListsOnServer, showWhatFailedAndWhatIsHeld) {
    MariaDbServer& server = MariaDbServer::shared();
    server.run(
        u"insert into outbox (id, wa_mode, wa_no) values (1, 0, '62'), (2, 3, '63');insert into multi (tipe, profil, wa_mode, wa_no) values ('O', '7', 3, '64'), ('O', '8', 3, '65');insert into sent (id, wa_no, wa_text, status) values (3, '66', 'a', 'fail'), (4, '67', 'b', '');insert into multi (tipe, profil, id_outbox, wa_no, wa_text, status) values ('S', '7', 3, '68', 'c', 'fail');insert into kibo_message (source, profil, outbox_id, ended, result, reason) values ('outbox', '7', 3, now(), 'fail', 'x'), ('outbox', '7', 4, now(), 'sent', null), ('multi', '7', 3, now(), 'in doubt', 'y')"_qs);
    Settings settings = server.settings(false);
    const SystemClock clock;
    const ErrorPolicy policy;
    const auto shown = [](const Grid& grid, int column) {
        QStringList texts;
        for (int row = 1; row < grid.rowCount(); ++row) texts.append(grid.text(row, column));
        return texts.join(u' ').toStdString();
    };
    for (const bool multi : {false, true}) {
        settings.Multi = multi ? u"Y"_qs : u"N"_qs;
        Database database(clock, policy);
        ASSERT_TRUE(database.OpenDatabase(settings, {}));
        GatewayState state;
        state.cb_Profil.text = u"7"_qs;
        HeldRows(state, settings, database, clock).look();
        EXPECT_EQ(shown(state.held, 1), multi ? "64" : "63");
        UnsentList unsent(state, settings, database, clock);
        unsent.fill();
        EXPECT_EQ(shown(state.ms2, UnsentColumn::Number), multi ? "68" : "66");
        EXPECT_EQ(shown(state.ms2, UnsentColumn::Time).size(), 19u);
        unsent.allHandled();
        EXPECT_EQ(database.problem(), QString());
        UnsentList next(state, settings, database, clock);
        next.fill();
        EXPECT_EQ(state.ms2.rowCount(), 1);
    }
}

}  // namespace
}  // namespace kibo::test
