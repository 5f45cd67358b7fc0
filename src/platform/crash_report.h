#pragma once

#include <cstddef>
#include <cstdint>

namespace kibo::platform {

/// The text of a crash, built without the heap, which may be what is broken. What finds no room is left out.
class CrashReport {
 public:
    CrashReport& add(const char* text);
    CrashReport& add(const char* text, std::size_t size);
    CrashReport& number(std::uint64_t value);
    CrashReport& hex(std::uint64_t value);
    /// One call: the last part of the module's path, and the offset in it.
    CrashReport& call(const char* module, std::uint64_t offset);

    const char* text() const { return text_; }
    std::size_t size() const { return size_; }

 private:
    CrashReport& digits(std::uint64_t value, unsigned base);

    char text_[8192] = {};
    std::size_t size_ = 0;
};

/// Whatever ends the program by an exception that nobody caught leaves the exception's type here, mangled; null: none
/// did. What it says is left out: it may hold what somebody wrote.
const char* uncaughtException();
/// Has `uncaughtException` told from now on.
void noteUncaughtExceptions();

}  // namespace kibo::platform
