#include <gtest/gtest.h>
#include <signal.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <functional>

#include "standin/stand_in.h"

namespace kibo {
namespace {

/// The program itself, as an operator or a service starts it, without a display.
class Program : public ::testing::Test {
 protected:
    Program() {
        standin::Behaviour behaviour = standIn_.behaviour();
        behaviour.chatOpenDelayMs = {0, 0};
        standIn_.setBehaviour(behaviour);
        QProcess::execute(QStringLiteral(KIBO_SOURCE_DIR "/scripts/create-stores"), {home_.path()});
        QFile ini(home_.filePath(QStringLiteral("kibo.ini")));
        EXPECT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(QByteArrayLiteral("[DB]\nUseMDB=Y\n[kibo]\nProfil=1\nAutoStart=Y\nHeadless=Y\nSpeed=NORMAL\n"));
        ini.write("StartAddress=" + QByteArray::fromStdString(standIn_.address()) + '\n');
        ini.write("ChatAddress=" + QByteArray::fromStdString(standIn_.chatAddress()) + '\n');
    }
    ~Program() override {
        program_.kill();
        program_.waitForFinished();
        for (const qint64 left : processes()) ::kill(static_cast<pid_t>(left), SIGKILL);
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
        ASSERT_EQ(QProcess::execute(QStringLiteral("sqlite3"),
                                    {QStringLiteral("-cmd"), QStringLiteral(".timeout 5000"),
                                     home_.filePath(QStringLiteral("kb.mdb")), sql.arg(QString::fromLatin1(text))}),
                  0);
    }
    /// Processes that name the program's folder on their command line: drivers, browsers and their helpers.
    QList<qint64> processes() const {
        QList<qint64> found;
        const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
        for (const QString& entry : entries) {
            QFile line(QStringLiteral("/proc/%1/cmdline").arg(entry));
            if (entry.toLongLong() > 0 && line.open(QIODevice::ReadOnly) &&
                line.readAll().contains(home_.path().toUtf8()))
                found.append(entry.toLongLong());
        }
        return found;
    }
    static bool eventually(const std::function<bool()>& condition, int seconds) {
        QElapsedTimer timer;
        timer.start();
        while (!condition()) {
            if (timer.elapsed() > seconds * 1000) return false;
            QThread::msleep(50);
        }
        return true;
    }
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
    EXPECT_FALSE(processes().isEmpty());

    // Killed, it leaves its browser behind; the next start of the profile ends that one and goes on.
    program_.kill();
    program_.waitForFinished();
    const QList<qint64> left = processes();
    ASSERT_FALSE(left.isEmpty());
    start();
    insert("second");
    ASSERT_TRUE(standIn_.waitForReceived(2, std::chrono::seconds(60))) << log().toStdString();
    for (const qint64 id : processes()) EXPECT_FALSE(left.contains(id)) << "left over from before: " << id;

    program_.terminate();
    ASSERT_TRUE(program_.waitForFinished(15'000));
    EXPECT_EQ(program_.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(eventually([this] { return processes().isEmpty(); }, 5)) << processes().size() << " processes left";
    EXPECT_EQ(standIn_.received().size(), 2u);

    // The log names ids and durations, never texts or whole numbers.
    EXPECT_TRUE(log().contains("message 2 to "));
    EXPECT_FALSE(log().contains("private"));
    EXPECT_FALSE(log().contains("6281234567890"));
}

}  // namespace
}  // namespace kibo
