#include <algorithm>
#include <string_view>

#include "platform/one_line.h"
#include "platform/private_profile.h"
#include "platform/profile_text.h"
#include "platform/win32_call.h"

namespace kibo::platform {
namespace {

constexpr std::size_t kLongestCharacter = 4;

std::wstring wide(UINT codePage, std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring text(static_cast<std::size_t>(::MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0)),
                      L'\0');
    ::MultiByteToWideChar(codePage, 0, bytes.data(), size, text.data(), static_cast<int>(text.size()));
    return text;
}

std::string utf8(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    std::string bytes(
        static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr)),
        '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                          nullptr);
    return bytes;
}

/// In a code page of one and two bytes only the way from the start tells where a character begins.
std::string_view cutInCodePage(std::string_view text, std::size_t maxLength) {
    std::size_t length = 0;
    for (std::size_t next = 0; next <= std::min(maxLength, text.size());) {
        length = next;
        if (next == text.size()) break;
        next += ::IsDBCSLeadByte(static_cast<BYTE>(text[next])) && next + 1 < text.size() ? 2 : 1;
    }
    return text.substr(0, length);
}

}  // namespace

std::string readPrivateProfileString(std::string_view section, std::string_view key, const std::string& file,
                                     std::size_t maxLength) {
    // One character more than is wanted, which tells whether the last one is whole.
    std::string buffer(maxLength + kLongestCharacter + 1, '\0');
    const DWORD count = ::GetPrivateProfileStringA(std::string(section).c_str(), std::string(key).c_str(), "",
                                                   buffer.data(), static_cast<DWORD>(buffer.size()), file.c_str());
    buffer.resize(count);
    // A whole character less, where the buffer itself cut one in half.
    const std::string_view bytes = buffer;
    for (std::size_t cut = 0; cut < kLongestCharacter && cut <= bytes.size(); ++cut) {
        if (cut > 0 && bytes.size() <= maxLength) break;
        if (isUtf8(bytes.substr(0, bytes.size() - cut)))
            return std::string(cutUtf8(bytes.substr(0, bytes.size() - cut), maxLength));
    }
    return utf8(wide(CP_ACP, cutInCodePage(bytes, maxLength)));
}

Result<void> writePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                                       const std::string& file) {
    if (section.empty() || key.empty() || !fitsOneLine(section) || !fitsOneLine(key) || !fitsOneLine(value))
        return Failure{FailureKind::InvalidArgument, "a settings file can't hold this section, key or value", {}};
    const BOOL written = ::WritePrivateProfileStringA(std::string(section).c_str(), std::string(key).c_str(),
                                                      std::string(value).c_str(), file.c_str());
    if (written) return {};
    const Failure why = lastFailure("can't write " + file);
    return Failure{FailureKind::Io, why.text, why.code};
}

Result<void> checkPrivateProfile(const std::string& file) {
    const Handle input(::CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                     nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (input.valid()) return {};
    const Failure why = lastFailure("can't read " + file);
    return why.kind == FailureKind::NotFound ? Result<void>() : why;
}

}  // namespace kibo::platform
