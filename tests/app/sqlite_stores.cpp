#include <QTemporaryDir>
#include <memory>

#include "store_under_test.h"
#include "support/stores.h"

namespace kibo::test {

std::vector<StoreChoice> storeChoices() {
    const auto make = [] {
        const auto folder = std::make_shared<QTemporaryDir>();
        createStores(folder->path());
        Settings settings;
        settings.UseMDB = QStringLiteral("Y");
        return StoreUnderTest{settings, folder->path(), [folder](const QString& sql) {
                                  return sqlite(folder->filePath(QStringLiteral("kb.mdb")), sql);
                              }};
    };
    return {{"Sqlite", make}};
}

}  // namespace kibo::test
