#include "session/profile_hold.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "engine/abandoned_messages.h"
#include "support/manual_clock.h"
#include "support/mariadb_server.h"

namespace kibo::test {
namespace {

/// Instances of profile 7 on one server, each with a connection and a clock of its own.
struct Instance {
    Instance(const QString& host, qint64 process) : key{host, process} {
        settings = MariaDbServer::shared().settings(false);
        settings.Multi = u"Y"_qs;
        state.cb_Profil.text = u"7"_qs;
        EXPECT_TRUE(database.OpenDatabase(settings, {}).ok());
        sql(u"insert into kibo_instance (profil, host, process) values ('7', '%1', %2)"_qs.arg(host).arg(process));
    }
    static QString sql(const QString& statement) {
        return MariaDbServer::shared().run(u"use kibo; "_qs + statement).trimmed();
    }
    /// As if nothing had been heard of it for a while.
    void fallSilent() const {
        sql(u"update kibo_instance set beat = beat - interval 11 second where host = '%1'"_qs.arg(key.host));
    }
    void tick(int seconds = 2) {
        for (int i = 0; i < seconds; ++i) {
            clock.wait(1000);
            hold.tick();
        }
    }
    bool works() const { return !state.standby.visible; }

    InstanceKey key;
    GatewayState state;
    Settings settings;
    ManualClock clock{QDateTime::currentDateTime()};
    ErrorPolicy policy;
    Database database{clock, policy};
    std::string told;
    ProfileHold hold{{state, settings, database, clock,
                      [this](bool tookOver) { told += tookOver ? "over " : "first "; }, [this] { told += "off "; },
                      key}};
};

class ProfileHoldTest : public testing::Test {
 protected:
    ProfileHoldTest() { MariaDbServer::shared().empty(); }
};

TEST_F(ProfileHoldTest, oneWorksAndAnotherTakesOverWhenItIsSilent) {
    Instance a(u"office"_qs, 11), b(u"laptop"_qs, 12);
    EXPECT_FALSE(a.works()) << "before the database was asked";
    a.tick();
    b.tick(20);
    EXPECT_TRUE(a.works());
    EXPECT_FALSE(b.works());
    EXPECT_TRUE(b.state.standby.caption.contains(u"profile 7 is held by office since 20"_qs));
    EXPECT_EQ(b.hold.confirm(u"5"_qs, u"x/1"_qs), Hold::Lost);

    Instance::sql(
        u"insert into kibo_message (source, profil, outbox_id, taken_by) values ('multi', '7', 5, 'a/1'), "
        "('multi', '7', 5, 'other'), ('multi', '8', 5, 'a/1')"_qs);
    const auto typed = [] {
        return Instance::sql(u"select group_concat(id) from kibo_message where typed > 0"_qs).toStdString();
    };
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Ours);
    EXPECT_EQ(a.hold.confirm(u"6"_qs, {}), Hold::Ours) << "a message without a record";
    EXPECT_EQ(typed(), "1");
    Instance::sql(u"update kibo_message set typed = null, ended = now() where id = 1"_qs);
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Lost) << "another instance has settled it";
    Instance::sql(u"update kibo_message set ended = null where id = 1"_qs);
    a.tick();
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Ours);

    a.fallSilent();
    a.state.stepRunning = true;
    a.tick(4);  // the one that was silent goes on in time
    b.tick();
    EXPECT_FALSE(b.works());
    a.fallSilent();
    b.tick();
    EXPECT_TRUE(b.works());
    EXPECT_EQ(b.told, "over ");
    Instance::sql(u"update kibo_message set typed = null"_qs);
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Lost);
    EXPECT_FALSE(a.works());
    EXPECT_EQ(typed(), "NULL");
    Instance::sql(u"delete from kibo_instance where host = 'laptop'"_qs);
    a.tick(10);
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Lost) << "the message in hand is of the former hold";
    a.state.stepRunning = false;
    a.tick();
    EXPECT_TRUE(a.works());
    EXPECT_EQ(a.told, "first over over ");
}

TEST_F(ProfileHoldTest, standbysEndWithTheirProfileAndTheLackOfATableHindersNobody) {
    Instance a(u"office"_qs, 11), b(u"laptop"_qs, 12);
    a.tick();
    b.tick();
    a.hold.switchOffOthers();
    b.tick();
    EXPECT_EQ(b.told, "off ");
    Instance::sql(u"update kibo_instance set switched_off = null"_qs);
    MariaDbServer::shared().stop();
    a.tick(5);
    EXPECT_TRUE(a.works()) << "a server that is away says nothing about who has the profile";
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Unknown);
    MariaDbServer::shared().start();
    Instance::sql(u"rename table kibo_instance to elsewhere"_qs);
    a.tick(8);
    EXPECT_TRUE(a.works());
    EXPECT_EQ(a.hold.confirm(u"5"_qs, u"a/1"_qs), Hold::Ours);
    EXPECT_EQ(a.state.instance, QString());
    Instance::sql(u"rename table elsewhere to kibo_instance"_qs);
    a.tick(70);
    EXPECT_TRUE(a.works());
    EXPECT_NE(a.state.instance, QString());
}

class AbandonedTest : public ProfileHoldTest, public testing::WithParamInterface<bool> {};

