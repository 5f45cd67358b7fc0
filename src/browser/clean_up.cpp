#include "browser/clean_up.h"

#include <QDir>

#include "base/log.h"
#include "platform/machine.h"
#include "platform/process.h"

namespace kibo {
namespace {

constexpr const char* kDrivers[] = {"chromedriver", "iedriver", "operadriver", "phantomjs", "edgedriver"};
/// A browser that may end by itself saves its profile.
constexpr int kBrowserGraceMs = 3'000;

bool end(const platform::Process& process, int graceMs) {
    const Result<void> ended = platform::terminate(process.id, process.startTime, graceMs);
    if (!ended) log::warning("browser", QString::fromStdString(ended.failure().text));
    return ended.ok();
}

}  // namespace

CleanUpTargets usualCleanUpTargets() {
    CleanUpTargets targets;
    for (const char* driver : kDrivers) targets.drivers.push_back(platform::programFileName(driver));
    const QString folder = QDir(QDir::tempPath()).filePath(QStringLiteral("Selenium"));
    targets.folder = platform::pathFromUtf8(folder.toStdString());  // it holds the user's name
    return targets;
}

int cleanUp(const CleanUpTargets& targets) {
    int count = 0;
    for (const platform::Process& driver : platform::processesNamed(targets.drivers)) {
        for (const platform::Process& browser : platform::children(driver.id)) end(browser, kBrowserGraceMs);
        if (end(driver, 0)) ++count;
    }
    std::error_code error;
    // Links in it, or in its place, are removed and not followed.
    std::filesystem::remove_all(targets.folder, error);
    if (error)
        log::warning("browser", QStringLiteral("the temporary folder can't be removed: ") +
                                    QString::fromStdString(error.message()));
    log::info("browser", QStringLiteral("clean-up: %1 drivers ended").arg(count));
    return count;
}

}  // namespace kibo
