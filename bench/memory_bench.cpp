#include <unistd.h>

#include <QTemporaryDir>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "bench/process_figures.h"
#include "engine/fake_page.h"
#include "engine/gateway.h"
#include "store/database.h"

namespace kibo::bench {
namespace {

constexpr int kFirst = 100, kAll = 2000;
constexpr double kGrowthTarget = 1.1;
constexpr int kBatch = 100;
constexpr int kTicksPerMessage = 10;
const QString kDummy = QStringLiteral("6281200009999");

/// The engine, its store, its journal and the log, on a page in memory whose time is moved: two thousand messages at
/// their pace would take an hour and a half.
class LongRun {
 public:
    LongRun() {
        createStores(folder_.path());
        settings_.UseMDB = QStringLiteral("Y");
        settings_.Speed = QStringLiteral("NORMAL");
        state_.txt_DUMMY.text = kDummy;
        require(database_.OpenDatabase(settings_, folder_.path()).ok(), "the embedded store can't be opened");
        require(journal_.open(folder_.filePath(QStringLiteral("send.journal"))).ok(), "no journal");
    }

    /// Sends until so many messages have gone in all. Each goes to somebody else, since what is remembered of chats
    /// must not grow either.
    void sendUntil(int messages) {
        while (state_.sentCount < messages) {
            const int begun = state_.sentCount;
            for (int i = begun; i < begun + kBatch; ++i) queue(i);
            for (int i = 0; i < kBatch * kTicksPerMessage && state_.sentCount < begun + kBatch; ++i) {
                gateway_.machine.Timer_KIBO_Timer();
                clock_.wait(state_.Timer_KIBO.interval());
            }
            require(state_.failedCount == 0 && page_.delivered.size() == kBatch, "not every message arrived");
            // What the page counts is not the gateway's.
            page_.delivered.clear();
            page_.commands.clear();
            page_.clicks.clear();
            page_.reload();
        }
    }

 private:
    void queue(int i) {
        const auto added =
            database_.execute(QStringLiteral("insert into outbox (wa_mode, wa_no, wa_text) values (0, ?, ?)"),
                              {QStringLiteral("62811%1").arg(i, 7, 10, QLatin1Char('0')),
                               QStringLiteral("Message %1 of this measurement.").arg(i)});
        require(added == 1, "a message can't be queued");
    }

    QTemporaryDir folder_;
    test::ManualClock clock_;
    test::FakePage page_{clock_};
    Settings settings_;
    GatewayState state_;
    ElementTable elements_{[](const QString&) { return QString(); }};
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
    SendJournal journal_;
    Gateway gateway_{{state_, settings_, elements_, database_, page_, clock_, journal_, [] { return 0.0; }}};
};

double residentMb() {
    return processFigures(getpid()).residentMb;
}

}  // namespace

void measureMemory(Table& table) {
    LongRun run;
    run.sendUntil(kFirst);
    const double first = residentMb();
    run.sendUntil(kAll);
    table.add({"resident after 2,000 messages over 100, page in memory", "MB", residentMb(), first, kGrowthTarget, 1});
}

}  // namespace kibo::bench
