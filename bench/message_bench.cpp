#include <QTimer>

#include "app/timer_runner.h"
#include "bench/benchmarks.h"
#include "bench/measuring.h"
#include "bench/sending_gateway.h"
#include "widgets/qt_dialogs.h"

namespace kibo::bench {
namespace {

constexpr int kMessages = 20;
constexpr int kIdleTicks = 20;
constexpr int kLongestRunMs = 180'000;
constexpr double kTimeTarget = 1.04;
constexpr double kCommandsPerMessage = 8;
constexpr double kCommandsPerIdleTick = 2;
constexpr double kJournalTarget = 0.02;
const QString kNumber = QStringLiteral("6281234567890");

QString text(int message) {
    return QStringLiteral("Message %1 of this measurement.").arg(message);
}

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
    TimedGateway() : edge_(dialogs_), timers_(edge_) {
        timers_.add(state().Timer_KIBO, [this] { tick(); });
        timers_.add(state().Timer2, [this] { sending_.gateway.chatListWatch.Timer2_Timer(); });
        timers_.add(state().Timer1, [this] { clock_.runPendingEvents(); });
        timers_.add(state().BreakTime, [this] { sending_.gateway.pacing.BreakTime_Timer(); });
        state().Timer_KIBO.setEnabled(true);
    }

    void queue(int count) {
        for (int i = 0; i < count; ++i) sending_.queue(kNumber, text(i));
    }
    void runUntil(const std::function<bool()>& done, const char* what) {
        QElapsedTimer waited;
        waited.start();
        // Not the counting clock: this wait is nobody's demand.
        while (!done() && waited.elapsed() < kLongestRunMs) idleClock_.wait(20);
        require(done(), what);
    }

    SendingGateway& sending() { return sending_; }
    GatewayState& state() { return sending_.state; }
    const std::vector<Tick>& ticks() const { return ticks_; }

 private:
    void tick() {
        Tick tick;
        tick.beganMs = static_cast<double>(since_.nsecsElapsed()) / 1e6;
        tick.demandedMs = clock_.demandedMs;
        const quint64 commands = sending_.commandsSent();
        const int sent = state().sentCount;
        sending_.gateway.machine.Timer_KIBO_Timer();
        tick.commands = sending_.commandsSent() - commands;
        tick.sent = state().sentCount > sent;
        ticks_.push_back(tick);
    }

    CountingClock clock_;
    SystemClock idleClock_;
    SendingGateway sending_{clock_};
    UnattendedDialogs dialogs_;
    ErrorEdge edge_;
    TimerRunner timers_;
    QElapsedTimer since_ = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    std::vector<Tick> ticks_;
};

/// Milliseconds that the records of one message take, from taken to ended, each on the disk before the next one.
double journalOfMessage(const QString& folder) {
    SendJournal journal;
    require(journal.open(folder + QStringLiteral("/measured.journal")).ok(), "no journal");
    std::vector<double> took;
    for (int i = 0; i < kMessages; ++i) {
        const QString id = QString::number(i);
        took.push_back(millisecondsOf([&] {
            const bool noted = journal.taken({id, QStringLiteral("0"), kNumber, text(i), {}, {}, {}}) &&
                               journal.typed(id, kNumber, text(i), QStringLiteral("true_%1@c.us_%2").arg(kNumber, id));
            require(noted, "the journal can't be written");
            journal.ended(id);
        }));
    }
    return median(took);
}

}  // namespace

void measureMessages(Table& table) {
    TimedGateway gateway;
    GatewayState& state = gateway.state();
    gateway.runUntil([&] { return state.step == QStringLiteral("Queue empty"); }, "the gateway does not get ready");
    gateway.queue(1);  // the first one finds cold caches
    gateway.runUntil([&] { return state.sentCount == 1 && state.step == QStringLiteral("Queue empty"); },
                     "no message is sent");

    const size_t firstTick = gateway.ticks().size();
    const quint64 commandsBefore = gateway.sending().commandsSent();
    gateway.queue(kMessages);
    gateway.runUntil([&] { return state.sentCount + state.failedCount == 1 + kMessages; }, "the queue is stuck");
    const quint64 commands = gateway.sending().commandsSent() - commandsBefore;
    gateway.runUntil([&] { return state.step == QStringLiteral("Queue empty"); }, "the last message does not end");
    require(state.failedCount == 0 && gateway.sending().chat.standIn.received().size() == 1 + kMessages,
            "not every message arrived");

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
    table.add({"journal of a message, of its whole time", "ms", journalOfMessage(gateway.sending().chat.folder.path()),
               median(took), kJournalTarget, kMessages});
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
