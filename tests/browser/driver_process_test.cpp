#include "browser/driver_process.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace kibo {
namespace {

/// Starts a program made of shell lines in the place of the driver.
class DriverProcessTest : public ::testing::Test {
 protected:
    QString program(const char* lines, bool executable = true) {
        const QString path = folder_.filePath(QStringLiteral("driver"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n");
        file.write(lines);
        file.close();
        if (executable) file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    static Failure failureOf(const QString& program, int readyWithinMs = 2000) {
        DriverProcess driver(program);
        const auto started = driver.start(readyWithinMs);
        EXPECT_FALSE(started);
        EXPECT_EQ(driver.process().id, 0);
        return started ? Failure{} : started.failure();
    }

    QTemporaryDir folder_;
};

bool mentions(const Failure& failure, const char* text) {
    return failure.text.find(text) != std::string::npos;
}

TEST_F(DriverProcessTest, TellsWhyADriverCantBeUsedAndEndsIt) {
    const Failure missing = failureOf(QStringLiteral("/nowhere/chromedriver"));
    EXPECT_EQ(missing.kind, FailureKind::NotFound);
    EXPECT_TRUE(mentions(missing, "/nowhere/chromedriver")) << missing.text;
    EXPECT_EQ(failureOf(program("exit 0\n", false)).kind, FailureKind::NotFound);

    const Failure exited = failureOf(program("echo cannot open display\nexit 3\n"));
    EXPECT_EQ(exited.kind, FailureKind::Io);
    EXPECT_TRUE(mentions(exited, "exit code 3")) << exited.text;
    EXPECT_TRUE(mentions(exited, "cannot open display")) << exited.text;

    // The port of the first line is the one asked for, not one to talk to.
    const Failure silent = failureOf(program("echo Starting on port 9515\nexec sleep 30\n"), 300);
    EXPECT_EQ(silent.kind, FailureKind::Protocol);

    // Names a port where nobody listens.
    const Failure deaf = failureOf(program("echo started successfully on port 1.\nexec sleep 30\n"), 300);
    EXPECT_EQ(deaf.kind, FailureKind::Transport);
    const Failure fallen = failureOf(program("echo started successfully on port 1.\nexit 4\n"));
    EXPECT_TRUE(mentions(fallen, "exit code 4")) << fallen.text;

    // One that doesn't want to end.
    const QString stubborn = program("trap '' TERM\necho $$ >\"$0.pid\"\nwhile :; do sleep 0.05; done\n");
    EXPECT_EQ(failureOf(stubborn, 300).kind, FailureKind::Protocol);
    QFile pidFile(stubborn + QStringLiteral(".pid"));
    ASSERT_TRUE(pidFile.open(QIODevice::ReadOnly));
    const platform::ProcessId pid = pidFile.readAll().trimmed().toLongLong();
    ASSERT_GT(pid, 0);
    EXPECT_EQ(platform::processStartTime(pid), 0u);
}

}  // namespace
}  // namespace kibo
