#pragma once

#include <QMainWindow>
#include <QTimer>
#include <functional>
#include <memory>

#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "engine/hindrances.h"
#include "widgets/banner.h"
#include "widgets/control_scaler.h"

class QAction;
class QLabel;

namespace kibo {

class GridActions;
struct WindowControls;

/// What the window's controls and menu entries do. The controls of an empty function are greyed out.
struct MainWindowActions {
    std::function<void()> openWhatsApp;
    std::function<void()> stop;
    std::function<void()> pause;
    std::function<void()> refreshOutbox;
    std::function<void()> refreshInbox;
    /// Of the messages with these ids.
    std::function<void(const std::vector<qint64>& ids)> deleteWaiting;
    std::function<void(const std::vector<qint64>& ids)> queueAgain;
    std::function<void(qint64 id)> whyWaiting;
    /// Of a line of the inbox: opens the reply to it, or shows it in an open one that holds no text yet.
    std::function<void(const QString& number, const QString& received)> reply;
    std::function<void(const QString& number, const QString& received)> refillReply;
    std::function<void()> clearOutbox;
    std::function<void()> clearInbox;
    std::function<void()> emptyInboxList;
    std::function<void()> emptyUnsentList;
    std::function<void()> stopWork;   ///< breaks off what takes long and goes on in portions
    std::function<void()> listChats;  ///< the page's chats into the inbox grid
    std::function<void(bool hide)> hideChrome;
    std::function<void(const QString& profile)> profileChanged;
    std::function<void()> newProfile;  ///< the entry below the profiles
    std::function<void()> runCleaner;
    std::function<void()> startAnother;
    std::function<void()> checkForUpdate;
    std::function<void()> closeAll;
    std::function<void()> exitProgram;
    std::function<void()> openProgramFolder;
    std::function<void()> openLogFile;
    std::function<void(const QString& name)> openScreen;  ///< a window beside this one
    std::function<void()> openHelp;                       ///< the guide's chapter about this window
    std::function<void()> activated;                      ///< the window has come to the front
    std::function<void()> unloaded;                       ///< the window is being closed; called once
};

/// The main window. It shows the gateway's state, ten times a second and after every click, and sends clicks
/// back; it decides nothing about sending. `state` and the settings must outlive it.
class MainWindow : public QMainWindow {
    Q_OBJECT

 public:
    MainWindow(GatewayState& state, const Settings& settings, Dialogs& dialogs, MainWindowActions actions);
    ~MainWindow() override;

    /// Hides the labels that only help to find faults.
    void hideDiagnostics();
    /// Records the design places of all controls; from here on they scale with the window.
    void recordControls();

    /// Brings the controls in line with the state. Writes only what differs, so it is cheap and changes neither
    /// selection nor scroll position nor focus.
    void showState();

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

 private:
    void buildMenus();
    void mn_autorespon_Click();
    void connectControls();
    void click(const std::function<void()>& action);
    void showTitle();
    void showStore();
    void showHead();
    void showHindrances();
    Banner::Line bannerLine(const Hindrance& hindrance);
    void showMessageInProgress();
    void showPace();
    bool queueIsUnknown() const;

    GatewayState& state_;
    const Settings& settings_;
    Dialogs& dialogs_;
    MainWindowActions actions_;
    std::unique_ptr<WindowControls> controls_;
    std::unique_ptr<GridActions> gridActions_;
    Banner* banner_;  // owned by the window, as are the controls' common area and the menu
    QWidget* area_;
    ControlScaler scaler_;
    QTimer repaint_;
    QLabel* store_ = nullptr;
    QAction* mnOpenWA_ = nullptr;
    QAction* mnStop_ = nullptr;
    QAction* mnPause_ = nullptr;
    QString shownText_;
    bool unloaded_ = false;
};

}  // namespace kibo
