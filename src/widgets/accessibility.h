#pragma once

#include <QAccessible>

namespace kibo {

/// What screen readers are to take `widget` for, where Qt doesn't know; before it is shown.
void setAccessibleRole(QWidget* widget, QAccessible::Role role);

/// Makes what `widget` shows a notice: screen readers say it whenever it appears, wherever the focus is. Of a label
/// that is its text, of others their accessible name.
void setAnnounced(QWidget* widget);

/// Has said what `widget` shows now. What is empty at first becomes a notice only here, or its window would be opened
/// with notices of nothing.
void announce(QWidget* widget);

}  // namespace kibo
