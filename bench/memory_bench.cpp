#include <unistd.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "bench/process_figures.h"
#include "engine/fake_page.h"
#include "engine/gateway.h"
#include "inbox/inbox.h"
#include "store/database.h"

namespace kibo::bench {
namespace {

constexpr int kFirst = 100, kAll = 2000;
constexpr double kGrowthTarget = 1.1;
constexpr int kSettledBothWays = 2000, kBothWays = 20'000;
constexpr double kBothWaysMb = 2;
constexpr double kLogMb = 16;
constexpr int kFailedInBatch = 10;
constexpr int kBatch = 100;
constexpr int kTicksPerMessage = 20;
constexpr int kReadEveryMs = 1000;
const QString kDummy = QStringLiteral("6281200009999");

/// The engine, its store, its journal and the log, on a page in memory whose time is moved: two thousand messages at
/// their pace would take an hour and a half.
class LongRun {
 public:
    LongRun() {
        createStores(folder_.path());
        settings_.UseMDB = QStringLiteral("Y");
        settings_.Speed = QStringLiteral("NORMAL");
        settings_.GetNumberInbox = QStringLiteral("N");
        state_.txt_DUMMY.text = kDummy;
        state_.cb_Profil.text = settings_.Profil;
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
            emptyPage();
        }
    }

    /// Sends and receives until so many messages have gone through in all, half of them each way and some of those sent
    /// to numbers that nobody has.
    void bothWaysUntil(int messages) {
        const auto handled = [this] { return state_.sentCount + state_.failedCount; };
        while (handled() + received_ < messages) {
            const int begun = handled();
            for (int i = begun; i < begun + kBatch; ++i) {
                queue(i);
                page_.names.insert(number(i), QStringLiteral("Contact %1").arg(i));
                if (i - begun < kFailedInBatch) page_.unknown.insert(number(i));
            }
            for (int i = 0; i < kBatch; ++i) receive();
            for (int i = 0; i < kBatch * kTicksPerMessage && handled() < begun + kBatch; ++i) {
                gateway_.machine.Timer_KIBO_Timer();
                clock_.wait(state_.Timer_KIBO.interval());
            }
            require(handled() == begun + kBatch, "not every message was handled");
            for (int i = 0; i < kBatch && stored() < received_; ++i) {
                inbox_.reader.BACA_WA();
                inbox_.reader.storeWaiting();
                inbox_.grid.keepFresh();
                clock_.wait(kReadEveryMs);
            }
            require(stored() == received_, "not every received message was stored");
            emptyPage();
        }
    }

    /// The local store's file of changes; it never shrinks while the store is open.
    double logMb() const {
        return static_cast<double>(QFileInfo(folder_.filePath(QStringLiteral("kb.mdb-wal"))).size()) / 1024 / 1024;
    }

 private:
    static QString number(int i) { return QStringLiteral("62811%1").arg(i, 7, 10, QLatin1Char('0')); }
    int stored() { return database_.OpenRecordset(QStringLiteral("select count(*) from inbox")).field(0).toInt(); }
    void receive() {
        const QString title = QStringLiteral("Sender %1").arg(++received_);
        const QString mark = QStringLiteral("1");
        page_.list.prepend({title, mark, {title, QStringLiteral("15:09"), QStringLiteral("A question."), mark}});
    }
    /// What the page counts is not the gateway's.
    void emptyPage() {
        page_.delivered.clear();
        page_.commands.clear();
        page_.clicks.clear();
        page_.names.clear();
        page_.unknown.clear();
        page_.list.clear();
        page_.forgetHistory();
        page_.reload();
    }
    void queue(int i) {
        const auto added =
            database_.execute(QStringLiteral("insert into outbox (wa_mode, wa_no, wa_text) values (0, ?, ?)"),
                              {number(i), QStringLiteral("Message %1 of this measurement.").arg(i)});
        require(added == 1, "a message can't be queued");
    }

    QTemporaryDir folder_;
    test::ManualClock clock_;
    test::FakePage page_{clock_};
    Settings settings_;
    GatewayState state_;
    // What a page says about a number that nobody has.
    ElementTable elements_{[](const QString& name) {
        return name == QStringLiteral("XXInfo3") ? QStringLiteral("*isn't on WhatsApp*") : QString();
    }};
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
    SendJournal journal_;
    Gateway gateway_{{state_, settings_, elements_, database_, page_, clock_, journal_, [] { return 0.0; }}};
    Inbox inbox_{
        {state_, settings_, elements_, database_, page_, clock_, [] { return 0.0; }, gateway_, folder_.path()}};
    int received_ = 0;
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

    LongRun both;
    both.bothWaysUntil(kSettledBothWays);
    const double settled = residentMb();
    both.bothWaysUntil(kBothWays);
    table.add({"growth from 2,000 to 20,000 messages both ways", "MB", residentMb() - settled, kBothWaysMb, 1, 1});
    table.add({"store's write-ahead log after 20,000 messages both ways", "MB", both.logMb(), kLogMb, 1, 1});
}

}  // namespace kibo::bench
