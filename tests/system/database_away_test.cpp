#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>
#include <set>

#include "engine/login_watch.h"
#include "real_gateway.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

/// A server that goes away in different ways in the middle of a queue.
class DatabaseAway : public ::testing::Test {
 protected:
    static constexpr int kSpeed = 5;
    static constexpr qint64 kBackMs = 10'000;

    DatabaseAway() : real(test::RealGateway::speed(kSpeed)) {
        server.empty();
        real.settings = server.settings(false, real.settings);
        real.openStore();
        real.connect();
        for (int i = 0; i < kMessages; ++i)
            real.queue(QStringLiteral("62877000000%1").arg(i % 3), QStringLiteral("message %1").arg(i));
    }

    /// Ticks until so many messages have arrived; false after `mostMs`.
    bool runUntilArrived(size_t count, qint64 mostMs) {
        QElapsedTimer waited;
        waited.start();
        while (real.standIn.received().size() < count && waited.elapsed() < mostMs) real.tick();
        return real.standIn.received().size() >= count;
    }
    /// Nothing is sent while the database is away. A minute each time with KIBO_TEST_AWAY_MS=60000; nothing depends on
    /// how long it is.
    void runAway(qint64 usualMs) {
        const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_AWAY_MS");
        const qint64 forMs = wanted > 0 ? wanted : usualMs;
        const size_t before = real.standIn.received().size();
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < forMs) real.tick();
        EXPECT_EQ(real.standIn.received().size(), before);
        EXPECT_FALSE(real.state.wait.visible);
        EXPECT_TRUE(real.state.dboff.visible);
    }
    void expectGoesOn() {
        EXPECT_TRUE(runUntilArrived(real.standIn.received().size() + 1, kBackMs)) << real.state.step.toStdString();
        EXPECT_FALSE(real.state.dboff.visible);
    }
    void expectEachOnce() {
        EXPECT_TRUE(runUntilArrived(kMessages, 60'000));
        real.tick();
        std::set<std::string> texts;
        for (const auto& message : real.standIn.received())
            EXPECT_TRUE(texts.insert(message.text).second) << message.text;
        EXPECT_EQ(texts.size(), size_t{kMessages});
        EXPECT_EQ(server
                      .run(QStringLiteral(
                          "select count(*), count(distinct id), sum(coalesce(status, '') = 'fail') from sent"))
                      .trimmed(),
                  QStringLiteral("%1\t%1\t0").arg(kMessages));
        EXPECT_TRUE(real.journal.entries().empty());
    }

    static constexpr int kMessages = 8;
    test::MariaDbServer& server = test::MariaDbServer::shared();
    test::RealGateway real;
};

TEST_F(DatabaseAway, NothingIsSentMeanwhileAndItGoesOnByItself) {
    ASSERT_TRUE(runUntilArrived(1, 60'000));
    server.stop();
    runAway(4000);
    server.start();
    expectGoesOn();

    server.run(QStringLiteral("set global read_only = 1"));
    runAway(1500);
    server.run(QStringLiteral("set global read_only = 0"));
    expectGoesOn();

    const QString connections =
        server.run(QStringLiteral("select id from information_schema.processlist where user = 'kibo'"));
    for (const QString& id : connections.split(u'\n', Qt::SkipEmptyParts)) server.run(QStringLiteral("kill ") + id);
    expectGoesOn();

    server.run(QStringLiteral("rename table sent to away"));
    runAway(1500);
    server.run(QStringLiteral("rename table away to sent, outbox to away"));
    runAway(1500);
    server.run(QStringLiteral("rename table away to outbox"));
    expectGoesOn();
    expectEachOnce();
}

TEST_F(DatabaseAway, LoginCodeIsWrittenAgainWhenTheServerIsBack) {
    server.run(QStringLiteral("insert into web_user (id) values ('7')"));
    real.state.cb_Profil.text = QStringLiteral("7");
    LoginWatch login(real.state, real.settings, real.database, *real.page, real.clock, real.folder.path());
    PageLook look;
    look.qrCodes = 1;
    server.stop();
    login.tick(look);
    EXPECT_TRUE(real.state.dboff.visible && !real.state.dboff.caption.isEmpty());
    server.start();
    look.qrData = QStringLiteral("code");
    QElapsedTimer waited;
    for (waited.start(); real.state.dboff.visible && waited.elapsed() < kBackMs; QThread::msleep(100)) login.tick(look);
    EXPECT_EQ(server.run(QStringLiteral("select qr from web_user")).trimmed(), look.qrData);
}

TEST_F(DatabaseAway, RowThatTheServerRefusesHoldsUpNoOther) {
    server.run(
        QStringLiteral("alter table sent modify wa_text varchar(10);"
                       "update outbox set wa_text = 'longer than ten' where id = 2"));
    EXPECT_TRUE(runUntilArrived(kMessages - 1, 60'000)) << real.state.step.toStdString();
    EXPECT_EQ(real.state.refusedOut,
              QStringLiteral("Message 2 can't be moved to the sent log: Data too long for column 'wa_text' at row 1"));
    EXPECT_FALSE(real.state.dboff.visible);
    server.run(QStringLiteral("alter table sent modify wa_text mediumtext"));
    EXPECT_EQ(server.run(QStringLiteral("select id from outbox")).trimmed(), QStringLiteral("2"));
}

}  // namespace
}  // namespace kibo
