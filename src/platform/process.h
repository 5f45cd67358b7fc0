#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/result.h"

namespace kibo::platform {

using ProcessId = std::int64_t;

/// When a process began, in the system's own unit: good for comparing only. Ids are used again soon after
/// their process has ended, the pair of id and start time is not. 0: no such process.
using ProcessStartTime = std::uint64_t;

struct Process {
    ProcessId id = 0;
    ProcessStartTime startTime = 0;

    friend bool operator==(const Process&, const Process&) = default;
};

ProcessId ownProcessId();

/// Makes this process end when `parent`, which started it, does, however that ends; at once when it has ended already.
/// To be called by the main thread, first of all.
void endWithParent(ProcessId parent);

/// 0 when there is no such process, or none that may be looked at. A process that has ended but is not yet
/// collected by its parent counts as ended.
ProcessStartTime processStartTime(ProcessId pid);
bool isRunning(ProcessId pid, ProcessStartTime startTime);

/// Running processes started by `pid`, as far as it is still their parent; empty for an unknown process.
std::vector<Process> children(ProcessId pid);
/// Children, their children, and so on: every process stands after the one that started it.
std::vector<Process> descendants(ProcessId pid);

/// Full path of the running program, empty when it can't be told.
std::string executablePath(ProcessId pid);
/// Memory that is this process's own, in bytes, and its share of what it has in common with others: the proportional
/// set size of proc(5), the private bytes of Windows. 0 when it can't be told.
std::uint64_t memoryBytes(ProcessId pid);
/// The arguments it was started with, in the system's encoding of file names (UTF-8 on Windows), the program's name
/// first. Empty when they can't be told.
std::vector<std::string> commandLine(ProcessId pid);
/// Every running process that was started with this argument, as far as this user may see it.
std::vector<Process> processesWithArgument(const std::string& argument);
/// Every running process whose program file has one of these names, without folder ("chromedriver"). On Windows
/// case doesn't count.
std::vector<Process> processesNamed(const std::vector<std::string>& names);

/// Asks a process to end, and doesn't wait: a signal, or on Windows the closing of its windows. Does nothing when that
/// process is no longer there. Fails with Io when the system refuses.
Result<void> askToEnd(ProcessId pid, ProcessStartTime startTime);

/// Ends a process: asks it first where the system can (a signal), waits up to `graceMs` milliseconds, then ends
/// it for certain. Does nothing when that process is no longer there, so an id in use again is safe. Blocks until
/// it is gone. Fails with Io when the system refuses.
Result<void> terminate(ProcessId pid, ProcessStartTime startTime, int graceMs);

}  // namespace kibo::platform
