#include <gtest/gtest.h>

#include "engine/outbox_queue.h"
#include "support/manual_clock.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

/// What only a server can go through: locks, snapshots, and times that are no texts.
class QueueOnServer : public testing::Test {
 protected:
    QueueOnServer() {
        server.empty();
        EXPECT_TRUE(database.OpenDatabase(settings, {}));
    }
    QueuedRow next() {
        queue.cmd_OutboxRefresh_Click();
        return queue.nextRow().value_or(QueuedRow{});
    }

    test::MariaDbServer& server = test::MariaDbServer::shared();
    Settings settings = server.settings(false);
    test::ManualClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    GatewayState state;
    OutboxQueue queue{state, settings, database, clock};
};

TEST_F(QueueOnServer, TakesARowOnlyAsItWasLoadedAndPutsItBack) {
    for (const char* time : {"null", "'2026-03-14 15:09:26'"}) {
        server.empty();
        server.run(QStringLiteral("insert into kibo.outbox (wa_no, wa_text, wa_time) values ('6281', 'a', %1)")
                       .arg(QLatin1String(time)));
        const QueuedRow loaded = next();
        server.run(QStringLiteral("update kibo.outbox set wa_no = '6289'"));
        EXPECT_EQ(queue.take(loaded), OutboxQueue::Taken::No);
        const QueuedRow row = next();
        ASSERT_EQ(queue.take(row), OutboxQueue::Taken::Yes);
        EXPECT_TRUE(queue.putBack(row)) << time;
        EXPECT_EQ(next(), row);
        EXPECT_EQ(server.run(QStringLiteral("select count(*) from kibo.sent")).trimmed().right(1), QStringLiteral("0"));
    }
}

}  // namespace
}  // namespace kibo
