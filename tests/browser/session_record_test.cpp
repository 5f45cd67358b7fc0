#include "browser/session_record.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QProcess>
#include <QSysInfo>
#include <QTemporaryDir>
#include <memory>

#include "support/files.h"

namespace kibo {
namespace {

using platform::Process;

class SessionRecordTest : public ::testing::Test {
 protected:
    void TearDown() override {
        for (auto& child : children_) {
            child->kill();
            child->waitForFinished();
        }
    }

    /// A shell that started a further process, as drivers and browsers do.
    Process startTree(const QStringList& arguments = {}) {
        auto child = std::make_unique<QProcess>();
        child->start(QStringLiteral("/bin/sh"),
                     QStringList{QStringLiteral("-c"), QStringLiteral("sleep 60 & echo up; wait")} + arguments);
        EXPECT_TRUE(child->waitForReadyRead());
        const platform::ProcessId id = child->processId();
        children_.push_back(std::move(child));
        return {id, platform::processStartTime(id)};
    }

    static Process self() { return {platform::ownProcessId(), platform::processStartTime(platform::ownProcessId())}; }
    static bool runs(const Process& process) { return platform::isRunning(process.id, process.startTime); }
    int files() const { return static_cast<int>(QDir(folder_.path()).entryList(QDir::Files | QDir::System).size()); }

    QTemporaryDir folder_;
    SessionRecords records_{folder_.path()};
    std::vector<std::unique_ptr<QProcess>> children_;
};

TEST_F(SessionRecordTest, LeftoversOfADeadGatewayAreEndedWithTheirChildren) {
    const Process driver = startTree();
    const Process browser = startTree();
    const Process bystander = startTree();
    const auto below = platform::descendants(browser.id);
    ASSERT_FALSE(below.empty());
    Process deadOwner = self();
    ++deadOwner.startTime;  // the id is in use again, by somebody else
    ASSERT_TRUE(records_.write({deadOwner, driver, browser}));

    EXPECT_EQ(records_.endLeftovers(), 0);
    EXPECT_FALSE(runs(driver));
    EXPECT_FALSE(runs(browser));
    EXPECT_FALSE(runs(below.front()));
    EXPECT_EQ(files(), 0);

    const Process former{bystander.id, bystander.startTime - 1};
    ASSERT_TRUE(records_.write({self(), former, former}));
    EXPECT_EQ(records_.endLeftovers(), 0);
    EXPECT_TRUE(runs(bystander)) << "it only has the same id";

    for (const char* damaged : {"", "{", R"({"driver":{"pid":1,"started":"x"},"browser":{"pid":-1}})"}) {
        test::written(folder_.filePath(QStringLiteral("kibo-session-5.json")), damaged);
        EXPECT_EQ(records_.endLeftovers(), 0);
        EXPECT_EQ(files(), 0);
    }
    const Process kept = startTree();
    ASSERT_TRUE(records_.write({bystander, {}, kept}));
    EXPECT_EQ(records_.endLeftovers(), bystander.id) << "another gateway that runs";
    EXPECT_TRUE(runs(kept));
    EXPECT_EQ(files(), 1);
}

TEST_F(SessionRecordTest, FreedProfileLosesAStaleLockAndADriversBrowserOnly) {
    const QString profile = QStringLiteral("--user-data-dir=") + folder_.path();
    const QString driven = QStringLiteral("--remote-debugging-port=0");
    const Process orphan = startTree({driven, profile});
    const Process bystanders[] = {startTree({profile}), startTree({profile, driven, QStringLiteral("--type=gpu")}),
                                  startTree({profile + u'0', driven})};
    const QString lock = folder_.filePath(QStringLiteral("SingletonLock"));
    const QString running = QStringLiteral("-%1").arg(bystanders[0].id);
    const std::pair<QString, bool> owners[] = {
        {QSysInfo::machineHostName() + running, false},
        {QSysInfo::machineHostName() + QStringLiteral("-4194999"), true},  // beyond the largest process id
        {QStringLiteral("other-host") + running, true},
    };
    for (const auto& [owner, removed] : owners) {
        QFile::remove(lock);
        ASSERT_TRUE(QFile::link(owner, lock));
        freeProfile(folder_.path());
        EXPECT_EQ(!QFileInfo(lock).isSymLink(), removed) << owner.toStdString();
    }
    EXPECT_FALSE(runs(orphan));
    for (const Process& bystander : bystanders) EXPECT_TRUE(runs(bystander)) << &bystander - bystanders;
}

}  // namespace
}  // namespace kibo
