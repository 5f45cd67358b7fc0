#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/process.h"

namespace kibo::platform {

/// A top-level window of any program. It may close at any time; the calls below put up with that.
using WindowHandle = std::uintptr_t;

/// Whether windows of other programs can be found and hidden here: not without a display.
bool canHideWindows();

/// The name, with its options, of the window system that Qt must be told to use here; empty: its own choice is right.
std::string windowSystem();

/// The first top-level window, hidden ones included, whose title contains `text`; letters A-Z are compared
/// without regard to case. X11: the window manager's list first, then all windows, since a hidden one is on no list.
/// With an `owner` only that process's windows count.
std::optional<WindowHandle> FindWindowByTitle(std::string_view text, ProcessId owner = 0);

/// Brings the first visible top-level window of a process before all others and gives it the keyboard. Nothing happens
/// where it has none.
void bringToFront(ProcessId owner);

/// Shows the window normally, or hides it so that neither screen nor task bar shows it.
void showWindow(WindowHandle window, bool visible);

}  // namespace kibo::platform
