#pragma once

#include <QObject>
#include <functional>
#include <list>
#include <stop_token>
#include <thread>

namespace kibo {

/// A window's long work on a thread of its own, one piece at a time.
class BackgroundWork : public QObject {
    Q_OBJECT

 public:
    /// Done in the main thread when the work has ended.
    using Ended = std::function<void()>;
    /// Done in the thread; touches nothing of other threads. Gives what shall be done with its result.
    using Work = std::function<Ended(const std::stop_token& stop)>;

    explicit BackgroundWork(QObject* parent) : QObject(parent) {}
    /// Waits for what still runs, after it was asked to stop.
    ~BackgroundWork() override;

    /// Whatever runs is abandoned.
    void start(Work work);
    /// Asks what runs to stop; its end is told all the same.
    void askToStop();
    /// The same, and its end is told to nobody.
    void abandon();
    bool isRunning() const { return running_ != 0; }

 private:
    void end(quint64 number, const Ended& ended);

    std::list<std::pair<quint64, std::jthread>> threads_;  // the last one may be running_, the others only end
    quint64 last_ = 0;
    quint64 running_ = 0;  // 0: none
};

}  // namespace kibo
