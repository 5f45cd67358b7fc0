#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/machine.h"
#include "platform/process.h"
#include "platform/shell.h"

namespace kibo::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::size_t kMostOutput = 4096;
constexpr const char* kUsualBrowsers[] = {"google-chrome", "google-chrome-stable", "chromium", "chrome"};

/// What is read from `descriptor` until its end, until `kMostOutput` bytes or until the time is over.
std::string readFor(int descriptor, std::chrono::milliseconds atMost) {
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    std::string text;
    while (text.size() < kMostOutput) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd input = {descriptor, POLLIN, 0};
        if (left <= 0ms || ::poll(&input, 1, static_cast<int>(left.count())) <= 0) break;
        char block[512];
        const ssize_t count = ::read(descriptor, block, sizeof block);
        if (count <= 0) break;
        text.append(block, static_cast<std::size_t>(count));
    }
    return text;
}

/// Standard output of `program --version`. The program is ended once it has said enough or taken too long.
std::string versionText(const std::string& program) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return {};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string name = program;
    std::string option = "--version";
    char* arguments[] = {name.data(), option.data(), nullptr};
    pid_t pid = 0;
    const bool started = ::posix_spawn(&pid, name.c_str(), &actions, nullptr, arguments, environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);

    std::string text;
    if (started) {
        text = readFor(ends[0], 3s);
        // It may have stopped writing and yet not end, and so may what it has started itself.
        for (const Process& process : descendants(pid)) static_cast<void>(terminate(process.id, process.startTime, 0));
        static_cast<void>(terminate(pid, processStartTime(pid), 200));
        ::waitpid(pid, nullptr, 0);
    }
    ::close(ends[0]);
    return text;
}

/// The first word that is made of numbers and dots, like "116.0.5845.141".
std::string versionIn(std::string_view text) {
    const auto belongs = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '.'; };
    for (std::size_t begin = 0; begin < text.size(); ++begin) {
        std::size_t end = begin;
        while (end < text.size() && belongs(text[end])) ++end;
        const std::string_view word = text.substr(begin, end - begin);
        const bool startsWord = begin == 0 || text[begin - 1] == ' ';
        if (startsWord && word.find('.') != std::string_view::npos && word.front() != '.') return std::string(word);
        begin = end;
    }
    return {};
}

}  // namespace

char pathSeparator() {
    return '/';
}

std::vector<std::string> programArguments(int argc, char** argv) {
    return {argv + std::min(argc, 1), argv + argc};
}

std::string executableFile() {
    return executablePath(ownProcessId());
}

std::string programFolder() {
    const std::string named = environment("KIBO_HOME");
    if (named.empty()) return fs::path(executableFile()).parent_path().string();
    std::error_code error;
    const fs::path folder = fs::absolute(named, error).lexically_normal();
    return folder.has_filename() ? folder.string() : folder.parent_path().string();
}

std::string machineProblem() {
    return {};
}

std::string programFileName(const std::string& name) {
    return name;
}

std::string installedBrowserVersion(const std::string& program) {
    if (!program.empty()) return versionIn(versionText(findProgram(program)));
    for (const char* name : kUsualBrowsers)
        if (const std::string path = findProgram(name); !path.empty()) return versionIn(versionText(path));
    return {};
}

bool canSandboxBrowser() {
    if (::geteuid() == 0) return false;
    // What forbids it differs from system to system (limits, filters of containers), so it is tried, as Chrome does.
    const pid_t pid = ::fork();
    if (pid == 0) ::_exit(::unshare(CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET) == 0 ? 0 : 1);
    int status = 1;
    if (pid > 0) {
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
    return pid > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void removeStaleLockFile() {}

std::uint64_t residentMemoryBytes() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    file >> total >> resident;
    return file ? resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

}  // namespace kibo::platform
