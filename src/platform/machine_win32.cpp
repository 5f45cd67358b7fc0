#include <windows.h>
// windows.h first: the next one builds on it.
#include <psapi.h>

#include "platform/command_line_win32.h"
#include "platform/machine.h"
#include "platform/process.h"

namespace kibo::platform {
namespace {

// Where an installation keeps the Access database's lock file, whatever folder this program runs from.
constexpr const char* kLockFile = R"(C:\Kibo\App\kb.ldb)";
// Chrome's own record of its version, kept for each user.
constexpr const char* kChromeKey = R"(Software\Google\Chrome\BLBeacon)";

/// Texts are taken as they are: std::filesystem would read a narrow one in another code page than the program's.
std::string parentOf(const std::string& path) {
    return path.substr(0, path.find_last_of('\\'));
}

}  // namespace

char pathSeparator() {
    return '\\';
}

std::vector<std::string> programArguments(int, char**) {
    std::vector<std::string> arguments = argumentsOf(::GetCommandLineW());
    if (!arguments.empty()) arguments.erase(arguments.begin());
    return arguments;
}

std::string executableFile() {
    return executablePath(ownProcessId());
}

std::string programFolder() {
    const std::string named = environment("KIBO_HOME");
    if (named.empty()) return parentOf(executableFile());
    char full[32768];
    const DWORD count = ::GetFullPathNameA(named.c_str(), sizeof full, full, nullptr);
    const std::string folder(full, count < sizeof full ? count : 0);
    return folder.ends_with(pathSeparator()) ? parentOf(folder) : folder;
}

std::string machineProblem() {
    const std::string folder = environment("systemroot") + R"(\Microsoft.NET\Framework\v3.5)";
    const DWORD attributes = ::GetFileAttributesA(folder.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return {};
    return ".NET Framework 3.5 must be installed on this machine!";
}

std::string programFileName(const std::string& name) {
    return name + ".exe";
}

std::string installedBrowserVersion(const std::string&) {
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_CURRENT_USER, kChromeKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return {};
    char text[128] = {};
    DWORD size = sizeof text - 1;  // the registry need not end a text with a zero
    DWORD type = 0;
    const LSTATUS status = ::RegQueryValueExA(key, "version", nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    ::RegCloseKey(key);
    return status == ERROR_SUCCESS && type == REG_SZ ? std::string(text) : std::string();
}

bool canSandboxBrowser() {
    return true;
}

void removeStaleLockFile() {
    ::DeleteFileA(kLockFile);
}

std::uint64_t residentMemoryBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    return ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters) ? counters.WorkingSetSize : 0;
}

}  // namespace kibo::platform
