#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QProcess>
#include <QString>
#include <functional>

#include "platform/process.h"
#include "platform/result.h"

namespace kibo {

/// The WebDriver program (chromedriver) as our child: on a free loopback port of its own choice, its output in the
/// log, and ended for certain with this object. The browsers that it started are not its business: they outlive a
/// driver that dies (see SessionRecord).
class DriverProcess {
 public:
    /// `program` is a path, or a name that is looked up in the PATH.
    explicit DriverProcess(QString program);
    ~DriverProcess();
    DriverProcess(const DriverProcess&) = delete;
    DriverProcess& operator=(const DriverProcess&) = delete;

    /// Starts the program and returns its address once it is ready for sessions; blocks for at most `readyWithinMs`.
    /// After a failure nothing is left running. The failure's text tells the operator what to mend.
    Result<QByteArray> start(int readyWithinMs = 20'000);

    bool isRunning() const { return platform::isRunning(process_.id, process_.startTime); }
    /// Id 0 before a successful start.
    platform::Process process() const { return process_; }

    /// Called from the event loop when the program ends without having been told to. Don't destroy this object in it.
    std::function<void()> onExited;

    void stop();

 private:
    Result<QByteArray> startOnce(int readyWithinMs);
    Result<void> awaitPort(const QDeadlineTimer& deadline);
    Result<QByteArray> awaitReadiness(const QDeadlineTimer& deadline);
    Failure exitedEarly() const;
    /// Logs the output that has come and looks for the port in it.
    void readOutput();

    QString program_;
    QProcess child_;
    platform::Process process_;
    QString lastLine_;
    int port_ = 0;
};

}  // namespace kibo
