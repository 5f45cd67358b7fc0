#pragma once

#include <QAccessible>

namespace kibo {

/// What screen readers are to take `widget` for, where Qt doesn't know; before it is shown.
void setAccessibleRole(QWidget* widget, QAccessible::Role role);

/// Makes what `widget` shows a notice: screen readers say it whenever it appears, wherever the focus is, and again
/// after announce(). Of a label that is its text, of others their accessible name.
void setAnnounced(QWidget* widget);

/// Has a notice said that shows something new.
void announce(QWidget* notice);

}  // namespace kibo
