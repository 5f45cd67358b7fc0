#include "app/timer_runner.h"

#include "base/error_policy.h"
#include "base/settings.h"

namespace kibo {

void ErrorEdge::run(const std::function<void()>& step, const void* owner) {
    try {
        step();
    } catch (const SurfacedError& error) {
        // ErrorPolicy has logged it.
        if (boxOf_) return;
        boxOf_ = owner;
        dialogs_.show({kProgramName, QString::fromStdString(error.failure().text), MessageBox::Icon::Critical},
                      [this](bool) { boxOf_.reset(); });
    }
}

TimerRunner::~TimerRunner() {
    for (const auto& entry : entries_) entry->state.onEnabledChanged = nullptr;
}

void TimerRunner::add(StateTimer& timer, std::function<void()> tick) {
    entries_.push_back(std::make_unique<Entry>(timer, std::move(tick)));
    Entry& entry = *entries_.back();
    entry.timer.setInterval(timer.interval());
    entry.timer.setTimerType(Qt::CoarseTimer);
    QObject::connect(&entry.timer, &QTimer::timeout, &entry.timer, [this, &entry] { run(entry); });
    timer.onEnabledChanged = [this, &entry](bool on) {
        if (on && !stopped_) {
            entry.timer.start();
        } else {
            entry.timer.stop();
        }
    };
    timer.onEnabledChanged(timer.enabled());
}

void TimerRunner::stopAll() {
    stopped_ = true;
    for (const auto& entry : entries_) entry->timer.stop();
}

void TimerRunner::run(Entry& entry) {
    if (entry.running || stopped_ || edge_.holds(&entry)) return;
    entry.running = true;
    edge_.run(entry.tick, &entry);
    entry.running = false;
}

}  // namespace kibo
