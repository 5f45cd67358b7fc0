#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <stdexcept>

#include "store_under_test.h"

namespace kibo::test {
namespace {

class SqliteStore : public StoreUnderTest {
 public:
    SqliteStore() {
        QProcess script;
        script.start(QStringLiteral(KIBO_SOURCE_DIR "/scripts/create-stores"), {folder_.path()});
        if (!script.waitForFinished() || script.exitCode() != 0) throw std::runtime_error("create-stores failed");
    }

    Settings settings() const override {
        Settings settings;
        settings.UseMDB = QStringLiteral("Y");
        return settings;
    }
    QString programFolder() const override { return folder_.path(); }
    QString outside(const QString& sql) override {
        QProcess sqlite;
        sqlite.start(QStringLiteral("sqlite3"),
                     {QStringLiteral("-bail"), QStringLiteral("-tabs"), QStringLiteral("-cmd"),
                      QStringLiteral(".timeout 5000"), folder_.filePath(QStringLiteral("kb.mdb"))});
        sqlite.write(sql.toUtf8());
        sqlite.closeWriteChannel();
        if (!sqlite.waitForFinished() || sqlite.exitCode() != 0)
            throw std::runtime_error(sqlite.readAllStandardError().toStdString());
        return QString::fromUtf8(sqlite.readAllStandardOutput());
    }

 private:
    QTemporaryDir folder_;
};

}  // namespace

std::vector<StoreChoice> storeChoices() {
    return {{"Sqlite", [] { return std::unique_ptr<StoreUnderTest>(new SqliteStore); }}};
}

}  // namespace kibo::test
