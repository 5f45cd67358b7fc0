#pragma once

#include <QString>

namespace kibo {

/// What a text and its drawing in a chat or in the chat list have in common: the page turns marks into bold and
/// italics, and breaks lines anew.
QString essence(const QString& text);

}  // namespace kibo
