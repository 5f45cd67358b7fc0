#pragma once

#include <QString>

namespace kibo {

/// One key of the settings file; `file` is its full path. Values are written in UTF-8 on Debian and in the ANSI code
/// page on Windows, and read in whichever of the two they stand.

/// The value, cut to 49 bytes: what fits the 50 of the private-profile call with the zero that ends it. Empty when
/// file, section or key is missing.
QString ReadIni(const QString& section, const QString& key, const QString& file);

/// For the few keys that hold addresses and paths of any length: as ReadIni, but up to 1023 bytes.
QString readLongIni(const QString& section, const QString& key, const QString& file);

/// Whether the value is longer than ReadIni, or readLongIni, gives it.
bool isCutByReadIni(const QString& section, const QString& key, const QString& file);
bool isCutByReadLongIni(const QString& section, const QString& key, const QString& file);

/// Sets one key, adding section and file when missing. Always true: nobody who writes a setting can do anything
/// about a file that can't be written. It is logged.
bool WriteIni(const QString& section, const QString& key, const QString& value, const QString& file);

}  // namespace kibo
