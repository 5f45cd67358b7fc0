#pragma once

#include <QIcon>

namespace kibo {

/// Symbols drawn here rather than taken from a symbol font or theme, which not every system has.
QIcon pauseIcon();
QIcon playIcon();

/// The program's own icon.
QIcon applicationIcon();

}  // namespace kibo
