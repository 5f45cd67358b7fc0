#include "browser/driver_process.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "support/files.h"

namespace kibo {
namespace {

/// Starts a program made of shell lines in the place of the driver.
class DriverProcessTest : public ::testing::Test {
 protected:
    QString program(const QByteArray& lines) {
        return test::writtenScript(folder_.filePath(QStringLiteral("driver")), lines);
    }

    static void expectFailure(FailureKind kind, const QString& program, const char* says, int readyWithinMs = 2000) {
        DriverProcess driver(program);
        const auto started = driver.start(readyWithinMs);
        ASSERT_FALSE(started) << says;
        EXPECT_EQ(driver.process().id, 0);
        EXPECT_EQ(started.failure().kind, kind) << started.failure().text;
        EXPECT_NE(started.failure().text.find(says), std::string::npos) << started.failure().text;
    }

    QTemporaryDir folder_;
};

TEST_F(DriverProcessTest, TellsWhyADriverCantBeUsedAndEndsIt) {
    expectFailure(FailureKind::NotFound, QStringLiteral("/nowhere/chromedriver"), "/nowhere/chromedriver");
    expectFailure(FailureKind::NotFound, test::written(folder_.filePath(QStringLiteral("text")), "exit 0\n"), "");
    const QString exits = program("echo cannot open display\nexit 3\n");
    for (const char* said : {"exit code 3", "cannot open display"}) expectFailure(FailureKind::Io, exits, said);
    // The port of the first line is the one asked for, not one to talk to.
    expectFailure(FailureKind::Protocol, program("echo Starting on port 9515\nexec sleep 30\n"), "", 300);
    // Names a port where nobody listens.
    const char* const named = "echo started successfully on port 1.\n";
    expectFailure(FailureKind::Transport, program(QByteArray(named) + "exec sleep 30\n"), "", 300);
    expectFailure(FailureKind::Io, program(QByteArray(named) + "exit 4\n"), "exit code 4");
    // One that doesn't want to end.
    const QString stubborn = program("trap '' TERM\necho $$ >\"$0.pid\"\nwhile :; do sleep 0.05; done\n");
    expectFailure(FailureKind::Protocol, stubborn, "", 300);
    const platform::ProcessId pid = test::contentOf(stubborn + QStringLiteral(".pid")).trimmed().toLongLong();
    ASSERT_GT(pid, 0);
    EXPECT_EQ(platform::processStartTime(pid), 0u);
}

}  // namespace
}  // namespace kibo
