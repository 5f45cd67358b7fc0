#include <gtest/gtest.h>

#include <QThread>
#include <algorithm>
#include <iostream>
#include <map>
#include <random>

#include "support/mariadb_server.h"
#include "support/running_program.h"

namespace kibo {
namespace {

using test::eventually;

constexpr int kConnectMs = 90'000;
constexpr int kNextMessageMs = 120'000;
constexpr int kIncomingPerKill = 5;
/// Those that are written to, and as many others.
constexpr int kChats = 10;

int kills() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_KILLS");
    return wanted > 0 ? wanted : 20;
}

/// Whether messages come in meanwhile; environment KIBO_TEST_INCOMING. Not by itself: a few in a hundred are still lost
/// that way, see the known limits.
bool bothDirections() {
    return qEnvironmentVariableIntValue("KIBO_TEST_INCOMING") > 0;
}

/// The program on MariaDB with a queue that never gets empty and, if asked for, messages that keep coming in, also into
/// the chats that are written to, while one after the other of its helpers, or itself, is ended with SIGKILL somewhere
/// in the middle.
class Faults : public ::testing::Test {
 protected:
    enum Victim { Gateway, Browser, Driver, Server };

    Faults() {
        standin::Behaviour behaviour = program.standIn.behaviour();
        behaviour.chatOpenDelayMs = {0, 500};
        behaviour.acknowledgedSend = true;
        program.standIn.setBehaviour(behaviour);
        program.use(server.settings(false));
        program.set("kibo", "GetNumberInbox", u"Y"_qs);
    }

    static QString chat(int number) { return u"6287700000%1"_qs.arg(number, 2, 10, QLatin1Char('0')); }
    void queueMessage() {
        server.run(u"insert into outbox (wa_mode, wa_no, wa_text) values (0, '%1', 'text %2.')"_qs
                       .arg(chat(queued % (kChats / 2)))
                       .arg(queued + 1));
        ++queued;
    }
    void letOneComeIn() {
        const QString number = chat(static_cast<int>(pick(0, kChats - 1)));
        const QString text = u"in %1."_qs.arg(++cameIn);
        sentTo[text] = number;
        const QString details = u"{\"number\": \"%1\", \"text\": \"%2\"}"_qs.arg(number, text);
        ASSERT_TRUE(program.standIn.act("incoming", details.toStdString()).ok());
    }
    /// For so long, with messages that come in at any moment of it.
    void wait(unsigned milliseconds) {
        if (!bothDirections()) return QThread::msleep(milliseconds);
        std::vector<unsigned> moments{milliseconds};
        for (int i = 0; i < kIncomingPerKill - 1; ++i) moments.push_back(pick(0, milliseconds));
        std::sort(moments.begin(), moments.end());
        unsigned now = 0;
        for (const unsigned moment : moments) {
            QThread::msleep(moment - std::exchange(now, moment));
            letOneComeIn();
        }
    }
    /// As a service manager does: a program that starts while the server is away ends by itself.
    void keepAlive() {
        if (program.process.state() == QProcess::NotRunning) (void)program.start();
    }
    int waiting() { return server.run(u"select count(*) from outbox"_qs).toInt(); }

    /// A message is in hand, and `settled` others are through.
    bool messageBegun(int settled) {
        const auto through = [this] {
            return server.run(u"select count(*) from kibo_outcome where final = 1"_qs).toInt();
        };
        const auto begun = [&] {
            keepAlive();
            return through() >= settled && !program.journal().isEmpty();
        };
        return eventually(begun, kNextMessageMs);
    }
    /// The gateway's driver, or the driver's browser; 0 when it is not there at the moment.
    platform::ProcessId helper(Victim victim) {
        const auto drivers = platform::children(program.process.processId());
        if (drivers.empty() || victim == Driver) return drivers.empty() ? 0 : drivers.front().id;
        for (const auto& process : program.processes()) {
            const QByteArray line = test::contentOf(u"/proc/%1/cmdline"_qs.arg(process.id));
            if (!line.isEmpty() && !line.contains("--type=")) return process.id;
        }
        return 0;
    }

    void endAndRestart(Victim victim) {
        if (victim == Gateway) {
            program.kill();
            ASSERT_TRUE(program.start());
        } else if (victim == Server) {
            server.kill();
            QThread::msleep(pick(0, 3000));
            server.start();
        } else if (const platform::ProcessId pid = helper(victim)) {
            ::kill(static_cast<pid_t>(pid), SIGKILL);
        }
    }
    unsigned pick(unsigned least, unsigned most) {
        return std::uniform_int_distribution<unsigned>(least, most)(random);
    }

