#include "platform/command_line_win32.h"

#include <windows.h>
// windows.h first: shellapi.h builds on it.
#include <shellapi.h>

#include <filesystem>

namespace kibo::platform {

std::vector<std::string> argumentsOf(const wchar_t* commandLine) {
    std::vector<std::string> arguments;
    if (*commandLine == L'\0') return arguments;  // Windows would take it for this program's own
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(commandLine, &count);
    for (int i = 0; words && i < count; ++i) {
        const std::u8string text = std::filesystem::path(words[i]).u8string();
        arguments.emplace_back(text.begin(), text.end());
    }
    ::LocalFree(words);
    return arguments;
}

}  // namespace kibo::platform
