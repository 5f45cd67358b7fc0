#include <QTemporaryDir>

#include "store_under_test.h"
#include "support/stores.h"

namespace kibo::test {
namespace {

class SqliteStore : public StoreUnderTest {
 public:
    SqliteStore() { createStores(folder_.path()); }

    Settings settings() const override {
        Settings settings;
        settings.UseMDB = QStringLiteral("Y");
        return settings;
    }
    QString programFolder() const override { return folder_.path(); }
    QString outside(const QString& sql) override { return sqlite(folder_.filePath(QStringLiteral("kb.mdb")), sql); }

 private:
    QTemporaryDir folder_;
};

}  // namespace

std::vector<StoreChoice> storeChoices() {
    return {{"Sqlite", [] { return std::unique_ptr<StoreUnderTest>(new SqliteStore); }}};
}

}  // namespace kibo::test
