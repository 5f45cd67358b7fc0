#include <windows.h>

#include <string>

#include "platform/title_match.h"
#include "platform/top_level_windows.h"

namespace kibo::platform {
namespace {

std::string titleOf(HWND window) {
    std::string title(static_cast<std::size_t>(::GetWindowTextLengthA(window)) + 1, '\0');
    const int count = ::GetWindowTextA(window, title.data(), static_cast<int>(title.size()));
    title.resize(static_cast<std::size_t>(count));
    return title;
}

}  // namespace

bool canHideWindows() {
    return true;
}

std::string windowSystem() {
    // The other engines end the program over some characters that no font has.
    return "windows:fontengine=freetype";
}

std::optional<WindowHandle> FindWindowByTitle(std::string_view text, ProcessId owner) {
    for (HWND window = ::FindWindowA(nullptr, nullptr); window != nullptr; window = ::GetWindow(window, GW_HWNDNEXT)) {
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        if (owner != 0 && process != static_cast<DWORD>(owner)) continue;
        if (titleContains(titleOf(window), text)) return reinterpret_cast<WindowHandle>(window);
    }
    return std::nullopt;
}

void bringToFront(ProcessId owner) {
    for (HWND window = ::FindWindowA(nullptr, nullptr); window != nullptr; window = ::GetWindow(window, GW_HWNDNEXT)) {
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        const bool isMain = ::GetWindow(window, GW_OWNER) == nullptr && ::IsWindowVisible(window);
        if (process != static_cast<DWORD>(owner) || !isMain) continue;
        if (::IsIconic(window)) ::ShowWindow(window, SW_RESTORE);
        ::SetForegroundWindow(window);
        return;
    }
}

void showWindow(WindowHandle window, bool visible) {
    ::ShowWindow(reinterpret_cast<HWND>(window), visible ? SW_SHOWNORMAL : SW_HIDE);
}

}  // namespace kibo::platform
