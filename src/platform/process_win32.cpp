#include <windows.h>
// windows.h first: the next two build on it.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>

#include "platform/process.h"
#include "platform/win32_call.h"

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

template <class Predicate>
std::vector<Process> processesWhere(Predicate wanted) {
    std::vector<Process> found;
    const Handle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    if (!snapshot.valid()) return found;
    for (BOOL more = ::Process32First(snapshot.get(), &entry); more; more = ::Process32Next(snapshot.get(), &entry)) {
        const Process process{entry.th32ProcessID, processStartTime(entry.th32ProcessID)};
        if (process.startTime != 0 && wanted(process, entry)) found.push_back(process);
    }
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
    return processesWhere([&](const Process& process, const PROCESSENTRY32& entry) {
        return entry.th32ParentProcessID == static_cast<DWORD>(pid) && process.id != pid &&
               process.startTime >= parentStarted;
    });
}

std::string executablePath(ProcessId pid) {
    const Handle process = open(pid, PROCESS_QUERY_LIMITED_INFORMATION);
    char path[32768];
    DWORD size = sizeof path;
    if (!process.valid() || !::QueryFullProcessImageNameA(process.get(), 0, path, &size)) return {};
    return {path, size};
}

std::vector<std::string> commandLine(ProcessId) {
    return {};
}

std::vector<Process> processesOf(const std::string& executable) {
    return processesWhere([&](const Process& process, const PROCESSENTRY32&) {
        return ::lstrcmpiA(executablePath(process.id).c_str(), executable.c_str()) == 0;
    });
}

std::vector<Process> processesNamed(const std::vector<std::string>& names) {
    return processesWhere([&names](const Process&, const PROCESSENTRY32& entry) {
        return std::any_of(names.begin(), names.end(),
                           [&](const std::string& name) { return ::lstrcmpiA(entry.szExeFile, name.c_str()) == 0; });
    });
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
    if (!::TerminateProcess(process.get(), kEndedByUs) && isRunning(pid, startTime))
        return lastFailure("process " + std::to_string(pid) + " can't be ended");
    if (::WaitForSingleObject(process.get(), kCertainEndMs) == WAIT_OBJECT_0) return {};
    return Failure{FailureKind::Io, "process " + std::to_string(pid) + " does not end", {}};
}

}  // namespace kibo::platform
