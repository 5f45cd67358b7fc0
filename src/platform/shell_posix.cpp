#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "platform/machine.h"
#include "platform/shell.h"

namespace kibo::platform {
namespace {

namespace fs = std::filesystem;

/// What the process between this one and the started program reports: its id, or why there is none.
struct StartReport {
    pid_t pid = 0;
    int error = 0;
};

/// Runs in the forked process, where only async-signal-safe calls are allowed. Does not return: it becomes the
/// program, or reports why not through `reportTo`, which closes by itself when the program starts.
[[noreturn]] void becomeProgram(const char* program, char* const* arguments, int reportTo) {
    const int null = ::open("/dev/null", O_RDWR);
    for (int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, standard);
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::execv(program, arguments);
    const StartReport report{0, errno};
    const ssize_t written = ::write(reportTo, &report, sizeof report);
    ::_exit(written == sizeof report ? 127 : 126);
}

/// Blanks separate, double quotes hold together.
std::vector<std::string> splitParameters(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    bool started = false;
    for (const char c : line) {
        if (c == '"') {
            quoted = !quoted;
            started = true;
        } else if (c == ' ' && !quoted) {
            if (started) words.push_back(word);
            word.clear();
            started = false;
        } else {
            word += c;
            started = true;
        }
    }
    if (started) words.push_back(word);
    return words;
}

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string findProgram(const std::string& name) {
    if (name.empty()) return {};
    if (name.find('/') != std::string::npos) return isProgram(name) ? name : std::string();
    std::istringstream folders(environment("PATH"));
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path path = fs::path(folder) / name;
        if (!folder.empty() && isProgram(path)) return path.string();
    }
    return {};
}

Result<ProcessId> startProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::string path = findProgram(program);
    if (path.empty()) return Failure{FailureKind::NotFound, "there is no program " + program, {}};

    std::vector<std::string> texts = arguments;
    std::vector<char*> argv{path.data()};
    for (std::string& text : texts) argv.push_back(text.data());
    argv.push_back(nullptr);

    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return Failure{FailureKind::Io, std::strerror(errno), {}};
    // Forked twice: the first process ends at once, so the program belongs to nobody that would have to wait for it.
    const pid_t between = ::fork();
    if (between == 0) {
        ::setsid();
        const StartReport report{::fork(), errno};
        if (report.pid == 0) becomeProgram(path.c_str(), argv.data(), ends[1]);
        const ssize_t written = ::write(ends[1], &report, sizeof report);
        ::_exit(written == sizeof report ? 0 : 1);
    }
    const int forkError = errno;
    ::close(ends[1]);
    StartReport result{0, between < 0 ? forkError : 0};
    // Whichever of the two writes first: an id, and for a program that didn't start also a reason.
    for (StartReport part; ::read(ends[0], &part, sizeof part) == sizeof part;) {
        if (part.pid > 0) result.pid = part.pid;
        if (part.pid <= 0) result.error = part.error;
    }
    ::close(ends[0]);
    if (between > 0) ::waitpid(between, nullptr, 0);
    if (result.error != 0 || result.pid <= 0)
        return Failure{FailureKind::Io, "can't start " + program + ": " + std::strerror(result.error),
                       std::to_string(result.error)};
    return ProcessId{result.pid};
}

Result<ProcessId> startCommand(const std::string& commandLine, ShowMode) {
    std::vector<std::string> words = splitParameters(commandLine);
    if (words.empty()) return Failure{FailureKind::InvalidArgument, "there is nothing to start", {}};
    const std::string program = words.front();
    words.erase(words.begin());
    return startProgram(program, words);
}

Result<ProcessId> startMinimised(const std::string& program, const std::vector<std::string>& arguments) {
    return startProgram(program, arguments);
}

Result<void> runElevated(const std::string& file, const std::string& parameters, ShowMode) {
    std::vector<std::string> arguments = splitParameters(parameters);
    std::string program = file;
    if (const std::string asker = findProgram("pkexec"); !asker.empty()) {
        arguments.insert(arguments.begin(), file);
        program = asker;
    }
    const Result<ProcessId> started = startProgram(program, arguments);
    return started ? Result<void>() : started.failure();
}

Result<void> startScript(const std::string& folder, const std::string& name,
                         const std::vector<std::string>& arguments) {
    const Result<ProcessId> started = startProgram(joinPath(folder, name), arguments);
    return started ? Result<void>() : started.failure();
}

Result<void> openForOperator(const std::string& addressOrFile) {
    if (addressOrFile.empty() || addressOrFile.front() == '-')
        return Failure{FailureKind::InvalidArgument, "there is nothing to open", {}};
    const Result<ProcessId> started = startProgram("xdg-open", {addressOrFile});
    return started ? Result<void>() : started.failure();
}

}  // namespace kibo::platform
