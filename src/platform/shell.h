#pragma once

#include <string>
#include <vector>

#include "platform/process.h"
#include "platform/result.h"

namespace kibo::platform {

/// How a started program's window appears; the values are those of ShowWindow (SW_HIDE, SW_SHOWNORMAL,
/// SW_SHOWMINIMIZED).
enum class ShowMode { Hidden = 0, Normal = 1, Minimised = 2 };

/// Full path of a program on the search path; a name with a separator is only checked. Empty when there is none.
std::string findProgram(const std::string& name);

/// Starts `program` (a path, or a name on the search path) and lets it go: it outlives this process, has no
/// terminal, and is never waited for. Fails with NotFound or Io when it could not be started.
Result<ProcessId> startProgram(const std::string& program, const std::vector<std::string>& arguments = {});

/// As `startProgram`, from one line: the program, then its arguments, double quotes holding blanks together. Windows
/// gets the line as it stands. The show mode has no meaning elsewhere.
Result<ProcessId> startCommand(const std::string& commandLine, ShowMode showMode);

/// As `startProgram`, for a program with a window of its own, which comes up minimised where the system knows such a
/// thing. On Windows refuses command files (InvalidArgument): their interpreter would read the arguments as commands.
Result<ProcessId> startMinimised(const std::string& program, const std::vector<std::string>& arguments);

/// Starts `file` with the rights of an administrator, after the system has asked for them; `parameters` is one
/// line, double quotes holding blanks together. Windows: ShellExecuteA with "runas". Elsewhere: pkexec where it
/// is present, else a plain start; the show mode has no meaning there.
Result<void> runElevated(const std::string& file, const std::string& parameters, ShowMode showMode);

/// Starts the script `name` that stands in `folder`. Windows: NAME.bat through runElevated, hidden, since a program
/// folder is an administrator's; arguments without double quotes. Elsewhere: NAME, with this process's rights. Does
/// not wait for its end. Fails with NotFound when there is no such script.
Result<void> startScript(const std::string& folder, const std::string& name, const std::vector<std::string>& arguments);

/// Opens an address or a file with whatever the operator's desktop opens it with.
/// Fails with InvalidArgument for a text that could be taken for an option or a second command.
Result<void> openForOperator(const std::string& addressOrFile);

}  // namespace kibo::platform
