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

}  // namespace
}  // namespace kibo
