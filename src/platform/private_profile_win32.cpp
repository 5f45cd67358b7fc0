#include "platform/one_line.h"
#include "platform/private_profile.h"
#include "platform/win32_call.h"

namespace kibo::platform {

std::string readPrivateProfileString(std::string_view section, std::string_view key, const std::string& file,
                                     std::size_t maxLength) {
    std::string buffer(maxLength + 1, '\0');
    const DWORD count = ::GetPrivateProfileStringA(std::string(section).c_str(), std::string(key).c_str(), "",
                                                   buffer.data(), static_cast<DWORD>(buffer.size()), file.c_str());
    buffer.resize(count);
    return buffer;
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
