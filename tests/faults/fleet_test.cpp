#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <iostream>
#include <map>
#include <random>

#include "support/eventually.h"
#include "support/memory_fleet.h"

namespace kibo {
namespace {

using test::eventually;
using test::MemoryInstance;

constexpr int kProfiles = 3;
constexpr int kSettledMs = 180'000;

int kills() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_KILLS");
    return wanted > 0 ? wanted : 20;
}

/// Three profiles on one MariaDB, each with an instance that works and one that stands by, while instances are ended or
/// stopped for longer than their hold lasts, and the server is killed, somewhere in the middle of messages.
class Fleet : public ::testing::Test {
 protected:
    Fleet() {
        for (int i = 0; i < 2 * kProfiles; ++i) {
            const QString profile = QString::number(i % kProfiles + 1);
            instances.push_back(std::make_unique<MemoryInstance>(server, profile, account(profile)));
        }
    }
    QString account(const QString& profile) const { return accounts.filePath(profile); }
    int count(const char* from) { return server.run(u"select count(*) from "_qs + QLatin1String(from)).toInt(); }

    void queueMessages() {
        for (int profile = 1; profile <= kProfiles; ++profile) {
            const QString where = u"select count(*) from multi where tipe = 'O' and profil = '%1'"_qs.arg(profile);
            for (int waiting = server.run(where).toInt(); waiting < 3; ++waiting) {
                ++queued;
                server.run(u"insert into multi (profil, wa_no, wa_text) values ('%1', '6287700000%2', 'text %3.')"_qs
                               .arg(profile)
                               .arg(queued % 5)
                               .arg(queued));
            }
        }
    }
    /// As a service manager does: an instance that starts while the server is away ends by itself.
    void keepAlive() {
        for (const auto& instance : instances)
            if (!instance->runs() && ended[instance.get()] == 0) ended[instance.get()] = clock.elapsed() + 2'000;
        for (auto& [instance, until] : stopped)
            if (until > 0 && clock.elapsed() >= until) {
                instance->signal(SIGCONT);
                until = 0;
            }
        for (auto& [instance, until] : ended)
            if (until > 0 && clock.elapsed() >= until) {
                EXPECT_TRUE(instance->start());
                until = 0;
            }
    }
    /// Mostly one that works.
    MemoryInstance& pickVictim() {
        const QStringList working =
            server.run(u"select process from kibo_instance where holds = 1"_qs).split(u'\n', Qt::SkipEmptyParts);
        MemoryInstance* any = nullptr;
        do {
            any = instances[pick(0, 2 * kProfiles - 1)].get();
        } while (!working.isEmpty() && pick(0, 3) > 0 && !working.contains(QString::number(any->process.processId())));
        return *any;
    }
    void awaitSettled(int messages) {
        const auto settled = [&] {
            keepAlive();
            queueMessages();
            return count("kibo_outcome where final = 1") >= messages;
        };
        EXPECT_TRUE(eventually(settled, kSettledMs)) << "nothing is sent any more";
    }
    void strike(MemoryInstance& instance) {
        if (!instance.runs() || stopped[&instance] > 0) return;
        // Stopped for longer than a hold lasts, or for a moment only.
        if (pick(0, 3) == 0) {
            instance.signal(SIGSTOP);
            stopped[&instance] = clock.elapsed() + pick(500, 20'000);
            ++stops;
        } else {
            instance.kill();
            ended[&instance] = clock.elapsed() + pick(1, 25'000);
            ++ends;
        }
    }
    unsigned pick(unsigned least, unsigned most) {
        return std::uniform_int_distribution<unsigned>(least, most)(random);
    }

    void expectNothingLostAndNothingTwice() {
        std::map<std::string, int> arrived;
        for (int profile = 1; profile <= kProfiles; ++profile)
            for (const QByteArray& line : test::contentOf(account(QString::number(profile))).split('\n'))
                if (!line.isEmpty())
                    ++arrived[QJsonDocument::fromJson(line).object()[u"text"_qs].toString().toStdString()];
        std::map<std::string, std::string> rows;
        const QString all = server.run(
            u"select s.wa_text, o.state from multi s join kibo_outcome o on o.id = s.id_outbox and o.profil = s.profil "
            "where s.tipe = 'S' and o.final = 1"_qs);
        for (const QString& line : all.split(u'\n', Qt::SkipEmptyParts)) {
            const std::string text = line.section(u'\t', 0, 0).toStdString();
            EXPECT_TRUE(rows.emplace(text, line.section(u'\t', 1).toStdString()).second) << "two rows: " << text;
        }
        EXPECT_EQ(static_cast<int>(rows.size()), queued);
        std::map<std::string, int> states;
        int doubtfulArrived = 0;
        for (const auto& [text, state] : rows) {
            ++states[state];
            EXPECT_LE(arrived[text], 1) << "twice: " << text;
            if (state == "in doubt") doubtfulArrived += arrived[text];
            EXPECT_TRUE(state == "in doubt" || (arrived[text] == 1) == (state == "sent"))
                << text << " is said to be: " << state;
        }
        std::cout << "  " << ends << " ended, " << stops << " stopped, server killed " << serverKills << " times; "
                  << queued << " messages: " << states["sent"] << " sent, " << states["fail"] << " failed, "
                  << states["in doubt"] << " in doubt, of which " << doubtfulArrived
                  << " arrived; profiles changed hands " << takeovers() << " times\n";
    }
    qsizetype takeovers() {
        qsizetype found = 0;
        for (const auto& instance : instances) found += instance->log().count("takes over profile");
        return found;
    }

    test::MariaDbServer& server = test::MariaDbServer::shared();
    QTemporaryDir accounts;
    std::vector<std::unique_ptr<MemoryInstance>> instances;
    std::map<MemoryInstance*, qint64> stopped, ended;  // until when
    QElapsedTimer clock;
    int queued = 0, ends = 0, stops = 0, serverKills = 0;
    std::mt19937 random{static_cast<unsigned>(qEnvironmentVariableIntValue("KIBO_TEST_SEED") + 1)};
};

TEST_F(Fleet, LosesAndDoublesNothingWhateverHappensToItsInstances) {
    clock.start();
    queueMessages();
    for (const auto& instance : instances) ASSERT_TRUE(instance->start());
    ASSERT_TRUE(eventually([this] { return count("multi where tipe = 'S'") > 3; }, kSettledMs)) << "nothing is sent";
    for (int i = 0; ends + stops < kills(); ++i) {
        queueMessages();
        // Kills that follow each other at once meet the same messages in their recovery.
        if (i % 4 == 3) awaitSettled(count("kibo_outcome where final = 1") + 4);
        MemoryInstance& victim = pickVictim();
        // Every other time close to Enter, where it matters most.
        if (i % 2 == 0) {
            eventually([&] { return victim.journal().contains("\"typed\"") || !victim.runs(); }, 1500);
            QThread::msleep(pick(0, 20));
        } else {
            QThread::msleep(pick(0, 1500));
        }
        strike(victim);
        keepAlive();
        if (pick(0, 24) == 0) {
            server.kill();
            QThread::msleep(pick(0, 3000));
            server.start();
            ++serverKills;
        }
    }
    const bool finished = eventually(
        [this] {
            keepAlive();
            QThread::msleep(500);
            return count("multi where tipe = 'O'") == 0 && count("kibo_outcome where final = 0") == 0;
        },
        kSettledMs);
    EXPECT_TRUE(finished) << server.run(u"select * from kibo_instance"_qs).toStdString();
    expectNothingLostAndNothingTwice();
    EXPECT_GT(takeovers(), 0);
}

}  // namespace
}  // namespace kibo
