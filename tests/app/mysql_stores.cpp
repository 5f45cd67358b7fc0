#include "store_under_test.h"
#include "support/mariadb_server.h"

namespace kibo::test {
namespace {

StoreUnderTest emptied(bool dsn) {
    MariaDbServer& server = MariaDbServer::shared();
    server.empty();
    return {server.settings(dsn), QStringLiteral("/nowhere"), [&](const QString& sql) { return server.run(sql); }};
}

}  // namespace

std::vector<StoreChoice> storeChoices() {
    return {{"MySqlDriver", [] { return emptied(false); }}, {"MySqlDsn", [] { return emptied(true); }}};
}

}  // namespace kibo::test
