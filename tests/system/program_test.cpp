#include <gtest/gtest.h>

#include "support/running_program.h"

namespace kibo {
namespace {

class Program : public ::testing::Test {
 protected:
    Program() {
        standin::Behaviour behaviour = program.standIn.behaviour();
        behaviour.chatOpenDelayMs = {0, 0};
        program.standIn.setBehaviour(behaviour);
    }
    void insert(const char* text) {
        const QString sql = QStringLiteral("insert into outbox (wa_no, wa_text) values ('6281234567890', '%1')");
        test::sqlite(program.home.filePath(QStringLiteral("kb.mdb")), sql.arg(QString::fromLatin1(text)));
    }

    test::RunningProgram program;
};

TEST_F(Program, SendsWhatIsInsertedStopsCleanlyAndRecoversFromBeingKilled) {
    ASSERT_TRUE(program.start());
    insert("a private text");
    ASSERT_TRUE(program.standIn.waitForReceived(1, std::chrono::seconds(60))) << program.log().toStdString();
    EXPECT_FALSE(program.processes().empty());

    // Killed, it leaves its browser behind; the next start of the profile ends that one and goes on.
    program.kill();
    const auto left = program.processes();
    ASSERT_FALSE(left.empty());
    ASSERT_TRUE(program.start());
    insert("second");
    ASSERT_TRUE(program.standIn.waitForReceived(2, std::chrono::seconds(60))) << program.log().toStdString();
    for (const auto& old : left) EXPECT_FALSE(platform::isRunning(old.id, old.startTime)) << "left over from before";

    program.process.terminate();
    ASSERT_TRUE(program.process.waitForFinished(15'000));
    EXPECT_EQ(program.process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.process.exitCode(), 0);
    EXPECT_TRUE(test::eventually([this] { return program.processes().empty(); }, 5'000))
        << program.processes().size() << " processes left";
    EXPECT_EQ(program.standIn.received().size(), 2u);

    // The log names ids and durations, never texts or whole numbers.
    EXPECT_TRUE(program.log().contains("message 2 to "));
    EXPECT_FALSE(program.log().contains("private"));
    EXPECT_FALSE(program.log().contains("6281234567890"));
}

}  // namespace
}  // namespace kibo
