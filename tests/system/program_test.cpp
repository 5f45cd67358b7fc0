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
        const QString sql = u"insert into outbox (wa_no, wa_text) values ('6281234567890', '%1')"_qs;
        test::sqlite(program.home.filePath(u"kb.mdb"_qs), sql.arg(QString::fromLatin1(text)));
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
    // As the integrator's guide shows it.
    const QString told = test::outputOf(QStringLiteral(KIBO_SOURCE_DIR "/docs/examples/wait-for-message"),
                                        {program.home.filePath(u"kb.mdb"_qs), u"6281234567890"_qs, u"second"_qs});
    EXPECT_EQ(told, u"message 2: sent\n"_qs);
    for (const auto& old : left) EXPECT_FALSE(platform::isRunning(old.id, old.startTime)) << "left over from before";

    program.process.terminate();
    ASSERT_TRUE(program.process.waitForFinished(15'000));
    EXPECT_EQ(program.process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.process.exitCode(), 0);
    EXPECT_TRUE(test::eventually([this] { return program.processes().empty(); }, 5'000))
        << program.processes().size() << " processes left";
    EXPECT_EQ(program.standIn.received().size(), 2u);

    const QByteArray end = program.log().mid(program.log().lastIndexOf(" ends"));
    EXPECT_FALSE(end.contains(" warning browser")) << "stopped in the middle of a message: " << end.toStdString();

    // The log names ids and durations, never texts or whole numbers.
    EXPECT_TRUE(program.log().contains("message 2 to "));
    EXPECT_FALSE(program.log().contains("private"));
    EXPECT_FALSE(program.log().contains("6281234567890"));
}

/// How often the program is killed; environment KIBO_TEST_KILLS.
int kills() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_KILLS");
    return wanted > 0 ? wanted : 4;
}

// The page shows the last message of a chat only, so each comes from a chat of its own.
TEST_F(Program, KilledWhileItReadsItStoresEachMessageOnce) {
    const QString store = program.home.filePath(u"kb.mdb"_qs);
    const auto stored = [&] { return test::sqlite(store, u"select count(*) from inbox"_qs).toInt(); };
    const int expected = 10 * (kills() + 1);
    int shown = 0;
    const auto incoming = [&](int count) {
        for (; count > 0; --count, ++shown) {
            const std::string number = std::to_string(628170000 + shown);
            const auto done =
                program.standIn.act("incoming", R"({"number": ")" + number + R"(", "text": "text )" + number + "\"}");
            ASSERT_TRUE(done.ok()) << done.failure().text;
        }
    };
    for (int round = 0; round < kills(); ++round) {
        ASSERT_TRUE(program.start());
        incoming(10);
        ASSERT_TRUE(test::eventually([&] { return stored() > 7 * round + round % 5; }, 60'000))
            << program.log().toStdString();
        program.kill();
    }
    ASSERT_TRUE(program.start());
    incoming(10);
    EXPECT_TRUE(test::eventually([&] { return stored() >= expected; }, 120'000))
        << stored() << program.log().toStdString();
    EXPECT_FALSE(test::eventually([&] { return stored() > expected; }, 3'000)) << "one too many";
    EXPECT_EQ(test::sqlite(store, u"select count(distinct wa_text) from inbox"_qs).toInt(), expected);
    EXPECT_FALSE(program.log().contains("text 628"));
    program.process.terminate();
    EXPECT_TRUE(program.process.waitForFinished(15'000));
}

}  // namespace
}  // namespace kibo
