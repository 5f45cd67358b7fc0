#include "real_gateway.h"
#include "support/mariadb_server.h"

namespace kibo {
namespace {

/// How many messages in a row; environment KIBO_TEST_MESSAGES.
int messages() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_MESSAGES");
    return wanted > 0 ? wanted : 40;
}

enum class Store { Embedded, MySqlByDriver, MySqlByDsn };

/// One browser and one page for all stores; the gateway changes the store under them.
class StoreRun : public ::testing::TestWithParam<Store> {
 protected:
    static void SetUpTestSuite() {
        real = new test::RealGateway(test::RealGateway::speed(100));
        real->openStore();
        real->connect();
    }
    static void TearDownTestSuite() {
        delete real;
        real = nullptr;
    }
    void SetUp() override {
        ASSERT_NE(real, nullptr);
        real->standIn.reset();
        real->behave(R"({"chatOpenDelayMs": {"min": 0, "max": 0}, "readyDelayMs": 0})");
        if (GetParam() == Store::Embedded) return;
        test::MariaDbServer& server = test::MariaDbServer::shared();
        server.empty();
        const Settings store = server.settings(GetParam() == Store::MySqlByDsn);
        real->settings.UseMDB = store.UseMDB;
        real->settings.dsn = store.dsn;
        real->settings.user = store.user;
        real->settings.password = store.password;
        real->settings.MySQL_WithoutDSN = store.MySQL_WithoutDSN;
        real->settings.MySQL_Server = store.MySQL_Server;
        real->settings.MySQL_DB = store.MySQL_DB;
        real->settings.Port = store.Port;
        real->openStore();
    }

    static inline test::RealGateway* real = nullptr;
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
}

INSTANTIATE_TEST_SUITE_P(Stores, StoreRun, ::testing::Values(Store::Embedded, Store::MySqlByDriver, Store::MySqlByDsn),
                         [](const auto& run) {
                             switch (run.param) {
                                 case Store::Embedded:
                                     return "Embedded";
                                 case Store::MySqlByDriver:
                                     return "MySqlByDriver";
                                 case Store::MySqlByDsn:
                                     return "MySqlByDsn";
                             }
                             return "";
                         });

}  // namespace
}  // namespace kibo
