#include <QCoreApplication>
#include <cstdio>

#include "app/clock.h"
#include "browser/browser.h"

/// A gateway reduced to its browser session, for tests that kill it: opens the profile "1" of the program folder
/// given, says so, and stays.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    kibo::Settings settings;
    settings.Headless = QStringLiteral("Y");
    settings.StartAddress = QStringLiteral("data:text/html,<title>held</title>");
    const kibo::SystemClock clock;
    kibo::Browser browser(QString::fromLocal8Bit(argv[1]), clock);
    const auto opened = browser.open({.settings = settings, .profile = QStringLiteral("1")});
    std::puts(opened ? "open" : opened.failure().text.c_str());
    std::fflush(stdout);
    return opened ? QCoreApplication::exec() : 1;
}
