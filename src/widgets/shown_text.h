#pragma once

#include <QString>

namespace kibo {

/// A text from outside as a window can show it: every kind of line break as '\n', and no more than `most` characters,
/// an ellipsis behind what was cut off.
QString shownText(const QString& text, qsizetype most);

/// The same as one line for a cell: line breaks become ⏎, tabs blanks.
QString shownLine(const QString& text, qsizetype most);

}  // namespace kibo
