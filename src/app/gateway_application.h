#pragma once

#include <QString>
#include <QStringList>
#include <QTimer>
#include <memory>

#include "app/guarded_dialogs.h"
#include "app/help.h"
#include "app/screen_list.h"
#include "app/start_up.h"
#include "app/table_offer.h"
#include "app/timer_runner.h"
#include "base/clock.h"
#include "base/dialogs.h"
#include "base/error_policy.h"
#include "base/settings.h"
#include "browser/chat_browser.h"
#include "browser/element_store.h"
#include "browser/element_table.h"
#include "engine/gateway.h"
#include "engine/gateway_state.h"
#include "inbox/inbox.h"
#include "inbox/media_download.h"
#include "main_window/main_window.h"
#include "main_window/window_picture.h"
#include "screens/update_check.h"
#include "session/browser_care.h"
#include "session/browser_renewal.h"
#include "session/close_all.h"
#include "session/instance_lock.h"
#include "session/instance_report.h"
#include "session/instance_rows.h"
#include "session/instance_starter.h"
#include "session/page_capture.h"
#include "session/panel_commands.h"
#include "session/profile_hold.h"
#include "session/profile_settings.h"
#include "session/queue_actions.h"
#include "session/session_keeper.h"
#include "store/database.h"
#include "widgets/qt_clipboard.h"

namespace kibo {

/// The program put together: it owns settings, stores, state, engine and main window, and wires them.
class GatewayApplication {
 public:
    /// `dialogs` must outlive the application. `arguments`: the command line without the program's name.
    GatewayApplication(ProgramDialogs& dialogs, QString programFolder, const QStringList& arguments,
                       const MakeBrowser& makeBrowser = makeChrome);
    ~GatewayApplication();
    GatewayApplication(const GatewayApplication&) = delete;
    GatewayApplication& operator=(const GatewayApplication&) = delete;

    /// The start-up routine, up to the shown window. False when the program must end; the operator knows why.
    bool start();
    /// The program was asked to end, perhaps already while it started.
    bool ending() const { return clock_.waitingStopped(); }
    /// An operator asked for another start right after the end.
    bool restartWanted() const { return restartWanted_; }
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

    Result<void> openBrowser(const LaunchOptions& options);
    Result<void> openJournal();
    QString journalFile() const;
    bool alreadyRuns();
    void buildBrowserParts();
    void buildInstanceParts();
    void openFreshSession();
    void clearEarlierRows(bool tookOver);
    void Timer1_Timer();
    void refreshOutbox();
    void applyHideMe();
    void activate();
    void unload();
    void endProgram();
    void restartProgram();
    void heartbeat();

    ProgramDialogs& dialogs_;
    const QString programFolder_;
    const QString commandLine_;

    SystemClock clock_;
    ErrorPolicy policy_;
    Settings settings_;
    GatewayState state_;
    Database database_;
    Database elementDatabase_;
    ElementStore elementStore_;
    InstanceRows instanceRows_;
    ProfileSettings profileSettings_;
    InstanceLock instanceLock_;
    StartUp startUp_;
    ElementTable elements_;
    std::unique_ptr<ChatBrowser> browser_;
    QtClipboard clipboard_;
    MediaDownload mediaDownload_;
    SendJournal journal_;
    std::unique_ptr<Gateway> gateway_;
    std::unique_ptr<Inbox> inbox_;
    std::unique_ptr<ErrorEdge> edge_;
    std::unique_ptr<GuardedDialogs> guardedDialogs_;
    std::unique_ptr<Help> help_;
    std::unique_ptr<TimerRunner> timers_;
    std::unique_ptr<SessionKeeper> keeper_;
    std::unique_ptr<BrowserCare> care_;
    std::unique_ptr<QueueActions> queueActions_;
    std::unique_ptr<CloseAll> closeAll_;
    std::unique_ptr<TableOffer> tableOffer_;
    std::unique_ptr<PanelCommands> panelCommands_;
    std::unique_ptr<PageCapture> pageCapture_;
    std::unique_ptr<BrowserRenewal> renewal_;
    std::unique_ptr<InstanceReport> report_;
    std::unique_ptr<ProfileHold> hold_;
    std::unique_ptr<InstanceStarter> instanceStarter_;
    std::unique_ptr<UpdateCheck> updateCheck_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<ScreenList> screens_;
    std::unique_ptr<WindowPicture> picture_;
    bool restartWanted_ = false;
    QTimer heartbeat_;
};

}  // namespace kibo
