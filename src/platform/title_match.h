#pragma once

#include <algorithm>
#include <string_view>

namespace kibo::platform {

/// Case-blind for A-Z, which is all that the titles looked for hold; no title contains an empty text.
inline bool titleContains(std::string_view title, std::string_view text) {
    const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    const auto same = [&](char a, char b) { return folded(a) == folded(b); };
    return !text.empty() && std::search(title.begin(), title.end(), text.begin(), text.end(), same) != title.end();
}

}  // namespace kibo::platform
