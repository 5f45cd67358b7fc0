#include <QTimer>

#include "app/database.h"
#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "engine/gateway.h"
#include "main_window/qt_dialogs.h"
#include "main_window/timer_runner.h"

namespace kibo::bench {
namespace {

constexpr int kMessages = 20;
constexpr int kIdleTicks = 20;
constexpr int kLongestRunMs = 180'000;
constexpr double kTimeTarget = 1.04;
constexpr double kCommandsPerMessage = 8;
constexpr double kCommandsPerIdleTick = 2;
const QString kNumber = QStringLiteral("6281234567890");

/// The computer's clock; counts the waits that are asked of it.
class CountingClock : public SystemClock {
 public:
    void wait(int milliseconds) override {
        demandedMs += milliseconds;
        SystemClock::wait(milliseconds);
    }
    double demandedMs = 0;
};

/// One tick of the step machine, with what came before it since the tick before.
struct Tick {
    double beganMs = 0;
    double demandedMs = 0;  ///< by the clock up to its beginning
    quint64 commands = 0;   ///< during the tick
    bool sent = false;
};

/// The engine with its timers as in the program, but without its window.
class TimedGateway {
 public:
    TimedGateway() : chat_(clock_), edge_(dialogs_, {}), timers_(edge_) {
        // Each message to another chat than the one that is open in between.
        state_.txt_DUMMY.text = QStringLiteral("6281200009999");
        state_.cb_Profil.text = chat_.settings.Profil;
        const auto opened = database_.OpenDatabase(chat_.settings, chat_.folder.path());
        require(opened.ok(), "the embedded store can't be opened");
        require(journal_.open(chat_.folder.filePath(QStringLiteral("send.journal"))).ok(), "no journal");
        gateway_.emplace(Gateway::Needs{state_, chat_.settings, chat_.elements, database_, chat_.page, clock_, journal_,
                                        [] { return 0.0; }});
        timers_.add(state_.Timer_KIBO, [this] { tick(); });
        timers_.add(state_.Timer2, [this] { gateway_->chatListWatch.Timer2_Timer(); });
        timers_.add(state_.Timer1, [this] { clock_.runPendingEvents(); });
        timers_.add(state_.BreakTime, [this] { gateway_->pacing.BreakTime_Timer(); });
        state_.Timer_KIBO.setEnabled(true);
    }

    void queue(int count) {
        for (int i = 0; i < count; ++i) {
            const auto added =
                database_.execute(QStringLiteral("insert into outbox (wa_mode, wa_no, wa_text) values (0, ?, ?)"),
                                  {kNumber, QStringLiteral("Message %1 of this measurement.").arg(i)});
            require(added == 1, "a message can't be queued");
        }
    }
    void runUntil(const std::function<bool()>& done, const char* what) {
        QElapsedTimer waited;
        waited.start();
        // Not the counting clock: this wait is nobody's demand.
        while (!done() && waited.elapsed() < kLongestRunMs) idleClock_.wait(20);
        require(done(), what);
    }

    GatewayState& state() { return state_; }
    const std::vector<Tick>& ticks() const { return ticks_; }
    size_t received() const { return chat_.standIn.received().size(); }
    quint64 commandsSent() { return chat_.browser.client().commandsSent(); }

 private:
    void tick() {
        Tick tick;
        tick.beganMs = static_cast<double>(since_.nsecsElapsed()) / 1e6;
        tick.demandedMs = clock_.demandedMs;
        const quint64 commands = commandsSent();
        const int sent = state_.sentCount;
        gateway_->machine.Timer_KIBO_Timer();
        tick.commands = commandsSent() - commands;
        tick.sent = state_.sentCount > sent;
        ticks_.push_back(tick);
    }

    CountingClock clock_;
    SystemClock idleClock_;
    BrowserPage chat_;
    UnattendedDialogs dialogs_;
    ErrorEdge edge_;
    TimerRunner timers_;
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
    GatewayState state_;
    SendJournal journal_;
    std::optional<Gateway> gateway_;
    QElapsedTimer since_ = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    std::vector<Tick> ticks_;
};

}  // namespace

void measureMessages(Table& table) {
    TimedGateway gateway;
    GatewayState& state = gateway.state();
    gateway.runUntil([&] { return state.step == QStringLiteral("Queue empty"); }, "the gateway does not get ready");
    gateway.queue(1);  // the first one finds cold caches
    gateway.runUntil([&] { return state.sentCount == 1 && state.step == QStringLiteral("Queue empty"); },
                     "no message is sent");

    const size_t firstTick = gateway.ticks().size();
    const quint64 commandsBefore = gateway.commandsSent();
    gateway.queue(kMessages);
    gateway.runUntil([&] { return state.sentCount + state.failedCount == 1 + kMessages; }, "the queue is stuck");
    const quint64 commands = gateway.commandsSent() - commandsBefore;
    gateway.runUntil([&] { return state.step == QStringLiteral("Queue empty"); }, "the last message does not end");
    require(state.failedCount == 0 && gateway.received() == 1 + kMessages, "not every message arrived");

    std::vector<double> took, demanded, commandsOfTick;
    const auto& ticks = gateway.ticks();
    for (size_t i = firstTick; i + 1 < ticks.size(); ++i) {
        if (!ticks[i].sent) continue;
        took.push_back(ticks[i + 1].beganMs - ticks[i].beganMs);
        demanded.push_back(ticks[i + 1].demandedMs - ticks[i].demandedMs + MessageSender::kBetweenEscapesMs +
                           state.Timer_KIBO.interval());
        commandsOfTick.push_back(static_cast<double>(ticks[i].commands));
    }
    const size_t firstIdle = ticks.size();
    gateway.runUntil([&] { return gateway.ticks().size() >= firstIdle + kIdleTicks; }, "the ticks have stopped");
    std::vector<double> idle;
    for (size_t i = firstIdle; i < gateway.ticks().size(); ++i)
        idle.push_back(static_cast<double>(gateway.ticks()[i].commands));

    table.add({"text message at \"NORMAL\", over the waits demanded", "ms", median(took), median(demanded), kTimeTarget,
               static_cast<int>(took.size())});
    table.add({"browser commands per message", "", median(commandsOfTick), kCommandsPerMessage, 1,
               static_cast<int>(commandsOfTick.size())});
    table.add(
        {"browser commands per idle tick", "", median(idle), kCommandsPerIdleTick, 1, static_cast<int>(idle.size())});
    char text[160];
    std::snprintf(text, sizeof text,
                  "  all commands of the run of %d messages, the chat list's watch included: %.1f per message",
                  kMessages, static_cast<double>(commands) / kMessages);
    table.note(text);
}

}  // namespace kibo::bench
