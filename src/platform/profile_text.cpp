#include "platform/profile_text.h"

#include <algorithm>

namespace kibo::platform {
namespace {

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// How many bytes a character has that begins with `lead`; 0 where none begins so.
std::size_t lengthOf(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = lengthOf(static_cast<unsigned char>(bytes[at]));
        if (length == 0 || length > bytes.size() - at) return false;
        const std::string_view rest = bytes.substr(at + 1, length - 1);
        if (!std::all_of(rest.begin(), rest.end(), continuesCharacter)) return false;
        at += length;
    }
    return true;
}

std::string_view cutUtf8(std::string_view text, std::size_t maxLength) {
    std::size_t length = std::min(maxLength, text.size());
    while (length > 0 && length < text.size() && continuesCharacter(text[length])) --length;
    return text.substr(0, length);
}

}  // namespace kibo::platform
