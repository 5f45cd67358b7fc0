#pragma once

#include <QString>

namespace kibo {

/// A cell of a table on the clipboard, as spreadsheets put it there and take it back: one with tabs, line breaks or
/// quotes stands between quotes, which are doubled inside.
QString quotedCell(const QString& text);

}  // namespace kibo
