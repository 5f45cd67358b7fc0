#pragma once

#include <QApplication>

namespace kibo {

/// Style, palette and base font of the program: light, calm, the same on every system, with a visible focus.
/// Call it once, before the first window is created.
void applyLook(QApplication& application);

/// Design size of the area below the menu bar, in pixels.
inline constexpr int kDesignWidth = 1280;
inline constexpr int kDesignHeight = 694;

}  // namespace kibo
