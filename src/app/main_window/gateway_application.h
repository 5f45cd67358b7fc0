#pragma once

#include <QString>
#include <QStringList>
#include <QTimer>
#include <memory>

#include "app/clock.h"
#include "app/database.h"
#include "app/dialogs.h"
#include "app/error_policy.h"
#include "app/settings.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "engine/gateway_state.h"
#include "main_window/instance_rows.h"
#include "main_window/main_window.h"
#include "main_window/start_up.h"
#include "main_window/timer_runner.h"
#include "main_window/window_picture.h"

namespace kibo {

struct GatewayEngine;

/// Opens and closes the browser for the gateway.
class BrowserSide {
 public:
    BrowserSide() = default;
    BrowserSide(const BrowserSide&) = delete;
    BrowserSide& operator=(const BrowserSide&) = delete;
    virtual ~BrowserSide() = default;

    virtual ChatPage& page() = 0;
    /// Starts the browser with `profile` and calls `armStepMachine` once it is up.
    virtual Result<void> open(const QString& profile, bool hideWindow, const std::function<void()>& armStepMachine) = 0;
    virtual void quit() = 0;
    /// False when there is no such window.
    virtual bool hideWindow(bool hide) = 0;
};

/// The program put together: it owns settings, stores, state, engine and main window, and wires them.
class GatewayApplication {
 public:
    /// What the browser side is made from; all of it lives as long as the application.
    struct BrowserParts {
        const Settings& settings;
        const ElementTable& elements;
        const ErrorPolicy& policy;
        Clock& clock;
        QString programFolder;
    };
    using MakeBrowserSide = std::function<std::unique_ptr<BrowserSide>(const BrowserParts&)>;

    /// `dialogs` must outlive the application. `arguments`: the command line without the program's name. Without
    /// `makeBrowserSide` the program runs with its window and stores alone.
    GatewayApplication(Dialogs& dialogs, QString programFolder, QStringList arguments,
                       MakeBrowserSide makeBrowserSide = {});
    ~GatewayApplication();
    GatewayApplication(const GatewayApplication&) = delete;
    GatewayApplication& operator=(const GatewayApplication&) = delete;

    /// The start-up routine, up to the shown window. False when the program must end; the operator knows why.
    bool start();
    /// `cmd_STOP`: ends the browser session, then the program.
    void cmd_STOP_Click();

    GatewayState& state() { return state_; }
    const Settings& settings() const { return settings_; }
    MainWindow* window() { return window_.get(); }

 private:
    void startLog() const;
    void buildEngine();
    bool showWindow();
    MainWindowActions actions();
    std::function<void()> guarded(std::function<void()> step);
    void addTimers();

    void cmd_OpenWA_Click();
    void timer_start_Timer();
    void Timer1_Timer();
    void HideChrome_Click(bool hide);
    void cb_Profil_Change(const QString& profile);
    void mncloseall_Click();
    void refreshOutbox();
    void applyHideMe();
    void activate();
    void unload();
    void endProgram();
    void heartbeat();

    Dialogs& dialogs_;
    const QString programFolder_;
    const QString commandLine_;
    MakeBrowserSide makeBrowserSide_;

    SystemClock clock_;
    ErrorPolicy policy_;
    Settings settings_;
    GatewayState state_;
    Database database_;
    Database elementStore_;
    InstanceRows instanceRows_;
    StartUp startUp_;
    ElementTable elements_;
    std::unique_ptr<BrowserSide> browser_;
    std::unique_ptr<GatewayEngine> engine_;
    std::unique_ptr<ErrorEdge> edge_;
    std::unique_ptr<TimerRunner> timers_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<WindowPicture> picture_;
    QTimer heartbeat_;
    bool opening_ = false;
};

}  // namespace kibo
