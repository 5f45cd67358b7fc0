#include "browser/browser.h"

#include <QDir>
#include <QStringList>

#include "base/log.h"
#include "browser/launch.h"
#include "browser/webdriver/curl_transport.h"
#include "browser/webdriver/error.h"
#include "platform/top_level_windows.h"

namespace kibo {
namespace {

using namespace webdriver;

constexpr const char* kLog = "browser";
constexpr qint64 kHungMs = 60'000;
constexpr int kWindowWidth = 800;
constexpr int kWindowHeight = 700;

// Chromium, which Debian has in Chrome's place, puts its own name into the titles.
constexpr const char* kBrowserNames[] = {" - Google Chrome", " - Chromium"};

/// Shows or hides the window of the process `owner` whose page has this title.
bool setVisible(const std::string& pageTitle, bool visible, platform::ProcessId owner) {
    if (owner == 0 || !platform::canHideWindows()) return false;
    for (const char* browser : kBrowserNames) {
        if (const auto window = platform::FindWindowByTitle(pageTitle + browser, owner)) {
            platform::showWindow(*window, visible);
            return true;
        }
    }
    return false;
}

platform::Process runningProcess(platform::ProcessId id) {
    return {id, platform::processStartTime(id)};
}

/// A step that the browser can do without.
void attempt(Client& client, const Command& command) {
    if (const auto done = client.send(command); !done) {
        log::warning(kLog, QString::fromStdString(done.failure().text));
    }
}

}  // namespace

Browser::Browser(QString programFolder, const Clock& clock) : programFolder_(std::move(programFolder)), clock_(clock) {}

Browser::~Browser() {
    quit();
}

void Browser::accompany(const QString& script, const webdriver::ExecuteScript& farewell) {
    script_ = script;
    farewell_ = farewell;
}

Result<void> Browser::open(const LaunchOptions& options) {
    quit();
    const Settings& settings = options.settings;
    if (options.readProfile) options.readProfile();
    const Result<QString> profile = profileFolder(programFolder_, options.profile);
    if (!profile) return profile.failure();

    const bool incognito = isYes(settings.Incognito);
    const QString recordFolder = incognito ? programFolder_ : profile.value();
    if (!QDir().mkpath(recordFolder)) {
        return Failure{FailureKind::Io, "can't create the folder " + recordFolder.toStdString()};
    }
    const SessionRecords records(recordFolder);
    if (const platform::ProcessId other = records.endLeftovers(); other != 0 && !incognito) {
        return Failure{FailureKind::InvalidArgument, "the profile \"" + options.profile.toStdString() +
                                                         "\" is in use by another gateway, process " +
                                                         std::to_string(other)};
    }
    if (!incognito) {
        freeProfile(profile.value());
        removeBrokenSettings(profile.value());
    }

    session_.emplace(
        Session{nullptr, options.profile, startAddress(settings), clock_.monotonicMs(), records, {}, 0, {}, {}, false});
    if (const Result<void> started = start(*session_, options, profile.value()); !started) {
        quit();
        return started;
    }
    if (!script_.isEmpty()) {
        attempt(client_, ChromeExecuteCdp{QStringLiteral("Page.addScriptToEvaluateOnNewDocument"),
                                          {{QStringLiteral("source"), script_}}});
    }
    attempt(client_, NavigateTo{startAddress(settings)});
    if (isYes(settings.Multi)) {
        attempt(client_, ExecuteScript{QStringLiteral("document.title = arguments[0]"), {pageTitle()}});
    }
    setVisible("New Tab", !options.hideWindow, session_->windowOwner);
    attempt(client_, SetWindowRect{.x = 0, .y = 0, .width = kWindowWidth, .height = kWindowHeight});
    if (options.armStepMachine) options.armStepMachine();
    const bool done = hideWindow(options.hideWindow);
    session_->hideWhenTitled = options.hideWindow && !done;
    return {};
}

qint64 Browser::ageMs() const {
    return session_ ? clock_.monotonicMs() - session_->openedAtMs : 0;
}

quint64 Browser::memoryBytes() const {
    const platform::ProcessId root = session_ ? session_->record.browser.id : 0;
    if (root == 0) return 0;
    quint64 bytes = platform::memoryBytes(root);
    for (const platform::Process& process : platform::descendants(root)) bytes += platform::memoryBytes(process.id);
    return bytes;
}

Result<void> Browser::start(Session& session, const LaunchOptions& options, const QString& profileFolder) {
    session.record.owner = runningProcess(platform::ownProcessId());
    const Result<QByteArray> address = reachDriver(session, options.settings);
    if (!address) return address.failure();

    // Written before the browser starts: from now on something may be left behind.
    if (const Result<void> written = session.records.write(session.record); !written) return written;
    client_.connectTo(std::make_unique<CurlTransport>(address.value()));
    const Result<QJsonObject> granted =
        client_.start(launchCapabilities(options.settings, profileFolder, options.sandbox));
    if (!granted) return granted.failure();

    // The process ids of a driver elsewhere mean nothing here.
    const platform::ProcessId browserId = granted.value()[QLatin1String("goog:processID")].toInteger();
    if (session.driver && browserId > 0) {
        session.record.browser = runningProcess(browserId);
        if (const Result<void> written = session.records.write(session.record); !written) return written;
    }
    if (!isDriverElsewhere(options.settings.ChromeDriver)) session.windowOwner = browserId;
    const Result<QJsonValue> window = client_.send(GetWindowHandle{});
    if (!window) return window.failure();
    session.windowHandle = window.value().toString();
    log::info(kLog, QStringLiteral("browser started: %1 %2, process %3")
                        .arg(granted.value()[QLatin1String("browserName")].toString(),
                             granted.value()[QLatin1String("browserVersion")].toString())
                        .arg(browserId));
    return {};
}

Result<QByteArray> Browser::reachDriver(Session& session, const Settings& settings) {
    const QString& setting = settings.ChromeDriver;
    if (isDriverAddress(setting)) return setting.toUtf8();

    session.driver = std::make_unique<DriverProcess>(setting.isEmpty() ? QStringLiteral("chromedriver") : setting);
    Result<QByteArray> address = session.driver->start();
    if (!address) return address;
    session.record.driver = session.driver->process();
    // A browser outlives its driver, out of everybody's reach and with the profile in its hands.
    session.driver->onExited = [&session] { endProcesses(session.record); };
    return address;
}

void Browser::quit() {
    if (!session_) return;
    end(*session_);
    session_.reset();
}

void Browser::end(Session& session) {
    if (!session.driver || session.driver->isRunning()) {
        // A page that outlives the session shall be as it was.
        if (!farewell_.script.isEmpty() && client_.isOpen() && client_.unansweredInARow() == 0)
            attempt(client_, farewell_);
        // What fails here is made up for below.
        if (const auto ended = client_.quit(); !ended) {
            log::info(kLog, QString::fromStdString(ended.failure().text));
        }
    }
    client_.connectTo(nullptr);
    if (session.driver) session.driver->onExited = nullptr;
    endProcesses(session.record);
    session.driver.reset();
    session.records.remove(session.record.owner);
}

bool Browser::windowExists() {
    if (!session_) return false;
    if (session_->driver && !session_->driver->isRunning()) return false;
    const Result<QJsonValue> handles = client_.send(GetWindowHandles{});
    if (handles) {
        if (!handles.value().toArray().contains(session_->windowHandle)) return false;
    } else {
        const Failure& failure = handles.failure();
        log::warning(kLog, QString::fromStdString(failure.text));
        const bool connectionBroken = failure.kind == FailureKind::Transport && !isTimeout(failure);
        if (isSessionGone(failure) || connectionBroken) return false;
    }
    if (handles && client_.unansweredInARow() == 0) {
        session_->silentSinceMs.reset();
        return true;
    }
    // Busy or confused: it may come round.
    if (!session_->silentSinceMs) session_->silentSinceMs = clock_.monotonicMs();
    return clock_.monotonicMs() - *session_->silentSinceMs < kHungMs;
}

Result<int> Browser::closeStrayWindows() {
    if (!session_) return Failure{FailureKind::ConnectionLost, "no browser session is open"};
    const Result<QJsonValue> handles = client_.send(GetWindowHandles{});
    if (!handles) return handles.failure();
    int closed = 0;
    for (const QJsonValue& handle : handles.value().toArray()) {
        if (handle.toString() == session_->windowHandle) continue;
        if (client_.send(SwitchToWindow{handle.toString()}) && client_.send(CloseWindow{})) ++closed;
    }
    if (handles.value().toArray().size() > 1) {
        const Result<QJsonValue> back = client_.send(SwitchToWindow{session_->windowHandle});
        if (!back) return back.failure();
    }
    if (closed > 0) log::info(kLog, QStringLiteral("closed %1 stray windows").arg(closed));
    return closed;
}

QString Browser::pageTitle() const {
    return session_ ? u'[' + session_->profile + u']' : QString();
}

bool Browser::hideWindow(bool hide) {
    if (!session_) return false;
    if (!hide) session_->hideWhenTitled = false;  // the operator wants to see it by now
    for (const std::string& title : {pageTitle().toStdString(), std::string("WhatsApp"), std::string("New Tab")}) {
        if (!setVisible(title, !hide, session_->windowOwner)) continue;
        session_->hideWhenTitled = false;
        return true;
    }
    return false;
}

void Browser::hideWhenTitled() {
    if (session_ && session_->hideWhenTitled) hideWindow(true);
}

Result<QByteArray> Browser::screenshot() {
    const Result<QJsonValue> picture = client_.send(TakeScreenshot{});
    if (!picture) return picture.failure();
    return QByteArray::fromBase64(picture.value().toString().toLatin1());
}

}  // namespace kibo
