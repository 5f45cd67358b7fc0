#include <QElapsedTimer>
#include <QHash>
#include <QThread>
#include <limits>
#include <memory>
#include <random>

#include "bench/benchmarks.h"
#include "bench/measuring.h"
#include "bench/process_figures.h"
#include "platform/process.h"
#include "tests/support/memory_fleet.h"
#include "tests/support/running_program.h"

namespace kibo::bench {
namespace {

constexpr int kRowsEach = 1'000;
constexpr int kSettleMs = 8'000;
constexpr int kWindowMs = 20'000;
constexpr size_t kInserts = 200, kInsertsEach = 20;
constexpr int kBrowsers = 4, kMessagesEach = 25;
constexpr int kMessageMs = 5'000;  // from taken until its instance has left the chat
constexpr int kBetweenInsertsMs = 100;
constexpr int kLongestStartMs = 240'000;

/// What a window of time costs.
struct Cost {
    double statements = 0;  // a second
    double serverCores = 0;
    double gatewayPercent = 0;  // of one core, the mean of the instances
};

/// So many instances, each with a profile of its own, on one server.
class Fleet {
 public:
    Fleet(test::MariaDbServer& server, int size) : server_(server) {
        server_.empty();
        server_.run(
            QStringLiteral("insert into multi (profil, wa_no, wa_text) select p.seq, concat('62877', 100000 + r.seq), "
                           "concat('message ', r.seq) from seq_1_to_%1 p, seq_1_to_%2 r")
                .arg(size)
                .arg(kRowsEach));
        for (int profile = 1; profile <= size; ++profile) {
            const QString name = QString::number(profile);
            instances_.push_back(std::make_unique<test::MemoryInstance>(server_, name, accounts_.filePath(name)));
            require(instances_.back()->start(), "an instance can't be started");
        }
        QElapsedTimer waited;
        waited.start();
        while (number("select count(*) from kibo_instance where holds = 1 and status = 'Ready'") < size) {
            require(waited.elapsed() < kLongestStartMs, "not all instances come up");
            QThread::msleep(500);
        }
        QThread::msleep(kSettleMs);
    }
    ~Fleet() {
        for (const auto& instance : instances_) instance->process.terminate();
    }
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;

    Cost cost() {
        const double statements = questions(), server = serverSeconds(), gateways = gatewaySeconds();
        QElapsedTimer window;
        window.start();
        QThread::msleep(kWindowMs);
        const double seconds = static_cast<double>(window.elapsed()) / 1000;
        return {(questions() - statements) / seconds, (serverSeconds() - server) / seconds,
                (gatewaySeconds() - gateways) / seconds / static_cast<double>(instances_.size()) * 100};
    }
    void becomeIdle() {
        server_.run(QStringLiteral("delete from multi where tipe = 'O'"));
        QThread::msleep(kSettleMs);
    }
    double largestMb() const {
        double largest = 0;
        for (const auto& instance : instances_)
            largest =
                std::max(largest, static_cast<double>(platform::memoryBytes(instance->process.processId())) / 1e6);
        return largest;
    }
    /// From the insert of a row into an empty queue until it is seen to be taken, in ms; 99 of 100 take no longer.
    double lagMs(size_t inserts) {
        struct Open {
            size_t profile;
            qint64 insertedMs;
        };
        QHash<qint64, Open> open;
        std::vector<qint64> freeAtMs(instances_.size() + 1);
        std::vector<double> lags;
        const qint64 newest = number("select coalesce(max(id), 0) from multi");
        std::mt19937 random(1);
        QElapsedTimer clock;
        clock.start();
        for (qint64 nextMs = 0; lags.size() < inserts;) {
            require(clock.elapsed() < kLongestStartMs, "messages are not taken");
            const auto profile = std::uniform_int_distribution<size_t>(1, instances_.size())(random);
            const bool more = static_cast<size_t>(open.size()) + lags.size() < inserts;
            if (more && clock.elapsed() >= nextMs && clock.elapsed() >= freeAtMs[profile]) {
                nextMs = clock.elapsed() + kBetweenInsertsMs;
                freeAtMs[profile] = std::numeric_limits<qint64>::max();
                const qint64 begin = clock.elapsed();
                const qint64 id = number(QStringLiteral("insert into multi (profil, wa_no, wa_text) values ('%1', "
                                                        "'6287700001', 'x'); select last_insert_id()")
                                             .arg(profile));
                open[id] = {profile, begin};
            }
            const QString taken =
                server_.run(QStringLiteral("select id_outbox from multi where tipe = 'S' and id > %1").arg(newest));
            for (const QString& id : taken.split(u'\n', Qt::SkipEmptyParts)) {
                const auto found = open.find(id.toLongLong());
                if (found == open.end()) continue;
                lags.push_back(static_cast<double>(clock.elapsed() - found->insertedMs));
                freeAtMs[found->profile] = clock.elapsed() + kMessageMs;
                open.erase(found);
            }
        }
        std::sort(lags.begin(), lags.end());
        return lags[lags.size() * 99 / 100];
    }

