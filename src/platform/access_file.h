#pragma once

#include <string>

#include "platform/result.h"

namespace kibo::platform {

/// Whether programs of this system expect a local store to be an Access file.
bool usesAccessFiles();

/// Name of the installed ODBC driver for Access files that this program can load: a driver for 32-bit programs, which
/// Windows brings along, is none. Fails with NotFound where there is none, with NotSupported where there can be none.
Result<std::string> accessDriver();

/// Makes an empty Access file, as Access 2000 to 2003 have them, through `driver`'s own call. `file` must not exist.
/// Fails with Io and the driver's words.
Result<void> createAccessFile(const std::string& driver, const std::string& file);

}  // namespace kibo::platform
