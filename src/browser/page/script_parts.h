#pragma once

#include <QString>

/// What the page's scripts have in common. Each function gives a script: the parts that it names, then `body`, which
/// uses what they define.
namespace kibo::scripts {

/// Finding by locator, texts as a person sees them, and the watch over the open conversation.
QString script(const char* body);
/// The same, and the rows of the chat list.
QString entryScript(const char* body);
/// The same as `script`, and the boxes that are typed into.
QString boxScript(const char* body);
/// The same as `boxScript`, and scrolling through the chat list.
QString listScript(const char* body);

}  // namespace kibo::scripts
