#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace kibo::platform {

/// One key of a private profile ("INI") file at a time. Nothing is kept between two calls: the file may be
/// edited by hand, or by another instance, at any moment.
///
/// Windows' own GetPrivateProfileStringA and WritePrivateProfileStringA there; the same rules here elsewhere:
/// names of sections and keys are case-blind; blanks around names and values and one pair of quotes (" or ')
/// around a value are dropped; a line beginning with ";" is a comment; of two sections or keys with the same
/// name the first wins. A write keeps every other line, their order and the file's line ends.
///
/// Beyond what Windows does, the posix side replaces the file in one step (a crash leaves the old or the new
/// file, never half of one), gives it mode 0600 because it holds a password, and follows a symbolic link. It also
/// leaves blank lines and line feeds as they are, where Windows' call may drop the former and turns the latter into
/// pairs of carriage return and line feed. UTF-16 files are read by Windows only, and refused elsewhere.
///
/// Names are UTF-8 on posix and in the ANSI code page on Windows, and so are values that are written. `file` is a full
/// path: Windows looks for any other in its own folder.

/// At most `maxLength` bytes of the value as they stand in the file, never half of a character; given in UTF-8. Bytes
/// that are no UTF-8 are read in the ANSI code page, 1252 on posix: an old program has written them. Empty when the
/// file, section or key is missing, and when the file can't be read.
std::string readPrivateProfileString(std::string_view section, std::string_view key, const std::string& file,
                                     std::size_t maxLength);

/// Sets one key, adding file and section when missing.
/// Fails with InvalidArgument for a text that does not fit on a line, with Io when the file can't be written.
Result<void> writePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                                       const std::string& file);

/// Whether the file can be read at all, which a read alone doesn't tell. A missing file is fine.
Result<void> checkPrivateProfile(const std::string& file);

}  // namespace kibo::platform
