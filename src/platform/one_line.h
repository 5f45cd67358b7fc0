#pragma once

#include <string_view>

namespace kibo::platform {

/// Whether a text can stand on a line of a settings file: a line break or a zero byte would forge other lines.
inline bool fitsOneLine(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

}  // namespace kibo::platform
