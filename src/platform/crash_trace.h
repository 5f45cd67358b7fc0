#pragma once

#include <string>

namespace kibo::platform {

/// From now on a crash of this program is written down in `file`, added to what stands there: what ended it, and where
/// each call stood, as module and offset in it (`kibo+0x1234`); no data. The program ends by it, on Windows without its
/// box. A name that is too long for the system leaves none.
void traceCrashes(const std::string& file);

}  // namespace kibo::platform
