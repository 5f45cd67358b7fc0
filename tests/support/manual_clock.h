#pragma once

#include <functional>
#include <map>

#include "base/clock.h"

namespace kibo::test {

/// A clock that moves only when somebody waits. What was planned with `at` happens inside the wait that passes
/// its moment, as timers and page changes do in the program.
class ManualClock : public Clock {
 public:
    explicit ManualClock(QDateTime start = QDateTime(QDate(2026, 3, 14), QTime(15, 9, 26))) : start_(start) {}

    QDateTime now() const override { return start_.addMSecs(elapsed_); }
    qint64 monotonicMs() const override { return elapsed_; }
    void wait(int milliseconds) override {
        if (waitingStopped_) return;
        waited_ += milliseconds;
        const qint64 end = elapsed_ + milliseconds;
        while (!planned_.empty() && planned_.begin()->first <= end) {
            const auto next = planned_.begin();
            elapsed_ = std::max(elapsed_, next->first);
            const auto action = next->second;
            planned_.erase(next);
            action();
        }
        elapsed_ = std::max(elapsed_, end);
    }
    void runPendingEvents() override {
        if (onPendingEvents) onPendingEvents();
    }
    void stopWaiting() override { waitingStopped_ = true; }
    bool waitingStopped() const override { return waitingStopped_; }

    void at(qint64 ms, std::function<void()> action) { planned_.emplace(ms, std::move(action)); }
    /// What was demanded of wait() so far.
    qint64 waited() const { return waited_; }

    std::function<void()> onPendingEvents;

 private:
    QDateTime start_;
    qint64 elapsed_ = 0;
    qint64 waited_ = 0;
    bool waitingStopped_ = false;
    std::multimap<qint64, std::function<void()>> planned_;
};

}  // namespace kibo::test
