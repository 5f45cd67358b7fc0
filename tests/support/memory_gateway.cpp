// The program with a browser in memory, to run many of them on one machine: nothing else is replaced. The environment
// variable KIBO_ACCOUNT names the account's file.
#include <QApplication>

#include "app/gateway_application.h"
#include "app/termination_signal.h"
#include "platform/machine.h"
#include "support/memory_browser.h"
#include "widgets/qt_dialogs.h"
#include "widgets/window_look.h"

int main(int argc, char** argv) {
    QApplication qt(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    kibo::applyLook(qt);
    kibo::watchTerminationSignals();
    kibo::UnattendedDialogs dialogs;
    kibo::GatewayApplication application(dialogs, QString::fromStdString(kibo::platform::programFolder()),
                                         QCoreApplication::arguments().mid(1), [](const kibo::BrowserNeeds& needs) {
                                             return std::make_unique<kibo::test::MemoryBrowser>(
                                                 needs.clock, qEnvironmentVariable("KIBO_ACCOUNT"));
                                         });
    if (!application.start()) return application.ending() ? 0 : 1;
    return QApplication::exec();
}