 private:
    qint64 number(const QString& sql) { return server_.run(QStringLiteral("use kibo; ") + sql).trimmed().toLongLong(); }
    qint64 number(const char* sql) { return number(QString::fromLatin1(sql)); }
    double questions() {
        const QString status = server_.run(QStringLiteral("show global status like 'Questions'"));
        return status.section(u'\t', 1).trimmed().toDouble();
    }
    double serverSeconds() const { return processFigures(static_cast<pid_t>(server_.processId())).cpuSeconds; }
    double gatewaySeconds() const {
        double seconds = 0;
        for (const auto& instance : instances_)
            seconds += processFigures(static_cast<pid_t>(instance->process.processId())).cpuSeconds;
        return seconds;
    }

    test::MariaDbServer& server_;
    QTemporaryDir accounts_;
    std::vector<std::unique_ptr<test::MemoryInstance>> instances_;
};

/// Seconds until each of so many instances, with a real browser on a stand-in page of its own, has sent its messages.
double secondsToSend(test::MariaDbServer& server, int size) {
    server.empty();
    const auto count = [&](const char* from) {
        return server.run(QStringLiteral("select count(*) from ") + QLatin1String(from)).toInt();
    };
    std::vector<std::unique_ptr<test::RunningProgram>> programs;
    for (int profile = 1; profile <= size; ++profile) {
        programs.push_back(std::make_unique<test::RunningProgram>());
        programs.back()->use(server.settings(false));
        programs.back()->set("kibo", "Multi", QStringLiteral("Y"));
        programs.back()->set("kibo", "Profil", QString::number(profile));
        programs.back()->process.setStandardErrorFile(QProcess::nullDevice());
        QProcessEnvironment offscreen;
        offscreen.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        require(programs.back()->start(offscreen), "an instance can't be started");
    }
    QElapsedTimer clock;
    clock.start();
    while (count("kibo_instance where holds = 1 and step = 'Queue empty'") < size) {
        require(clock.elapsed() < kLongestStartMs, "not all browsers come up");
        QThread::msleep(200);
    }
    QThread::msleep(kSettleMs);
    server.run(
        QStringLiteral("insert into multi (profil, wa_no, wa_text) select p.seq, concat('62877', 100000 + r.seq % 5), "
                       "concat('message ', r.seq) from seq_1_to_%1 p, seq_1_to_%2 r order by r.seq")
            .arg(size)
            .arg(kMessagesEach));
    clock.restart();
    while (count("kibo_outcome where final = 1") < size * kMessagesEach) {
        require(clock.elapsed() < kLongestStartMs, "messages are not sent");
        QThread::msleep(50);
    }
    const double seconds = static_cast<double>(clock.elapsed()) / 1000;
    require(count("multi where tipe = 'S' and coalesce(status, '') = ''") == size * kMessagesEach, "messages failed");
    for (const auto& program : programs) program->process.terminate();
    for (const auto& program : programs) program->process.waitForFinished(20'000);
    return seconds;
}

}  // namespace

void measureFleet(Table& table) {
    test::MariaDbServer server;
    const double one = secondsToSend(server, 1);
    const double four = secondsToSend(server, kBrowsers);
    // 3.8 times the throughput.
    table.add({"fleet of 4 with browsers: 25 messages each", "s", four, one, kBrowsers / 3.8, kMessagesEach});
    double single = 0;
    for (const int size : {1, 10, 50, 100}) {
        Fleet fleet(server, size);
        const std::string name = "fleet of " + std::to_string(size) + ": ";
        const Cost busy = fleet.cost();
        const double each = busy.statements / size;
        if (size == 1) single = each;
        table.add({name + "statements a second and instance, " + std::to_string(kRowsEach) + " rows waiting", "1/s",
                   each, single, 1.10, 1});
        table.add({name + "server, sending", "cores", busy.serverCores, 1, 1, 1});
        fleet.becomeIdle();
        const Cost idle = fleet.cost();
        table.add({name + "server, idle", "cores", idle.serverCores, 1, 1, 1});
        table.add({name + "gateway, idle, of one core", "%", idle.gatewayPercent, 0.5, 1, size});
        table.add({name + "gateway, largest (proportional)", "MB", fleet.largestMb(), 40, 1, size});
        const size_t inserts = std::min(kInserts, kInsertsEach * static_cast<size_t>(size));
        table.add({name + "from an insert to taken, 99 of 100", "ms", fleet.lagMs(inserts), 2'000, 1,
                   static_cast<int>(inserts)});
    }
}

}  // namespace kibo::bench
