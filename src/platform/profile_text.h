#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kibo::platform {

/// Whether all of `bytes` are whole characters of UTF-8.
bool isUtf8(std::string_view bytes);

/// The longest beginning of `text`, which is UTF-8, of at most `maxLength` bytes without half a character at its end.
std::string_view cutUtf8(std::string_view text, std::size_t maxLength);

}  // namespace kibo::platform
