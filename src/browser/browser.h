#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/driver_process.h"
#include "browser/session_record.h"
#include "browser/webdriver/client.h"
#include "platform/result.h"

namespace kibo {

/// What the main window gives to a start of the browser.
struct LaunchOptions {
    const Settings& settings;
    QString profile;
    bool hideWindow = false;
    bool sandbox = false;                       ///< leave Chrome's sandbox on: pages of others are opened
    std::function<void()> readProfile = {};     ///< BACA_PROFIL: may change `settings`
    std::function<void()> armStepMachine = {};  ///< the browser is up
};

/// The one browser session of a gateway: the driver program, the browser, and their certain end. Lives as long as the
/// main window; between `open` and `quit` there is a session, and at most one.
class Browser {
 public:
    /// `clock` must outlive the browser.
    Browser(QString programFolder, const Clock& clock);
    /// Ends the session.
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    /// Starts the browser on the start address. First it ends what an earlier gateway left of this profile, and this
    /// one's own session if there is one. Blocks until the browser is up, not until the page is.
    /// The failure's text tells the operator what to mend; the step machine isn't armed then.
    Result<void> open(const LaunchOptions& options);
    /// From the next `open` on `script` runs in each document before the page's own code, where the driver can do that,
    /// and `farewell` in the last one before the session ends.
    void accompany(const QString& script, const webdriver::ExecuteScript& farewell);

    /// A session was opened and not quit; it may be lost since.
    bool isOpen() const { return session_.has_value(); }

    /// How long ago the session was opened; 0 without one.
    qint64 ageMs() const;
    /// What the browser and its processes use of this computer's memory; 0 without a session, and where it can't be
    /// told.
    quint64 memoryBytes() const;

    /// Ends the session, its browser and its driver, within seconds even if they hang.
    void quit();

    /// The session's commands; the same object through every `open` and `quit`. Without a session they fail with
    /// ConnectionLost.
    webdriver::Client& client() { return client_; }

    /// Whether the gateway's browser window is there. Also false when the driver is gone, and when a look a minute ago
    /// found the page answering nothing and it still doesn't: the browser must be started anew then.
    bool windowExists();

    /// Closes every window and tab but the gateway's own (pages open them) and returns their number.
    Result<int> closeStrayWindows();

    /// Hides or shows the browser's window, never one of a browser that is not this session's. False when it is not to
    /// be found: it is known by its page's title, which a new page doesn't have at once.
    bool hideWindow(bool hide);
    /// Hides the window if `open` was to do so and could not yet. To be called now and then.
    void hideWhenTitled();

    /// The title by which the page's window is known among those of several instances; empty without a session.
    QString pageTitle() const;

    /// The address that `open` went to; empty without a session.
    QString startPage() const { return session_ ? session_->startPage : QString(); }

    /// Picture of the page as PNG.
    Result<QByteArray> screenshot();

 private:
    struct Session {
        std::unique_ptr<DriverProcess> driver;  ///< none: the driver ran already
        QString profile;
        QString startPage;
        qint64 openedAtMs = 0;
        SessionRecords records;
        SessionRecord record;
        platform::ProcessId windowOwner = 0;  ///< the browser's process; 0 when it runs on another computer
        QString windowHandle;                 ///< of the gateway's own window
        std::optional<qint64> silentSinceMs;
        bool hideWhenTitled = false;
    };

    Result<void> start(Session& session, const LaunchOptions& options, const QString& profileFolder);
    Result<QByteArray> reachDriver(Session& session, const Settings& settings);
    void end(Session& session);

    QString programFolder_;
    const Clock& clock_;
    webdriver::Client client_;
    QString script_;
    webdriver::ExecuteScript farewell_;
    std::optional<Session> session_;
};

}  // namespace kibo
