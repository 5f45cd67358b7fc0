#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "standin/stand_in.h"
#include "support/eventually.h"
#include "support/processes.h"
#include "support/stores.h"

namespace kibo {
namespace {

/// The program itself, as an operator or a service starts it, without a display.
class Program : public ::testing::Test {
 protected:
    Program() {
        standin::Behaviour behaviour = standIn_.behaviour();
        behaviour.chatOpenDelayMs = {0, 0};
        standIn_.setBehaviour(behaviour);
        test::createStores(home_.path());
        QFile ini(home_.filePath(QStringLiteral("kibo.ini")));
        EXPECT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(QByteArrayLiteral("[DB]\nUseMDB=Y\n[kibo]\nProfil=1\nAutoStart=Y\nHeadless=Y\nSpeed=NORMAL\n"));
        ini.write("StartAddress=" + QByteArray::fromStdString(standIn_.address()) + '\n');
        ini.write("ChatAddress=" + QByteArray::fromStdString(standIn_.chatAddress()) + '\n');
    }
    ~Program() override {
        program_.kill();
        program_.waitForFinished();
        for (const auto& left : processes()) ::kill(static_cast<pid_t>(left.id), SIGKILL);
    }

    void start() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KIBO_HOME"), home_.path());
        environment.remove(QStringLiteral("DISPLAY"));
        program_.setProcessEnvironment(environment);
        program_.start(QStringLiteral(KIBO_BINARY_DIR "/bin/kibo"), QStringList());
        ASSERT_TRUE(program_.waitForStarted());
    }
    void insert(const char* text) {
        const QString sql = QStringLiteral("insert into outbox (wa_no, wa_text) values ('6281234567890', '%1')");
        test::sqlite(home_.filePath(QStringLiteral("kb.mdb")), sql.arg(QString::fromLatin1(text)));
    }
    std::vector<platform::Process> processes() const { return test::processesNaming(home_.path()); }
    QByteArray log() const {
        QFile file(home_.filePath(QStringLiteral("kibo.log")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir home_;
    standin::StandIn standIn_;
    QProcess program_;
};

TEST_F(Program, SendsWhatIsInsertedStopsCleanlyAndRecoversFromBeingKilled) {
    start();
    insert("a private text");
    ASSERT_TRUE(standIn_.waitForReceived(1, std::chrono::seconds(60))) << log().toStdString();
    EXPECT_FALSE(processes().empty());

    // Killed, it leaves its browser behind; the next start of the profile ends that one and goes on.
    program_.kill();
    program_.waitForFinished();
    const auto left = processes();
    ASSERT_FALSE(left.empty());
    start();
    insert("second");
    ASSERT_TRUE(standIn_.waitForReceived(2, std::chrono::seconds(60))) << log().toStdString();
    for (const auto& old : left) EXPECT_FALSE(platform::isRunning(old.id, old.startTime)) << "left over from before";

    program_.terminate();
    ASSERT_TRUE(program_.waitForFinished(15'000));
    EXPECT_EQ(program_.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(test::eventually([this] { return processes().empty(); }, 5'000))
        << processes().size() << " processes left";
    EXPECT_EQ(standIn_.received().size(), 2u);

    // The log names ids and durations, never texts or whole numbers.
    EXPECT_TRUE(log().contains("message 2 to "));
    EXPECT_FALSE(log().contains("private"));
    EXPECT_FALSE(log().contains("6281234567890"));
}

/// How often the program is killed; environment KIBO_TEST_KILLS.
int kills() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_KILLS");
    return wanted > 0 ? wanted : 4;
}

// The page shows the last message of a chat only, so each comes from a chat of its own.
TEST_F(Program, KilledWhileItReadsItStoresEachMessageOnce) {
    const QString store = home_.filePath(QStringLiteral("kb.mdb"));
    const auto stored = [&] { return test::sqlite(store, QStringLiteral("select count(*) from inbox")).toInt(); };
    const int expected = 10 * (kills() + 1);
    int shown = 0;
    const auto incoming = [&](int count) {
        for (; count > 0; --count, ++shown) {
            const std::string number = std::to_string(628170000 + shown);
            const auto done =
                standIn_.act("incoming", R"({"number": ")" + number + R"(", "text": "text )" + number + "\"}");
            ASSERT_TRUE(done.ok()) << done.failure().text;
        }
    };
    for (int round = 0; round < kills(); ++round) {
        start();
        incoming(10);
        ASSERT_TRUE(test::eventually([&] { return stored() > 7 * round + round % 5; }, 60'000)) << log().toStdString();
        program_.kill();
        program_.waitForFinished();
    }
    start();
    incoming(10);
    EXPECT_TRUE(test::eventually([&] { return stored() >= expected; }, 120'000)) << stored() << log().toStdString();
    EXPECT_FALSE(test::eventually([&] { return stored() > expected; }, 3'000)) << "one too many";
    EXPECT_EQ(test::sqlite(store, QStringLiteral("select count(distinct wa_text) from inbox")).toInt(), expected);
    EXPECT_FALSE(log().contains("text 628"));
    program_.terminate();
    EXPECT_TRUE(program_.waitForFinished(15'000));
}

}  // namespace
}  // namespace kibo
