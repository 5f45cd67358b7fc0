#include <QApplication>
#include <memory>
#include <string_view>

#include "app/gateway_application.h"
#include "app/termination_signal.h"
#include "platform/machine.h"
#include "platform/top_level_windows.h"
#include "widgets/qt_clipboard.h"
#include "widgets/qt_dialogs.h"
#include "widgets/window_look.h"

namespace {

/// Where there is nothing to show windows on, the program runs all the same, as on a server.
bool choosePlatform() {
    const bool chosen = qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    if (!chosen && !qEnvironmentVariableIsSet("WAYLAND_DISPLAY") && !kibo::platform::canHideWindows()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    return platform != "offscreen" && platform != "minimal";
}

}  // namespace

int main(int argc, char** argv) {
    const bool attended = choosePlatform();
    if (argc > 2 && std::string_view(argv[1]) == kibo::QtClipboard::kHoldArgument) {
        const QGuiApplication qt(argc, argv);
        return kibo::QtClipboard::hold(QString::fromLatin1(argv[2]));
    }
    QApplication qt(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    kibo::applyLook(qt);
    kibo::watchTerminationSignals();

    std::unique_ptr<kibo::ProgramDialogs> dialogs;
    if (attended) {
        dialogs = std::make_unique<kibo::QtDialogs>();
    } else {
        dialogs = std::make_unique<kibo::UnattendedDialogs>();
    }
    kibo::GatewayApplication application(*dialogs, QString::fromStdString(kibo::platform::programFolder()),
                                         QCoreApplication::arguments().mid(1));
    if (!application.start()) return application.ending() ? 0 : 1;
    return QApplication::exec();
}
