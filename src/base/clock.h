#pragma once

#include <QDateTime>
#include <QElapsedTimer>

namespace kibo {

/// Everything that asks "now", waits or measures goes through a clock that is handed in, so that tests can
/// move time instead of waiting for it. Single-threaded: used from the main thread only.
class Clock {
 public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Local date and time.
    virtual QDateTime now() const = 0;
    /// Milliseconds since an arbitrary moment; never runs backwards.
    virtual qint64 monotonicMs() const = 0;
    /// Returns after `milliseconds`. Pending events (clicks, other timers' ticks) run meanwhile.
    virtual void wait(int milliseconds) = 0;
    /// Lets pending events run once, without waiting for any.
    virtual void runPendingEvents() = 0;

    /// From now on every wait returns at once: the program is about to end.
    virtual void stopWaiting() = 0;
    virtual bool waitingStopped() const = 0;
};

/// The computer's clocks and Qt's event loop.
class SystemClock : public Clock {
 public:
    SystemClock() { elapsed_.start(); }

    QDateTime now() const override { return QDateTime::currentDateTime(); }
    qint64 monotonicMs() const override { return elapsed_.elapsed(); }
    void wait(int milliseconds) override;
    void runPendingEvents() override;
    void stopWaiting() override { waitingStopped_ = true; }
    bool waitingStopped() const override { return waitingStopped_; }

 private:
    QElapsedTimer elapsed_;
    bool waitingStopped_ = false;
};

}  // namespace kibo
