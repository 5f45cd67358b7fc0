#include "platform/machine.h"
#include "platform/shell.h"
#include "platform/updater.h"

namespace kibo::platform {

Result<void> startUpdater(const std::string& programFolder) {
    const std::string updater = joinPath(programFolder, "updater.exe");
    if (findProgram(updater).empty())
        return Failure{FailureKind::NotFound,
                       "There is no updater.exe in " + programFolder +
                           ". End Kibo and unpack the new version over this one; settings, stores and logins stay."};
    // The first quotes are the title that "start" would otherwise take from a path in quotes, which one with blanks or
    // an ampersand needs.
    const Result<ProcessId> started = startCommand("cmd.exe /c start \"\" \"" + updater + "\"", ShowMode::Minimised);
    return started ? Result<void>() : started.failure();
}

}  // namespace kibo::platform
