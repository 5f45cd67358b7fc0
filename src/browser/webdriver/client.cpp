#include "browser/webdriver/client.h"

#include <QJsonDocument>

#include "base/log.h"
#include "browser/webdriver/error.h"

namespace kibo::webdriver {
namespace {

constexpr const char* kLog = "browser";
// Shorter than the time we wait for an answer: a busy page is reported by the driver, not by a broken connection.
constexpr int kScriptMs = 3'000;
constexpr int kPageLoadMs = 30'000;
// A driver that is free answers within a few milliseconds.
constexpr int kProbeMs = 250;
constexpr int kErrorStatus = 400;
constexpr int kLongestMessage = 400;

template <class... Commands>
bool isAnyOf(const Command& command) {
    return (std::holds_alternative<Commands>(command) || ...);
}

bool isOutsideSession(const Command& command) {
    return isAnyOf<Status, NewSession>(command);
}

/// Whether the answer comes from the page, so that it proves the page alive.
bool isAnsweredByPage(const Command& command) {
    return isAnyOf<ExecuteScript, FindElement, FindElements, GetTitle, ElementClick, ElementSendKeys,
                   GetElementAttribute>(command);
}

Failure nonConforming(const Request& request, const HttpAnswer& answer, const char* what) {
    return {FailureKind::Protocol, std::string(request.name) + ": status " + std::to_string(answer.status) + ", " +
                                       std::to_string(answer.body.size()) + " bytes: " + what};
}

Failure refused(const Request& request, const std::string& error, const QString& message) {
    std::string text = std::string(request.name) + ": " + error;
    // Messages of other commands quote the page and locators: people's texts and numbers.
    if (request.path == "/session") {
        text.append(": ").append(message.simplified().left(kLongestMessage).toStdString());
    }
    return {FailureKind::Remote, std::move(text), error};
}

Result<QJsonValue> stillBusy(const Request& request) {
    return Failure{FailureKind::Transport, std::string(request.name) + ": the browser is still busy",
                   std::string(kTimeoutCode)};
}

bool ranOutOfTime(const Failure& failure) {
    return isTimeout(failure) || isError(failure, ErrorCode::ScriptTimeout) || isError(failure, ErrorCode::Timeout);
}

Result<QJsonValue> valueOf(const Request& request, const HttpAnswer& answer) {
    QJsonParseError parsing;
    const QJsonDocument document = QJsonDocument::fromJson(answer.body, &parsing);
    if (parsing.error != QJsonParseError::NoError || !document.isObject()) {
        return nonConforming(request, answer, "not a JSON object");
    }
    QJsonValue value = document.object().value(QLatin1String("value"));
    if (value.isUndefined()) return nonConforming(request, answer, "no \"value\"");
    if (answer.status < kErrorStatus) return value;

    const std::string error = value[QLatin1String("error")].toString().toStdString();
    if (error.empty()) return nonConforming(request, answer, "an error without a name");
    return refused(request, error, value[QLatin1String("message")].toString());
}

}  // namespace

Client::Client(std::unique_ptr<Transport> transport) : transport_(std::move(transport)) {}

void Client::connectTo(std::unique_ptr<Transport> transport) {
    transport_ = std::move(transport);
    sessionId_.clear();
    stuck_ = false;
    unansweredInARow_ = 0;
}

Result<QJsonObject> Client::start(const QJsonObject& capabilities) {
    if (isOpen()) return Failure{FailureKind::InvalidArgument, "a browser session is already open"};
    const Request request = requestFor(NewSession{capabilities}, {});
    const Result<QJsonValue> answer = exchange(request);
    if (!answer) return answer.failure();

    const QString sessionId = answer.value()[QLatin1String("sessionId")].toString();
    if (sessionId.isEmpty()) return Failure{FailureKind::Protocol, "NewSession: no session id in the answer"};
    sessionId_ = sessionId;
    const Result<QJsonValue> limits = send(SetTimeouts{.scriptMs = kScriptMs, .pageLoadMs = kPageLoadMs});
    if (!limits) {
        // Without the limits a busy page would hold every call up.
        (void)quit();
        return limits.failure();
    }
    return answer.value()[QLatin1String("capabilities")].toObject();
}

Result<QJsonValue> Client::send(const Command& command) {
    if (!isOpen() && !isOutsideSession(command)) {
        return Failure{FailureKind::ConnectionLost, "no browser session is open"};
    }
    const Request request = requestFor(command, sessionId_);
    Result<QJsonValue> answer = stuck_ && !answersAgain() ? stillBusy(request) : exchange(request);
    noteAnswer(command, answer);
    return answer;
}

/// Asks for something that needs neither page nor browser; no harm is done when it is answered later.
bool Client::answersAgain() {
    Request probe = requestFor(GetWindowHandle{}, sessionId_);
    probe.timeoutMs = kProbeMs;
    const Result<QJsonValue> answer = exchange(probe);
    return answer || !isTimeout(answer.failure());
}

void Client::noteAnswer(const Command& command, const Result<QJsonValue>& answer) {
    if (!answer && ranOutOfTime(answer.failure())) {
        ++unansweredInARow_;
    } else if (isAnsweredByPage(command) && (answer || answer.failure().kind == FailureKind::Remote)) {
        unansweredInARow_ = 0;
    }
}

Result<void> Client::quit() {
    if (!isOpen()) return {};
    const Result<QJsonValue> answer = send(DeleteSession{});
    sessionId_.clear();
    stuck_ = false;
    unansweredInARow_ = 0;
    if (!answer) return answer.failure();
    return {};
}

Result<QJsonValue> Client::exchange(const Request& request) {
    if (!transport_) return Failure{FailureKind::ConnectionLost, "no driver is connected"};
    const QByteArray body =
        request.method == Method::Post ? QJsonDocument(request.body).toJson(QJsonDocument::Compact) : QByteArray();
    ++commandsSent_;
    const Result<HttpAnswer> answer = transport_->send(request.method, request.path, body, request.timeoutMs);
    stuck_ = !answer && isTimeout(answer.failure());
    if (!answer) {
        Failure failure = answer.failure();
        failure.text = std::string(request.name) + ": " + failure.text;
        return failure;
    }
    const HttpAnswer& http = answer.value();
    log::debug(kLog, QStringLiteral("%1: status %2, %3 us, %4 bytes out, %5 in")
                         .arg(QLatin1String(request.name))
                         .arg(http.status)
                         .arg(http.durationUs)
                         .arg(body.size())
                         .arg(http.body.size()));
    return valueOf(request, http);
}

}  // namespace kibo::webdriver
