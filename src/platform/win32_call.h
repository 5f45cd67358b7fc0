#pragma once

#include <windows.h>

#include <string>

#include "platform/result.h"

namespace kibo::platform {

/// The failure that the last Windows call of this thread left behind.
inline Failure lastFailure(const std::string& what) {
    const DWORD error = ::GetLastError();
    char text[256] = {};
    ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text, sizeof text,
                     nullptr);
    std::string reason = text;
    while (!reason.empty() && (reason.back() == '\r' || reason.back() == '\n' || reason.back() == ' '))
        reason.pop_back();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return {missing ? FailureKind::NotFound : FailureKind::Io, what + ": " + reason, std::to_string(error)};
}

/// Closes a handle when it goes out of scope.
class Handle {
 public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (valid()) ::CloseHandle(handle_);
    }
    HANDLE get() const { return handle_; }
    bool valid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }

 private:
    HANDLE handle_;
};

}  // namespace kibo::platform
