#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <thread>

#include "platform/process.h"

namespace kibo::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// What /proc/<pid>/stat says; see proc(5) for the fields.
struct Stat {
    char state = 0;
    ProcessId parent = 0;
    ProcessStartTime startTime = 0;
};

std::optional<Stat> statOf(ProcessId pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    // A process that ends in this very moment fails the read, which a stream notes and a bare buffer throws.
    std::string text;
    std::getline(file, text, '\0');
    // The second field, the program's name in parentheses, may itself hold blanks and parentheses.
    const std::size_t nameEnd = text.rfind(')');
    if (nameEnd == std::string::npos) return std::nullopt;
    std::istringstream fields(text.substr(nameEnd + 1));
    Stat stat;
    fields >> stat.state >> stat.parent;
    std::string skipped;
    for (int field = 5; field < 22; ++field) fields >> skipped;
    fields >> stat.startTime;
    const bool ended = stat.state == 'Z' || stat.state == 'X';
    return fields && !ended ? std::optional(stat) : std::nullopt;
}

/// Every running process for which `wanted(pid, stat)` holds, in the order of /proc.
template <class Predicate>
std::vector<Process> processesWhere(Predicate wanted) {
    std::vector<Process> found;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        ProcessId pid = 0;
        const auto [stop, failed] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (failed != std::errc() || stop != name.data() + name.size()) continue;
        if (const std::optional<Stat> stat = statOf(pid); stat && wanted(pid, *stat))
            found.push_back({pid, stat->startTime});
    }
    return found;
}

bool waitUntilEnded(ProcessId pid, ProcessStartTime startTime, std::chrono::milliseconds atMost) {
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    while (isRunning(pid, startTime)) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

}  // namespace

ProcessId ownProcessId() {
    return ::getpid();
}

void endWithParent(ProcessId parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != static_cast<pid_t>(parent)) ::_exit(0);
}

ProcessStartTime processStartTime(ProcessId pid) {
    const std::optional<Stat> stat = statOf(pid);
    return stat ? stat->startTime : 0;
}

std::vector<Process> children(ProcessId pid) {
    if (pid <= 0) return {};  // the kernel's own threads have parent 0
    return processesWhere([pid](ProcessId, const Stat& stat) { return stat.parent == pid; });
}

std::string executablePath(ProcessId pid) {
    std::error_code error;
    std::string path = fs::read_symlink("/proc/" + std::to_string(pid) + "/exe", error).string();
    // Added by the kernel once the file has been replaced, as an update does under a running program.
    constexpr std::string_view kDeleted = " (deleted)";
    if (path.ends_with(kDeleted)) path.resize(path.size() - kDeleted.size());
    return path;
}

std::uint64_t memoryBytes(ProcessId pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        std::string name;
        std::uint64_t kilobytes = 0;
        if (fields >> name >> kilobytes && name == "Pss:") return kilobytes * 1024;
    }
    return 0;
}

std::vector<std::string> commandLine(ProcessId pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/cmdline", std::ios::binary);
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
    return arguments;
}

std::vector<Process> processesWithArgument(const std::string& argument) {
    return processesWhere([&argument](ProcessId pid, const Stat&) {
        const std::vector<std::string> arguments = commandLine(pid);
        return std::find(arguments.begin(), arguments.end(), argument) != arguments.end();
    });
}

std::vector<Process> processesNamed(const std::vector<std::string>& names) {
    return processesWhere([&names](ProcessId pid, const Stat&) {
        const std::string name = fs::path(executablePath(pid)).filename().string();
        return !name.empty() && std::find(names.begin(), names.end(), name) != names.end();
    });
}

Result<void> askToEnd(ProcessId pid, ProcessStartTime startTime) {
    // A process id of 0 or below would mean a whole group of processes to kill(2).
    if (pid <= 0 || !isRunning(pid, startTime)) return {};
    if (::kill(static_cast<pid_t>(pid), SIGTERM) == 0 || errno == ESRCH) return {};
    return Failure{FailureKind::Io, "process " + std::to_string(pid) + " can't be asked to end", {}};
}

Result<void> terminate(ProcessId pid, ProcessStartTime startTime, int graceMs) {
    const auto endsBy = [&](int signal, std::chrono::milliseconds atMost) {
        if (::kill(static_cast<pid_t>(pid), signal) != 0 && errno != ESRCH) return false;
        return waitUntilEnded(pid, startTime, atMost);
    };
    // A process id of 0 or below would mean a whole group of processes to kill(2).
    if (pid <= 0 || !isRunning(pid, startTime)) return {};
    if (endsBy(SIGTERM, std::chrono::milliseconds(graceMs))) return {};
    if (!isRunning(pid, startTime) || endsBy(SIGKILL, 5s)) return {};
    return Failure{FailureKind::Io, "process " + std::to_string(pid) + " can't be ended", {}};
}

}  // namespace kibo::platform
