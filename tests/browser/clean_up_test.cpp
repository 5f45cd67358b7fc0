// Against processes of its own: copies of this program under other names. Runs on Windows' side (Wine) as well.
#include "browser/clean_up.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include "platform/machine.h"
#include "platform/process.h"
#include "support/eventually.h"

namespace kibo {
namespace {

using platform::Process;

class CleanUpTest : public ::testing::Test {
 protected:
    QString copy(const QString& name) const {
        const QString file = folder_.filePath(QString::fromStdString(platform::programFileName(name.toStdString())));
        EXPECT_TRUE(QFile::copy(QCoreApplication::applicationFilePath(), file));
        return file;
    }
    /// Starts a driver and waits until it has started a browser; returns both.
    std::vector<Process> startPair(QProcess& driver, const QString& name) const {
        const QString browser = copy(name + QStringLiteral("-browser"));
        driver.start(copy(name), {QStringLiteral("--start"), browser});
        EXPECT_TRUE(driver.waitForStarted());
        const std::vector<std::string> file{QFileInfo(browser).fileName().toStdString()};
        EXPECT_TRUE(test::eventually([&] { return platform::processesNamed(file).size() == 1; }, 30'000));
        std::vector<Process> pair = platform::processesNamed(file);
        pair.push_back({driver.processId(), platform::processStartTime(driver.processId())});
        return pair;
    }
    static long running(const std::vector<Process>& processes) {
        return std::count_if(processes.begin(), processes.end(),
                             [](const Process& process) { return platform::isRunning(process.id, process.startTime); });
    }

    QTemporaryDir folder_;
};

TEST_F(CleanUpTest, EndsDriversByNameWithTheirBrowsersAndRemovesTheirFiles) {
    const QString name = QStringLiteral("kibo-test-driver-%1").arg(platform::ownProcessId());
    QProcess driver, other;
    const std::vector<Process> stray = startPair(driver, name);
    const std::vector<Process> strangers = startPair(other, name + QStringLiteral("-not"));
    // The temporary folder of a user with such a name.
    const QString temporary = folder_.filePath(QString::fromUtf8("Söhne"));
    const QString files = temporary + QStringLiteral("/Selenium");
    QDir().mkpath(files + QStringLiteral("/scoped"));
    for (const char* variable : {"TMPDIR", "TMP"}) qputenv(variable, QDir::toNativeSeparators(temporary).toLocal8Bit());
    CleanUpTargets targets = usualCleanUpTargets();
    targets.drivers = {"no such driver", platform::programFileName(name.toStdString())};

    EXPECT_EQ(cleanUp(targets), 1);
    EXPECT_EQ(running(stray), 0);
    EXPECT_EQ(running(strangers), 2) << "another name";
    EXPECT_FALSE(QFile::exists(files));

    for (const Process& process : strangers) EXPECT_TRUE(platform::terminate(process.id, process.startTime, 0).ok());
    driver.waitForFinished();
    other.waitForFinished();
}

}  // namespace
}  // namespace kibo

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    if (argc == 1) return RUN_ALL_TESTS();
    // One of the copies.
    QProcess child;
    if (argc == 3) child.start(QString::fromLocal8Bit(argv[2]), {QStringLiteral("--stay")});
    QThread::sleep(60);
    return 0;
}
