#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <memory>

#include "browser/webdriver/command.h"
#include "browser/webdriver/transport.h"
#include "platform/result.h"

namespace kibo::webdriver {

/// A WebDriver session, one at a time. Calls block until the answer or the command's time limit; a slow page costs at
/// most that, and it costs it once: a driver works on one command at a time, so while it is still at one that ran out
/// of time, a short look comes first and the next commands fail at once instead of queueing behind it.
///
/// Three kinds of failure: FailureKind::Transport (no answer), Protocol (an answer that doesn't conform), Remote (the
/// driver refused; `code` holds its name for the reason, see error.h). The log gets command names, durations and sizes,
/// never contents; so do the failures' texts, except that of a refused new session, which is about this computer's
/// browser only and tells the operator what to mend.
class Client {
 public:
    explicit Client(std::unique_ptr<Transport> transport = nullptr);
    /// Doesn't end the session: that may take seconds, so the owner decides (`quit`).
    ~Client() = default;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// From now on commands go this way. A session that is open is forgotten, not ended.
    void connectTo(std::unique_ptr<Transport> transport);

    /// Opens a session with a script limit of 3 s; the value is the capabilities that the driver granted.
    Result<QJsonObject> start(const QJsonObject& capabilities);
    bool isOpen() const { return !sessionId_.isEmpty(); }

    /// The answer's value (null for a command that has none). Fails with ConnectionLost when no session is open. A
    /// command that ran out of time may still take effect.
    Result<QJsonValue> send(const Command& command);

    /// Ends the session and its browser. Afterwards none is open, whatever the driver answered.
    Result<void> quit();

    /// How many commands ran out of time, the driver's or ours, since the page last answered one. What the driver
    /// answers by itself (window handles, say) doesn't count: a page that hangs leaves it in good health.
    int unansweredInARow() const { return unansweredInARow_; }

    /// Commands given to the transport since construction.
    quint64 commandsSent() const { return commandsSent_; }

 private:
    Result<QJsonValue> exchange(const Request& request);
    bool answersAgain();
    void noteAnswer(const Command& command, const Result<QJsonValue>& answer);

    std::unique_ptr<Transport> transport_;
    QString sessionId_;
    bool stuck_ = false;  ///< the last command ran out of time
    int unansweredInARow_ = 0;
    quint64 commandsSent_ = 0;
};

}  // namespace kibo::webdriver