    /// Every text arrived once, or its row says that it failed; and what integrators are told is what the page
    /// received. In doubt may mean arrived.
    void expectNothingLostAndNothingTwice() {
        std::map<std::string, int> arrived;
        for (const auto& message : program.standIn.received()) ++arrived[message.text];
        std::map<std::string, std::string> rows;
        const QString all = server.run(QStringLiteral(
            "select s.wa_text, o.state from sent s join kibo_outcome o on o.id = s.id where o.final = 1"));
        for (const QString& line : all.split(u'\n', Qt::SkipEmptyParts)) {
            const std::string text = line.section(u'\t', 0, 0).toStdString();
            EXPECT_TRUE(rows.emplace(text, line.section(u'\t', 1).toStdString()).second) << "two rows: " << text;
        }
        EXPECT_EQ(static_cast<int>(rows.size()), queued);
        int marked = 0, both = 0;
        for (const auto& [text, state] : rows) {
            const int times = arrived[text];
            EXPECT_LE(times, 1) << "twice: " << text;
            if (state == "in doubt") both += times;
            if (state != "sent") ++marked;
            EXPECT_TRUE(state == "in doubt" || (times == 1) == (state == "sent"))
                << text << " is said to be: " << state;
        }
        const QString marks = server.run(QStringLiteral("select count(*) from sent where status = 'fail'"));
        EXPECT_EQ(marks.toInt(), marked);
        std::cout << "  " << queued << " messages: " << queued - marked << " sent, " << marked
                  << " marked as failed, of which " << both << " arrived\n";
    }

    /// Every text that came in is one row, under the number that it came from, and in each chat they stand in their
    /// order.
    void expectEachReceivedOnce() {
        std::map<QString, int> rows;
        std::map<QString, int> newest;  // of each chat
        int late = 0;
        const QString all = server.run(QStringLiteral("select wa_no, wa_text from inbox order by id"));
        for (const QString& line : all.split(u'\n', Qt::SkipEmptyParts)) {
            const QString number = line.section(u'\t', 0, 0), text = line.section(u'\t', 1);
            ++rows[text];
            EXPECT_EQ(number, sentTo[text]) << text.toStdString();
            const int place = text.section(u' ', 1).chopped(1).toInt();
            if (place < std::exchange(newest[number], place)) ++late;
        }
        for (const auto& [text, number] : sentTo) EXPECT_EQ(rows[text], 1) << text.toStdString();
        EXPECT_EQ(rows.size(), sentTo.size());
        std::cout << "  " << cameIn << " came in, " << late << " of them stored behind a later one\n";
    }

    test::MariaDbServer& server = test::MariaDbServer::shared();
    test::RunningProgram program;
    int queued = 0, cameIn = 0;
    std::map<QString, QString> sentTo;  // by text: the chat that a received message came from
    std::mt19937 random{static_cast<unsigned>(qEnvironmentVariableIntValue("KIBO_TEST_SEED") + 1)};
};

TEST_F(Faults, EveryMessageArrivesOnceOrStandsMarked) {
    ASSERT_TRUE(program.start());
    std::map<Victim, int> ended;
    for (int i = 0; i < kills() && !HasFatalFailure(); ++i) {
        while (waiting() < 2) queueMessage();
        // Kills that follow each other at once meet one message in its recovery; every fourth waits for another one.
        ASSERT_TRUE(messageBegun(i / 4)) << "kill " << i << ": nothing is sent any more\n"
                                         << program.log().right(3000).toStdString();
        // A send takes about two seconds. Every third time close to Enter, where it matters most.
        if (i % 3 == 0) {
            eventually([this] { return program.journal().contains("\"typed\""); }, 3000);
            wait(pick(0, 40));
        } else {
            wait(pick(0, 2300));
        }
        const auto victim = static_cast<Victim>(pick(Gateway, Server));
        ++ended[victim];
        endAndRestart(victim);
    }
    const bool finished = eventually(
        [this] {
            keepAlive();
            QThread::msleep(500);
            return waiting() == 0 && program.journal().isEmpty();
        },
        2 * kNextMessageMs);
    EXPECT_TRUE(finished) << program.log().right(3000).toStdString();
    std::cout << "  ended: gateway " << ended[Gateway] << ", browser " << ended[Browser] << ", driver " << ended[Driver]
              << ", database " << ended[Server] << '\n';
    expectNothingLostAndNothingTwice();
    if (!bothDirections()) return;
    const auto allRead = [this] { return server.run(QStringLiteral("select count(*) from inbox")).toInt() >= cameIn; };
    EXPECT_TRUE(eventually(allRead, 60'000)) << program.log().right(3000).toStdString();
    expectEachReceivedOnce();
}

}  // namespace
}  // namespace kibo
