#pragma once

#include <string>
#include <vector>

#include "platform/process.h"
#include "platform/result.h"

/// Windows Management Instrumentation, as far as Kibo asks it: its class Win32_Process.
///
/// Every call runs on a thread of its own and returns after five seconds at most. COM calls made by the window's thread
/// would run its message loop, and with it our timers' ticks, in the middle of whatever asks.
namespace kibo::platform::wmi {

struct ListedProcess {
    ProcessId id = 0;
    std::vector<std::string> arguments;  ///< the program's name first; empty where this user may not see them
};

/// What a query in WQL on Win32_Process finds. Fails with Transport when WMI can't be reached or doesn't answer, with
/// Remote when it refuses the query.
Result<std::vector<ListedProcess>> processes(const std::string& query);

/// Win32_Process' method Terminate. Does not wait for the process's end. Fails as `processes` does.
Result<void> terminate(ProcessId pid);

/// A text between the single quotes of a query.
std::string escaped(const std::string& text);

}  // namespace kibo::platform::wmi
