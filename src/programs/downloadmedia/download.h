#pragma once

#include "downloadmedia/options.h"
#include "downloadmedia/outcome.h"

namespace kibo::downloadmedia {

/// Fetches a file; blocks until it stands complete at its target or one of the limits is reached. After a failure there
/// is no new target: a file that stood there before is left as it was.
Outcome download(const Options& options);

}  // namespace kibo::downloadmedia
