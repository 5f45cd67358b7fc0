#include "app/form_load.h"

#include <QDir>

#include "base/log.h"
#include "base/settings_file.h"
#include "main_window/main_window.h"
#include "main_window/setting_indicators.h"

namespace kibo {

bool FormLoad::Form_Load() {
    const bool multi = isYes(settings.Multi);
    state.wait2.visible = isYes(settings.DebugMode);
    if (!isYes(settings.DebugMode)) window.hideDiagnostics();
    window.recordControls();
    fillProfileList();
    if (alreadyRuns && alreadyRuns()) return false;

    if (multi) {
        instanceRows.announce(settings.applicationName);
        if (settings.DisableRead.isEmpty()) settings.DisableRead = QStringLiteral("N");
    } else if (!checkMachine()) {
        return false;
    }

    state.cmd_Pause = {QStringLiteral(";"), QStringLiteral("Pause.."), colour::kLightGreen, state.cmd_Pause.enabled};
    state.wait.visible = false;
    state.txt_DUMMY.text = settings.DummyContact;
    state.cb_DummyContact.text = settings.DummyContact;
    if (!settings.DummyContact.isEmpty()) state.cb_DummyContact.items = QStringList{settings.DummyContact};
    // Without a profile folder there is no profile to choose: an incognito browser forgets its login.
    state.cb_Profil.enabled = !isYes(settings.Incognito);
    if (settings.HideChrome.isEmpty()) {
        settings.HideChrome = QStringLiteral("N");
        WriteIni(QStringLiteral("kibo"), QStringLiteral("HideChrome"), settings.HideChrome, settingsFile);
    }
    state.HideChrome.checked = isYes(settings.HideChrome);

    if (multi) {
        state.HideChrome.checked = false;
        settings.HideChrome = QStringLiteral("N");
        WriteIni(QStringLiteral("kibo"), QStringLiteral("HideChrome"), settings.HideChrome, settingsFile);
    }
    if (installHelper) installHelper();
    // Exactly "N": an unset option starts nothing.
    if (mySql && multi && settings.NoAgent == QStringLiteral("N") && startAgent) {
        startAgent(programFolder + QDir::separator() + QStringLiteral("Tarro.exe"));
    }
    refreshSettingIndicators(settings, state);
    return true;
}

void FormLoad::fillProfileList() {
    const QDir profiles(programFolder + QStringLiteral("/profil"));
    state.cb_Profil.items = profiles.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::LocaleAware);
    // An instance that was started by another has its profile on the command line.
    const bool given = isYes(settings.Multi) && commandLine != QStringLiteral("0");
    state.cb_Profil.text = given ? commandLine : settings.Profil;
    // The first start has neither a setting nor a folder, and must still be able to open the browser.
    if (state.cb_Profil.text.isEmpty()) state.cb_Profil.text = state.cb_Profil.items.value(0, QStringLiteral("1"));
    // A new profile gets its folder only when the browser first starts with it.
    if (!state.cb_Profil.text.isEmpty() && !state.cb_Profil.items.contains(state.cb_Profil.text)) {
        state.cb_Profil.items.append(state.cb_Profil.text);
    }
    state.cb_Profil.background = isYes(settings.Multi) ? colour::kYellow : colour::kCyan;
}

bool FormLoad::checkMachine() {
    const QString problem = machineProblem ? machineProblem() : QString();
    if (problem.isEmpty()) return true;
    dialogs.showAndWait({QStringLiteral("Application can not start"), problem, MessageBox::Icon::Critical});
    return false;
}

}  // namespace kibo
