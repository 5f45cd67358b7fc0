#include "store_under_test.h"
#include "support/mariadb_server.h"

namespace kibo::test {
namespace {

class MySqlStore : public StoreUnderTest {
 public:
    explicit MySqlStore(bool dsn) : dsn_(dsn) { server_.empty(); }

    Settings settings() const override { return server_.settings(dsn_); }
    QString programFolder() const override { return QStringLiteral("/nowhere"); }
    QString outside(const QString& sql) override { return server_.run(sql); }

 private:
    MariaDbServer& server_ = MariaDbServer::shared();
    const bool dsn_;
};

}  // namespace

std::vector<StoreChoice> storeChoices() {
    return {{"MySqlDriver", [] { return std::unique_ptr<StoreUnderTest>(new MySqlStore(false)); }},
            {"MySqlDsn", [] { return std::unique_ptr<StoreUnderTest>(new MySqlStore(true)); }}};
}

}  // namespace kibo::test
