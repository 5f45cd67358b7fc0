#include <windows.h>
// windows.h first: shellapi.h builds on it.
#include <shellapi.h>

#include <algorithm>
#include <cctype>

#include "platform/machine.h"
#include "platform/one_line.h"
#include "platform/shell.h"
#include "platform/win32_call.h"

namespace kibo::platform {
namespace {

/// One argument as the C run-time of the started program takes it apart again: in quotes, with a backslash before
/// every quote, and the backslashes before a quote doubled.
std::string quoted(const std::string& argument) {
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        if (c == '"') text.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, '\\') + '"';
}

Result<ProcessId> start(const std::string& program, std::string commandLine, DWORD flags,
                        ShowMode showMode = ShowMode::Normal) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = static_cast<WORD>(showMode);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr, &startup,
                          &process))
        return lastFailure("can't start " + program);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return ProcessId{process.dwProcessId};
}

}  // namespace

std::string findProgram(const std::string& name) {
    char path[32768];
    const DWORD count = ::SearchPathA(nullptr, name.c_str(), ".exe", sizeof path, path, nullptr);
    const DWORD attributes = count > 0 && count < sizeof path ? ::GetFileAttributesA(path) : INVALID_FILE_ATTRIBUTES;
    const bool isFile = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    return isFile ? std::string(path, count) : std::string();
}

Result<ProcessId> startProgram(const std::string& program, const std::vector<std::string>& arguments) {
    const std::string path = findProgram(program);
    if (path.empty()) return Failure{FailureKind::NotFound, "there is no program " + program, {}};
    std::string commandLine = quoted(path);
    for (const std::string& argument : arguments) commandLine += ' ' + quoted(argument);
    return start(program, commandLine, DETACHED_PROCESS);
}

Result<ProcessId> startCommand(const std::string& commandLine, ShowMode showMode) {
    const std::string program = commandLine.substr(0, commandLine.find(' '));
    return start(program, commandLine, CREATE_NEW_CONSOLE, showMode);
}

Result<ProcessId> startMinimised(const std::string& program, const std::vector<std::string>& arguments) {
    const std::string path = findProgram(program);
    if (path.empty()) return Failure{FailureKind::NotFound, "there is no program " + program, {}};
    std::string ending = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
    for (char& c : ending) c = static_cast<char>(::tolower(static_cast<unsigned char>(c)));
    if (ending == ".bat" || ending == ".cmd")
        return Failure{FailureKind::InvalidArgument, "a command file can't be started: " + program, {}};
    std::string commandLine = quoted(path);
    for (const std::string& argument : arguments) commandLine += ' ' + quoted(argument);
    return start(program, commandLine, 0, ShowMode::Minimised);
}

Result<void> runElevated(const std::string& file, const std::string& parameters, ShowMode showMode) {
    const HINSTANCE result =
        ::ShellExecuteA(nullptr, "runas", file.c_str(), parameters.c_str(), nullptr, static_cast<int>(showMode));
    // Not an instance but a number: above 32 all went well.
    if (reinterpret_cast<INT_PTR>(result) > 32) return {};
    return lastFailure("can't start " + file);
}

Result<void> startScript(const std::string& folder, const std::string& name,
                         const std::vector<std::string>& arguments) {
    const std::string file = joinPath(folder, name + ".bat");
    if (::GetFileAttributesA(file.c_str()) == INVALID_FILE_ATTRIBUTES)
        return Failure{FailureKind::NotFound, "there is no script " + file, {}};
    std::string parameters;
    for (const std::string& argument : arguments) parameters += '"' + argument + "\" ";
    return runElevated(file, parameters, ShowMode::Hidden);
}

Result<void> openForOperator(const std::string& addressOrFile) {
    // Inside quotes the command processor still expands %...%, which an address may hold; a quote would end them.
    if (addressOrFile.empty() || addressOrFile.front() == '-' || addressOrFile.find('"') != std::string::npos ||
        !fitsOneLine(addressOrFile))
        return Failure{FailureKind::InvalidArgument, "there is nothing to open", {}};
    // The first quotes are the title that "start" would otherwise take from the address.
    const Result<ProcessId> started = start("cmd", "cmd.exe /c start \"\" \"" + addressOrFile + "\"", CREATE_NO_WINDOW);
    return started ? Result<void>() : started.failure();
}

}  // namespace kibo::platform
