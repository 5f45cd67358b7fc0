#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>

#include "engine/login_watch.h"
#include "real_gateway.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

/// A server that goes away in different ways in the middle of a queue.
class DatabaseAway : public ::testing::Test {
 protected:
    static constexpr qint64 kBackMs = 10'000;

    DatabaseAway() : real(test::RealGateway::speed(5)) {
        server.empty();
        real.settings = server.settings(true, real.settings);
        real.openStore();
        real.connect();
        for (int i = 0; i < kMessages; ++i) real.queue(u"62877000000%1"_qs.arg(i % 3), text(i));
    }

    static QString text(int i) { return u"number %1 of many, it's \"quoted\" \\ 😀"_qs.arg(i); }
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
    void expectEachOnceAndInOrder() {
        EXPECT_TRUE(runUntilArrived(kMessages, 60'000));
        real.tick();
        const auto received = real.standIn.received();
        ASSERT_EQ(received.size(), size_t{kMessages});
        for (int i = 0; i < kMessages; ++i) EXPECT_EQ(received[static_cast<size_t>(i)].text, text(i).toStdString());
        EXPECT_EQ(server.run(u"select count(distinct id) from sent where coalesce(status, '') <> 'fail'"_qs).toInt(),
                  kMessages);
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

    server.run(u"set global read_only = 1"_qs);
    runAway(1500);
    server.run(u"set global read_only = 0"_qs);
    expectGoesOn();

    const QString connections = server.run(u"select id from information_schema.processlist where user = 'kibo'"_qs);
    for (const QString& id : connections.split(u'\n', Qt::SkipEmptyParts)) server.run(u"kill "_qs + id);
    expectGoesOn();

    server.run(u"rename table sent to away"_qs);
    runAway(1500);
    server.run(u"rename table away to sent, outbox to away"_qs);
    runAway(1500);
    server.run(u"rename table away to outbox"_qs);
    expectGoesOn();
    expectEachOnceAndInOrder();
}

TEST_F(DatabaseAway, LoginCodeIsWrittenAgainWhenTheServerIsBack) {
    server.run(u"insert into web_user (id) values ('7')"_qs);
    real.state.cb_Profil.text = u"7"_qs;
    LoginWatch login(real.state, real.settings, real.database, *real.page, real.clock, real.folder.path());
    PageLook look;
    login.tick(look);
    EXPECT_EQ(server.run(u"select qr from web_user"_qs).trimmed(), u"wait"_qs) << "no code of an earlier session";
    look.qrCodes = 1;
    server.stop();
    login.tick(look);
    EXPECT_TRUE(real.state.dboff.visible && !real.state.dboff.caption.isEmpty());
    server.start();
    look.qrData = u"code"_qs;
    QElapsedTimer waited;
    for (waited.start(); real.state.dboff.visible && waited.elapsed() < kBackMs; QThread::msleep(100)) login.tick(look);
    EXPECT_EQ(server.run(u"select qr from web_user"_qs).trimmed(), look.qrData);
}

/// What only a server can go through: locks, snapshots, and times that are no texts.
TEST_F(DatabaseAway, RowIsTakenOnlyAsItWasLoadedAndPutBack) {
    OutboxQueue& queue = real.gateway->queue;
    const auto next = [&] {
        queue.cmd_OutboxRefresh_Click();
        return queue.nextRow().value_or(QueuedRow{});
    };
    for (const char* time : {"null", "'2026-03-14 15:09:26'"}) {
        server.empty();
        server.run(
            u"insert into outbox (wa_no, wa_text, wa_time) values ('6281', 'a', %1)"_qs.arg(QLatin1String(time)));
        const QueuedRow loaded = next();
        server.run(u"update outbox set wa_no = '6289'"_qs);
        EXPECT_EQ(queue.take(loaded), OutboxQueue::Taken::No);
        const QueuedRow row = next();
        ASSERT_EQ(queue.take(row), OutboxQueue::Taken::Yes);
        EXPECT_TRUE(queue.putBack(row)) << time;
        EXPECT_EQ(next(), row);
        EXPECT_EQ(server.run(u"select count(*) from sent"_qs).trimmed(), u"0"_qs);
    }
}

}  // namespace
}  // namespace kibo
