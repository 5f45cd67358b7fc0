#pragma once

#include <QString>

namespace kibo::log {

/// One rotating log file (kibo.log, 5 files of 5 MB) in the program folder, one category a source folder.
/// Lines carry ids, sizes, durations and states: never message texts, passwords or whole phone numbers.

/// Starts writing to `file`. Returns a description of what is wrong, empty when all is well. Before the first
/// start, and after a failed one, lines go to standard error. A full disk later loses lines, never the program.
QString start(const QString& file);

/// Whether debug lines are written (`DebugMode` "Y"); off at first.
void setVerbose(bool on);

/// A warning or an error that is told again within a minute is counted, not repeated.
void debug(const char* category, const QString& line);
void info(const char* category, const QString& line);
void warning(const char* category, const QString& line);
void error(const char* category, const QString& line);

/// The newest lines (at most 200), oldest first, for the main window. `revision` grows with every line.
QStringList newestLines();
quint64 revision();

/// A phone number as it may stand in a log: the last three digits, "…789".
QString maskedNumber(const QString& number);

}  // namespace kibo::log