TEST_P(AbandonedTest, goBackOnceOrAreInDoubt) {
    const bool multi = GetParam();
    Instance b(u"laptop"_qs, 12);
    b.settings.Multi = multi ? u"Y"_qs : u"N"_qs;
    b.tick();
    SendJournal journal;
    const QTemporaryDir folder;
    ASSERT_TRUE(journal.open(folder.filePath(u"journal"_qs)).ok());
    AbandonedMessages abandoned(
        b.state, b.settings, b.database, b.clock, journal,
        [&b](const QString& id, const QString& attempt) { return b.hold.confirm(id, attempt); });

    const QString source = multi ? u"multi"_qs : u"outbox"_qs;
    const auto copy = [&](int id, const char* status) {
        const QString table = multi ? u"multi (tipe, profil, id_outbox, "_qs : u"sent (id, "_qs;
        const QString key = multi ? u"'S', '7', "_qs : QString();
        Instance::sql(
            u"insert into %1wa_mode, wa_no, wa_text, wa_media, status) values (%2%3, 2, 'Anna', 'a|b', 'x', %4)"_qs
                .arg(table, key)
                .arg(id)
                .arg(QLatin1String(status)));
    };
    const auto record = [&](int id, const char* by, const char* typed = "null", const char* taken = "now()",
                            const char* result = "null") {
        Instance::sql(
            u"insert into kibo_message (source, profil, outbox_id, taken, typed, taken_by, result, ended) "
            "values ('%1', '7', %2, %3, %4, %5, %6, if(%6 is null, null, now()))"_qs.arg(source)
                .arg(id)
                .arg(QLatin1String(taken), QLatin1String(typed), QLatin1String(by), QLatin1String(result)));
    };
    const QByteArray ours = "'" + b.state.instance.toUtf8() + "/3'";
    for (int id = 101; id <= 111; ++id) copy(id, id == 105 ? "'fail'" : "null");
    record(101, "'office 11 x/1'");
    record(102, "'office 11 x/2'", "now()");
    record(103, "null");
    record(104, ours.constData());
    copy(105, "''");
    record(105, "'office 11 x/3'");
    copy(106, "''");
    record(106, "'office 11 x/4'");
    record(107, "'office 11 w/1'", "null", "now()", "'put back'");
    record(107, "'office 11 x/5'");
    record(108, "'office 11 x/6'", "null", "now() - interval 2 hour");
    record(109, "'office 11 x/7'");
    record(109, "'office 11 x/8'", "now()", "now()", "'sent'");
    record(110, "'office 11 x/9'");
    QueuedRow inHand;
    inHand.id = u"110"_qs;
    ASSERT_TRUE(journal.taken(inHand, u"office 11 x/9"_qs).ok());
    Instance::sql(
        u"insert into kibo_message (source, profil, outbox_id, taken, taken_by) values ('%1', '8', 111, now(), 'y')"_qs
            .arg(source));
    abandoned.settle();

    const auto result = [&](int id) {
        const QString queue = multi ? u"multi where tipe = 'O' and profil = '7' and id"_qs : u"outbox where id"_qs;
        const QString sent = multi ? u"multi where tipe = 'S' and profil = '7' and id_outbox"_qs : u"sent where id"_qs;
        return Instance::sql(
                   u"select concat((select count(*) from %1 = %3 and wa_mode = 2 and wa_no = 'Anna' and wa_text = "
                   u"'a|b' and wa_media = 'x'), "
                   "' ', (select coalesce(group_concat(coalesce(status, '') order by status separator '+'), '-') from "
                   "%2 = %3), ' ', "
                   "(select coalesce(result, 'open') from kibo_message where outbox_id = %3 order by id limit 1))"_qs
                       .arg(queue, sent)
                       .arg(id))
            .toStdString();
    };
    EXPECT_EQ(result(101), "1 - put back");
    EXPECT_EQ(result(102), "0 fail in doubt");
    EXPECT_EQ(result(103), "0  open") << "taken by one that keeps no hold";
    EXPECT_EQ(result(104), "0  open") << "our own";
    EXPECT_EQ(result(105), "1 fail put back") << "the copy of the attempt before stays";
    EXPECT_EQ(result(106), "0 fail+fail in doubt") << "two copies: either may be the one";
    EXPECT_EQ(result(107), "0 fail put back") << "it had gone back before";
    EXPECT_EQ(result(108), "0 fail in doubt") << "too long ago";
    EXPECT_EQ(result(109), "0  put back") << "a later attempt has sent it";
    EXPECT_EQ(result(110), "0  open") << "in our own journal";
    EXPECT_EQ(result(111), "0  open") << "another profile's";
    Instance::sql(
        u"insert into kibo_message (source, profil, outbox_id, taken, taken_by) values ('%1', '7', 111, now(), 'z')"_qs
            .arg(source));
    abandoned.settle();
    EXPECT_EQ(result(111), "0  open");
    b.clock.wait(AbandonedMessages::kEveryMs);
    abandoned.settle();
    EXPECT_TRUE(result(111).starts_with("1 -"));

    // One that was stopped, and doesn't know yet that another one works by now.
    Instance a(u"office"_qs, 11);
    b.fallSilent();
    a.tick();
    copy(112, "null");
    record(112, "'office 11 z/1'");
    b.clock.wait(AbandonedMessages::kEveryMs);
    abandoned.settle();
    EXPECT_EQ(result(112), "0  open");
    EXPECT_FALSE(b.works());
}

INSTANTIATE_TEST_SUITE_P(Sessions, AbandonedTest, testing::Bool());

}  // namespace
}  // namespace kibo::test
