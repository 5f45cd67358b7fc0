#include <windows.h>
// windows.h first: the next two build on it.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>

#include "platform/process.h"
#include "platform/win32_call.h"
#include "platform/wmi_win32.h"

namespace kibo::platform {
namespace {

constexpr DWORD kEndedByUs = 1;  // exit code of a process that is ended from outside
constexpr DWORD kCertainEndMs = 5000;

Handle open(ProcessId pid, DWORD access) {
    return Handle(::OpenProcess(access, FALSE, static_cast<DWORD>(pid)));
}

/// 0 when the process has ended; it keeps its entry as long as anybody holds a handle of it.
ProcessStartTime startTimeOf(HANDLE process) {
    FILETIME created, exited, kernel, user;
    DWORD exitCode = 0;
    if (!::GetProcessTimes(process, &created, &exited, &kernel, &user)) return 0;
    if (!::GetExitCodeProcess(process, &exitCode) || exitCode != STILL_ACTIVE) return 0;
    return (static_cast<ProcessStartTime>(created.dwHighDateTime) << 32) | created.dwLowDateTime;
}

/// The system's own list, of those entries for which `wanted` holds.
template <class Predicate>
std::vector<ProcessId> snapshotOf(Predicate wanted) {
    std::vector<ProcessId> found;
    const Handle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    if (!snapshot.valid()) return found;
    for (BOOL more = ::Process32First(snapshot.get(), &entry); more; more = ::Process32Next(snapshot.get(), &entry))
        if (wanted(entry)) found.push_back(entry.th32ProcessID);
    return found;
}

/// What WMI lists for `where`. Its service may be switched off or broken, and a browser must end then too: the system's
/// own list, of the entries for which `wanted` holds, takes its place.
template <class Predicate>
std::vector<Process> processesWhere(const std::string& where, Predicate wanted) {
    std::vector<ProcessId> ids;
    if (const auto listed = wmi::processes("Select * from Win32_Process Where " + where)) {
        for (const wmi::ListedProcess& process : listed.value()) ids.push_back(process.id);
    } else {
        ids = snapshotOf(wanted);
    }
    std::vector<Process> found;
    for (const ProcessId id : ids)
        if (const ProcessStartTime started = processStartTime(id); started != 0) found.push_back({id, started});
    return found;
}

}  // namespace

ProcessId ownProcessId() {
    return ::GetCurrentProcessId();
}

void endWithParent(ProcessId parent) {
    // Neither is released: the wait lasts as long as this process.
    const HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(parent));
    const auto end = [](void*, BOOLEAN) { ::TerminateProcess(::GetCurrentProcess(), 0); };
    HANDLE wait = nullptr;
    if (process == nullptr ||
        !::RegisterWaitForSingleObject(&wait, process, end, nullptr, INFINITE, WT_EXECUTEONLYONCE))
        ::ExitProcess(0);
}

ProcessStartTime processStartTime(ProcessId pid) {
    if (pid <= 0) return 0;
    const Handle process = open(pid, PROCESS_QUERY_LIMITED_INFORMATION);
    return process.valid() ? startTimeOf(process.get()) : 0;
}

std::vector<Process> children(ProcessId pid) {
    // Windows never forgets a parent's id, even after another process got it: a child can't be older than its parent.
    const ProcessStartTime parentStarted = processStartTime(pid);
    if (parentStarted == 0) return {};
    std::vector<Process> found = processesWhere(
        "ParentProcessId=" + std::to_string(pid),
        [pid](const PROCESSENTRY32& entry) { return entry.th32ParentProcessID == static_cast<DWORD>(pid); });
    std::erase_if(found,
                  [&](const Process& process) { return process.id == pid || process.startTime < parentStarted; });
    return found;
}

std::string executablePath(ProcessId pid) {
    const Handle process = open(pid, PROCESS_QUERY_LIMITED_INFORMATION);
    char path[32768];
    DWORD size = sizeof path;
    if (!process.valid() || !::QueryFullProcessImageNameA(process.get(), 0, path, &size)) return {};
    return {path, size};
}

std::uint64_t memoryBytes(ProcessId pid) {
    const Handle process = open(pid, PROCESS_QUERY_LIMITED_INFORMATION);
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    auto* const counters = reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory);
    return process.valid() && ::GetProcessMemoryInfo(process.get(), counters, sizeof memory) ? memory.PrivateUsage : 0;
}

std::vector<std::string> commandLine(ProcessId pid) {
    const auto listed = wmi::processes("Select * from Win32_Process Where ProcessId=" + std::to_string(pid));
    if (!listed || listed.value().empty()) return {};
    return listed.value().front().arguments;
}

std::vector<Process> processesWithArgument(const std::string& argument) {
    std::vector<Process> found;
    const auto listed = wmi::processes("Select * from Win32_Process");
    if (!listed) return found;  // nothing else tells other processes' arguments
    for (const wmi::ListedProcess& process : listed.value()) {
        const auto& arguments = process.arguments;
        if (std::find(arguments.begin(), arguments.end(), argument) == arguments.end()) continue;
        if (const ProcessStartTime started = processStartTime(process.id)) found.push_back({process.id, started});
    }
    return found;
}

std::vector<Process> processesNamed(const std::vector<std::string>& names) {
    if (names.empty()) return {};
    std::string where;
    for (const std::string& name : names) where += (where.empty() ? "Name='" : "' Or Name='") + wmi::escaped(name);
    return processesWhere(where + "'", [&names](const PROCESSENTRY32& entry) {
        return std::any_of(names.begin(), names.end(),
                           [&](const std::string& name) { return ::lstrcmpiA(entry.szExeFile, name.c_str()) == 0; });
    });
}

Result<void> askToEnd(ProcessId pid, ProcessStartTime startTime) {
    if (pid <= 0 || !isRunning(pid, startTime)) return {};
    const auto close = [](HWND window, LPARAM wanted) -> BOOL {
        DWORD owner = 0;
        ::GetWindowThreadProcessId(window, &owner);
        if (owner == static_cast<DWORD>(wanted) && ::IsWindowVisible(window)) ::PostMessageA(window, WM_CLOSE, 0, 0);
        return TRUE;
    };
    if (::EnumWindows(close, static_cast<LPARAM>(pid))) return {};
    return lastFailure("process " + std::to_string(pid) + " can't be asked to end");
}

Result<void> terminate(ProcessId pid, ProcessStartTime startTime, int graceMs) {
    if (pid <= 0 || startTime == 0) return {};
    const Handle process = open(pid, PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE);
    if (!process.valid() || startTimeOf(process.get()) != startTime) {
        if (!isRunning(pid, startTime)) return {};
        return lastFailure("process " + std::to_string(pid) + " can't be ended");
    }
    // Nothing asks a program without windows to end, so the grace is only time to end by itself.
    if (::WaitForSingleObject(process.get(), static_cast<DWORD>(graceMs)) == WAIT_OBJECT_0) return {};
    // The handle keeps the id from going to another process. As with the lists, it must end without WMI too.
    const auto ends = [&] { return ::WaitForSingleObject(process.get(), kCertainEndMs) == WAIT_OBJECT_0; };
    if (wmi::terminate(pid) && ends()) return {};
    if (!::TerminateProcess(process.get(), kEndedByUs) && isRunning(pid, startTime))
        return lastFailure("process " + std::to_string(pid) + " can't be ended");
    if (ends()) return {};
    return Failure{FailureKind::Io, "process " + std::to_string(pid) + " does not end", {}};
}

}  // namespace kibo::platform
