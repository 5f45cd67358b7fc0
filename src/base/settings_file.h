#pragma once

#include <QString>

namespace kibo {

/// One key of the settings file; `file` is its full path. The text is UTF-8 on Debian, ANSI on Windows.

/// The value, cut to 49 bytes: what fits the 50 of the private-profile call with the zero that ends it. Empty when
/// file, section or key is missing.
QString ReadIni(const QString& section, const QString& key, const QString& file);

/// For the few keys that hold addresses and paths of any length: as ReadIni, but up to 1023 bytes.
QString readLongIni(const QString& section, const QString& key, const QString& file);

/// Sets one key, adding section and file when missing. Always true: nobody who writes a setting can do anything
/// about a file that can't be written. It is logged.
bool WriteIni(const QString& section, const QString& key, const QString& value, const QString& file);

}  // namespace kibo
