#include "real_gateway.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

/// How many messages in a row; environment KIBO_TEST_MESSAGES.
int messages() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_MESSAGES");
    return wanted > 0 ? wanted : 40;
}

enum Store { Embedded, MySqlByDriver, MySqlByDsn };
constexpr const char* kStoreNames[] = {"Embedded", "MySqlByDriver", "MySqlByDsn"};

/// The gateway changes the store under its browser and page.
class StoreRun : public test::OnRealGateway<100, ::testing::TestWithParam<Store>> {
 protected:
    void SetUp() override {
        real->standIn.reset();
        real->behave(R"({"chatOpenDelayMs": {"min": 0, "max": 0}, "readyDelayMs": 0})");
        if (GetParam() == Embedded) return;
        test::MariaDbServer& server = test::MariaDbServer::shared();
        server.empty();
        real->settings = server.settings(GetParam() == MySqlByDsn, real->settings);
        real->openStore();
    }
};

TEST_P(StoreRun, EveryMessageArrivesOnceAndInOrder) {
    const int count = messages();
    for (int i = 0; i < count; ++i)
        real->queue(QStringLiteral("62877%1").arg(i % 7, 6, 10, QLatin1Char('0')),
                    QStringLiteral("number %1 of many, it's \"quoted\" \\ 😀").arg(i));
    real->runQueue(20'000);
    ASSERT_TRUE(real->standIn.waitForReceived(static_cast<size_t>(count), std::chrono::seconds(5)));
    const auto received = real->standIn.received();
    ASSERT_EQ(received.size(), static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(QString::fromStdString(received[static_cast<size_t>(i)].text),
                  QStringLiteral("number %1 of many, it's \"quoted\" \\ 😀").arg(i));
    EXPECT_EQ(real->count("select count(*) from sent where coalesce(status, '') <> 'fail'"), count);
    EXPECT_EQ(real->count("select count(distinct id) from sent"), count);
    EXPECT_TRUE(real->gateway->queue.markFailed(QStringLiteral("1")));
    EXPECT_EQ(real->count("select count(*) from sent where status = 'fail'"), 1);
}

INSTANTIATE_TEST_SUITE_P(Stores, StoreRun, ::testing::Values(Embedded, MySqlByDriver, MySqlByDsn),
                         [](const auto& store) { return kStoreNames[store.param]; });

}  // namespace
}  // namespace kibo
