#include "platform/durable_file.h"
#include "platform/win32_call.h"

namespace kibo::platform {
namespace {

std::wstring wide(const std::string& utf8) {
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), static_cast<int>(utf8.size()), text.data(), length);
    return text;
}

class Win32DurableFile : public DurableFile {
 public:
    Win32DurableFile(std::string path, HANDLE handle) : path_(std::move(path)), handle_(handle) {}

    Result<void> begin() {
        LARGE_INTEGER size;
        if (!::GetFileSizeEx(handle_.get(), &size)) return lastFailure("can't read " + path_);
        size_ = size.QuadPart;
        return {};
    }

    Result<std::string> read() override {
        if (!moveTo(0)) return lastFailure("can't read " + path_);
        std::string content(static_cast<std::size_t>(size_), '\0');
        DWORD got = 0;
        if (!::ReadFile(handle_.get(), content.data(), static_cast<DWORD>(content.size()), &got, nullptr))
            return lastFailure("can't read " + path_);
        content.resize(got);
        return content;
    }

    Result<void> append(std::string_view bytes) override {
        DWORD written = 0;
        const bool done =
            moveTo(size_) &&
            ::WriteFile(handle_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
            written == bytes.size() && ::FlushFileBuffers(handle_.get());
        if (done) {
            size_ += written;
            return {};
        }
        const Failure why = lastFailure("can't write " + path_);
        cutAt(size_);
        return why;
    }

    Result<void> replace(std::string_view bytes) override {
        if (!cutAt(0)) return lastFailure("can't write " + path_);
        size_ = 0;
        return append(bytes);
    }

 private:
    bool moveTo(LONGLONG place) {
        LARGE_INTEGER where;
        where.QuadPart = place;
        return ::SetFilePointerEx(handle_.get(), where, nullptr, FILE_BEGIN) != 0;
    }
    bool cutAt(LONGLONG place) { return moveTo(place) && ::SetEndOfFile(handle_.get()); }

    std::string path_;
    Handle handle_;
    LONGLONG size_ = 0;
};

}  // namespace

Result<std::unique_ptr<DurableFile>> DurableFile::open(const std::string& path) {
    // Shared for reading only, so that a second program can't open it for writing.
    const HANDLE handle = ::CreateFileW(wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        if (::GetLastError() == ERROR_SHARING_VIOLATION)
            return Failure{FailureKind::Io, path + " is in use by another program", {}};
        return lastFailure("can't write " + path);
    }
    auto file = std::make_unique<Win32DurableFile>(path, handle);
    if (const Result<void> begun = file->begin(); !begun) return begun.failure();
    return std::unique_ptr<DurableFile>(std::move(file));
}

}  // namespace kibo::platform
