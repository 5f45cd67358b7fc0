#include "platform/updater.h"

namespace kibo::platform {

Result<void> startUpdater(const std::string&) {
    return Failure{FailureKind::NotSupported,
                   "Here Kibo is updated the way it was installed:\n\n"
                   "- from a package: sudo apt update && sudo apt install --only-upgrade kibo\n"
                   "- from its source: fetch the new source, then run make in its folder\n\n"
                   "End Kibo before, start it again afterwards. Settings, stores and logins stay."};
}

}  // namespace kibo::platform
