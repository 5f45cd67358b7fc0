#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <iostream>
#include <memory>
#include <string_view>

#include "app/gateway_application.h"
#include "app/start_up.h"
#include "app/termination_signal.h"
#include "base/settings_file.h"
#include "platform/crash_trace.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "platform/top_level_windows.h"
#include "store/new_store.h"
#include "widgets/qt_clipboard.h"
#include "widgets/qt_dialogs.h"
#include "widgets/translation.h"
#include "widgets/window_look.h"

namespace {

/// Whether windows are shown to somebody; the user's own choice of a window system stands.
bool choosePlatform() {
    const std::string needed = kibo::platform::windowSystem();
    if (!needed.empty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", needed.c_str());
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    return platform != "offscreen" && platform != "minimal";
}

/// For servers without a screen and installers.
constexpr std::string_view kUpgradeStores = "--upgrade-stores";

/// Completes the stores that the program folder's settings name, and says so. Exit status.
int upgradeStores() {
    const QString folder = QString::fromStdString(kibo::platform::programFolder());
    kibo::UnattendedDialogs dialogs;
    const kibo::StartUp startUp(dialogs, folder);
    if (!QFileInfo::exists(startUp.settingsFile())) {
        std::cerr << "kibo: there is no " << startUp.settingsFile().toStdString() << ", so no store is known\n";
        return 1;
    }
    const kibo::Settings settings = kibo::loadSettings(startUp.settingsFile());
    const kibo::Result<void> done = kibo::isYes(settings.UseMDB)
                                        ? kibo::completeLocalStore(QDir(folder).filePath(QStringLiteral("kb.mdb")))
                                        : kibo::makeServerTables(settings);
    if (done) {
        std::cout << "kibo: the tables, columns and views of the store are complete\n";
        return 0;
    }
    std::cerr << "kibo: the store can't be completed: " << done.failure().text << '\n';
    return 1;
}

void startAgain(const QStringList& arguments) {
    std::vector<std::string> same;
    for (const QString& argument : arguments) same.push_back(argument.toStdString());
    const auto started = kibo::platform::startProgram(kibo::platform::executableFile(), same);
    if (!started) std::cerr << "kibo: " << started.failure().text << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    kibo::platform::traceCrashes(kibo::platform::joinPath(kibo::platform::programFolder(), kibo::StartUp::kCrashFile));
    const bool attended = choosePlatform();
    if (argc > 2 && std::string_view(argv[1]) == kibo::QtClipboard::kHoldArgument) {
        const QGuiApplication qt(argc, argv);
        return kibo::QtClipboard::hold(QString::fromLatin1(argv[2]));
    }
    QApplication qt(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    if (argc > 1 && std::string_view(argv[1]) == kUpgradeStores) return upgradeStores();
    kibo::applyLook(qt);
    const QDir folder(QString::fromStdString(kibo::platform::programFolder()));
    kibo::speak(
        kibo::ReadIni(QStringLiteral("kibo"), QStringLiteral("Language"), folder.filePath(QStringLiteral("kibo.ini"))));
    kibo::watchTerminationSignals();

    std::unique_ptr<kibo::ProgramDialogs> dialogs;
    if (attended) {
        dialogs = std::make_unique<kibo::QtDialogs>();
    } else {
        dialogs = std::make_unique<kibo::UnattendedDialogs>();
    }
    bool again = false;
    const int status = [&] {
        kibo::GatewayApplication application(*dialogs, QString::fromStdString(kibo::platform::programFolder()),
                                             QCoreApplication::arguments().mid(1));
        if (!application.start()) return application.ending() ? 0 : 1;
        const int ended = QApplication::exec();
        again = application.restartWanted();
        return ended;
    }();
    // By now the profile is free for the next start.
    if (again) startAgain(QCoreApplication::arguments().mid(1));
    return status;
}
