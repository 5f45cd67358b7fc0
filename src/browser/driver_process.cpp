#include "browser/driver_process.h"

#include <QJsonDocument>
#include <QRegularExpression>

#include "base/log.h"
#include "browser/webdriver/curl_transport.h"

namespace kibo {
namespace {

constexpr int kPortTries = 3;
constexpr const char* kLog = "browser";
constexpr int kLookMs = 50;
constexpr int kStatusMs = 1'000;
constexpr int kGraceMs = 500;
constexpr int kLongestLine = 300;

std::string quoted(const QString& text) {
    return QStringLiteral("\"%1\"").arg(text).toStdString();
}

/// The port in ChromeDriver's line "ChromeDriver was started successfully on port 33121."; 0 in other lines. Its first
/// line also names a port, the one asked for.
int portIn(const QString& line) {
    static const QRegularExpression started(QStringLiteral("started successfully on port (\\d+)"));
    return started.match(line).captured(1).toInt();
}

bool isReady(const QByteArray& status) {
    return QJsonDocument::fromJson(status)[QLatin1String("value")][QLatin1String("ready")].toBool();
}

}  // namespace

DriverProcess::DriverProcess(QString program) : program_(std::move(program)) {
    child_.setProcessChannelMode(QProcess::MergedChannels);
    child_.setStandardInputFile(QProcess::nullDevice());
    QObject::connect(&child_, &QProcess::readyRead, &child_, [this] { readOutput(); });
    QObject::connect(&child_, &QProcess::finished, &child_, [this] {
        if (process_.id == 0) return;  // told to, or not ready yet
        process_ = {};
        log::warning(kLog, QStringLiteral("the driver ended by itself, exit code %1").arg(child_.exitCode()));
        if (onExited) onExited();
    });
}

DriverProcess::~DriverProcess() {
    onExited = nullptr;
    stop();
}

Result<QByteArray> DriverProcess::start(int readyWithinMs) {
    Result<QByteArray> address = startOnce(readyWithinMs);
    // ChromeDriver picks a port that is free with one address family and may find it taken with the other.
    for (int tries = 1; !address && tries < kPortTries && lastLine_.contains(u"port not available"); ++tries)
        address = startOnce(readyWithinMs);
    return address;
}

Result<QByteArray> DriverProcess::startOnce(int readyWithinMs) {
    const QDeadlineTimer deadline(readyWithinMs);
    port_ = 0;
    lastLine_.clear();
    child_.start(program_, {QStringLiteral("--port=0")}, QIODevice::ReadOnly);
    if (!child_.waitForStarted(readyWithinMs)) {
        return Failure{FailureKind::NotFound, "the WebDriver program " + quoted(program_) +
                                                  " can't be started: it isn't there or may not be run. Install "
                                                  "chromedriver or name it in the setting ChromeDriver"};
    }
    const platform::ProcessId pid = child_.processId();
    const platform::Process started{pid, platform::processStartTime(pid)};

    const Result<void> port = awaitPort(deadline);
    Result<QByteArray> address = port ? awaitReadiness(deadline) : Result<QByteArray>(port.failure());
    if (!address) {
        stop();
        return address;
    }
    process_ = started;
    log::info(kLog, QStringLiteral("driver ready: process %1, port %2").arg(pid).arg(port_));
    return address;
}

void DriverProcess::stop() {
    process_ = {};
    if (child_.state() == QProcess::NotRunning) return;
    child_.terminate();
    if (child_.waitForFinished(kGraceMs)) return;
    child_.kill();
    child_.waitForFinished();
}

Result<void> DriverProcess::awaitPort(const QDeadlineTimer& deadline) {
    for (;;) {
        const bool ended = child_.state() == QProcess::NotRunning;
        readOutput();
        if (port_ != 0) return {};
        if (ended) return exitedEarly();
        if (deadline.hasExpired()) {
            return Failure{FailureKind::Protocol, "the WebDriver program " + quoted(program_) +
                                                      " runs but didn't name its port in time. Is it a current "
                                                      "chromedriver?"};
        }
        child_.waitForReadyRead(kLookMs);
    }
}

Result<QByteArray> DriverProcess::awaitReadiness(const QDeadlineTimer& deadline) {
    const QByteArray address = "http://127.0.0.1:" + QByteArray::number(port_);
    webdriver::CurlTransport transport(address);
    do {
        const auto status = transport.send(webdriver::Method::Get, "/status", {}, kStatusMs);
        if (status && isReady(status.value().body)) return address;
        if (child_.waitForFinished(kLookMs)) return exitedEarly();
    } while (!deadline.hasExpired());
    return Failure{FailureKind::Transport, "the WebDriver program " + quoted(program_) + " doesn't become ready"};
}

Failure DriverProcess::exitedEarly() const {
    std::string text =
        "the WebDriver program " + quoted(program_) + " ended at once, exit code " + std::to_string(child_.exitCode());
    if (!lastLine_.isEmpty()) text += ", its last line: " + lastLine_.toStdString();
    return {FailureKind::Io, std::move(text)};
}

void DriverProcess::readOutput() {
    while (child_.canReadLine() || (child_.state() == QProcess::NotRunning && child_.bytesAvailable() > 0)) {
        const QString line = QString::fromLocal8Bit(child_.readLine()).trimmed().left(kLongestLine);
        if (line.isEmpty()) continue;
        log::info(kLog, QStringLiteral("driver: ") + line);
        if (const int port = portIn(line)) port_ = port;
        lastLine_ = line;
    }
}

}  // namespace kibo
