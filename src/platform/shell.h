#pragma once

#include <string>
#include <vector>

#include "platform/process.h"
#include "platform/result.h"

namespace kibo::platform {

/// How a started program's window appears; the values are those of ShowWindow (SW_HIDE, SW_SHOWNORMAL).
enum class ShowMode { Hidden = 0, Normal = 1 };

/// Full path of a program on the search path; a name with a separator is only checked. Empty when there is none.
std::string findProgram(const std::string& name);

/// Starts `program` (a path, or a name on the search path) and lets it go: it outlives this process, has no
/// terminal, and is never waited for. Fails with NotFound or Io when it could not be started.
Result<ProcessId> startProgram(const std::string& program, const std::vector<std::string>& arguments = {});

/// The same for a program with a window of its own, which comes up minimised where the system knows such a thing. On
/// Windows refuses command files (InvalidArgument): their interpreter would read the arguments as commands.
Result<ProcessId> startMinimised(const std::string& program, const std::vector<std::string>& arguments);

/// Starts `file` with the rights of an administrator, after the system has asked for them; `parameters` is one
/// line, double quotes holding blanks together. Windows: ShellExecuteA with "runas". Elsewhere: pkexec where it
/// is present, else a plain start; the show mode has no meaning there.
Result<void> runElevated(const std::string& file, const std::string& parameters, ShowMode showMode);

/// Opens an address or a file with whatever the operator's desktop opens it with.
/// Fails with InvalidArgument for a text that could be taken for an option or a second command.
Result<void> openForOperator(const std::string& addressOrFile);

}  // namespace kibo::platform
