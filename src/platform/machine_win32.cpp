#include <windows.h>
// windows.h first: the next two build on it.
#include <psapi.h>
#include <shellapi.h>

#include <filesystem>

#include "platform/machine.h"
#include "platform/process.h"

namespace kibo::platform {
namespace {

// Where an installation keeps the Access database's lock file, whatever folder this program runs from.
constexpr const char* kLockFile = R"(C:\Kibo\App\kb.ldb)";
// Chrome's own record of its version, kept for each user.
constexpr const char* kChromeKey = R"(Software\Google\Chrome\BLBeacon)";

}  // namespace

char pathSeparator() {
    return '\\';
}

std::vector<std::string> programArguments(int, char**) {
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        const std::u8string text = std::filesystem::path(words[i]).u8string();
        arguments.emplace_back(text.begin(), text.end());
    }
    ::LocalFree(words);
    return arguments;
}

std::string executableFile() {
    return executablePath(ownProcessId());
}

std::string programFolder() {
    const std::string named = environment("KIBO_HOME");
    if (named.empty()) return std::filesystem::path(executableFile()).parent_path().string();
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(named, error).lexically_normal();
    return folder.has_filename() ? folder.string() : folder.parent_path().string();
}

std::string machineProblem() {
    std::error_code error;
    const std::string folder = environment("systemroot") + R"(\Microsoft.NET\Framework\v3.5)";
    if (std::filesystem::is_directory(folder, error)) return {};
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

void removeStaleLockFile() {
    ::DeleteFileA(kLockFile);
}

std::uint64_t residentMemoryBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    return ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters) ? counters.WorkingSetSize : 0;
}

}  // namespace kibo::platform
