#pragma once

#include <QDateTime>
#include <QString>
#include <QTimer>
#include <functional>

#include "base/dialogs.h"
#include "base/settings.h"
#include "browser/clean_up.h"
#include "engine/gateway_state.h"

namespace kibo {

/// What the operator does about browser and driver, apart from opening and stopping: hide the window, choose or make a
/// profile, end stray drivers, learn that driver and browser don't fit.
class BrowserCare {
 public:
    struct Needs {
        GatewayState& state;
        Settings& settings;
        Dialogs& dialogs;
        QString programFolder;
        QString settingsFile;
        std::function<bool(bool hide)> hideWindow;  ///< false: there is no browser window
        std::function<void()> endSession;           ///< the gateway's own
        CleanUpTargets cleanUp = usualCleanUpTargets();
        std::function<QString()> browserVersion = {};  ///< of the installed browser; empty: not known
        QString scriptFolder = {};                     ///< where the script "cekver" is
    };
    /// What it is given must outlive it.
    explicit BrowserCare(Needs needs);

    void HideChrome_Click(bool hide);
    void cb_Profil_Change(const QString& profile);
    /// Asks for a name and makes its folder; a name that can't be one is asked for again.
    void newProfile();
    void mn_cleaner_Click();

    /// Starts the comparison of the two versions; its box comes seconds later, or never.
    void checkVersions();

 private:
    void askForProfile(const QString& proposal);
    /// Empty, or why there can be no such profile.
    QString makeProfile(const QString& name);
    void lookForVersion();
    QString versionFile() const;

    Needs n_;
    QTimer versionTimer_;
    QDateTime oldVersionFile_;  // when the file was written that an earlier start left; invalid: there was none
    int versionLooks_ = 0;
};

}  // namespace kibo
