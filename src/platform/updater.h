#pragma once

#include <string>

#include "platform/result.h"

namespace kibo::platform {

/// Starts the program that brings this one up to date, and doesn't wait for it. Windows: updater.exe of the program
/// folder, NotFound where there is none. Elsewhere programs don't replace themselves: NotSupported, with what the
/// operator is to do instead.
Result<void> startUpdater(const std::string& programFolder);

}  // namespace kibo::platform
