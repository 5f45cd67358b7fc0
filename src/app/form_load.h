#pragma once

#include <QString>
#include <functional>

#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "session/instance_rows.h"

namespace kibo {

class MainWindow;

/// What the main window's start works on. All of it is used only during the call.
struct FormLoad {
    MainWindow& window;
    GatewayState& state;
    Settings& settings;
    InstanceRows& instanceRows;
    StartDialogs& dialogs;
    QString programFolder;
    QString settingsFile;
    QString commandLine = QStringLiteral("0");            ///< "0" when there is none
    bool mySql = false;                                   ///< the main store is a MySQL one
    std::function<QString()> machineProblem = {};         ///< empty text: the machine is fine
    std::function<void()> installHelper = {};             ///< puts the download helper in place
    std::function<void(const QString&)> startAgent = {};  ///< starts a program by its path

    /// Arranges the window, checks the machine and announces the instance. False when the program must end; the
    /// operator has been told why.
    bool Form_Load();

 private:
    void fillProfileList();
    bool checkMachine();
};

}  // namespace kibo
