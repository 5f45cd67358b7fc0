#pragma once

#include <string>
#include <string_view>

#include "platform/result.h"

namespace kibo::platform {

/// The command that has the system's downloader fetch `address` into `folder` under `fileName`, as one line for
/// `startCommand`. Windows: wget at its fixed place, the only one looked at, and nothing put in quotes. Elsewhere:
/// wget2, else wget, from the search path. `address` and `fileName` must hold neither blanks nor quotes. Fails with
/// NotFound when there is no downloader.
Result<std::string> downloaderCommand(std::string_view folder, std::string_view fileName, std::string_view address);

}  // namespace kibo::platform
