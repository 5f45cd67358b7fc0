#include "platform/crash_report.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <typeinfo>

namespace kibo::platform {
namespace {

const char* exceptionType = nullptr;

}  // namespace

CrashReport& CrashReport::add(const char* text) {
    return add(text, std::strlen(text));
}

CrashReport& CrashReport::add(const char* text, std::size_t size) {
    size = std::min(size, sizeof text_ - size_);
    std::memcpy(text_ + size_, text, size);
    size_ += size;
    return *this;
}

CrashReport& CrashReport::number(std::uint64_t value) {
    return digits(value, 10);
}

CrashReport& CrashReport::hex(std::uint64_t value) {
    return add("0x").digits(value, 16);
}

CrashReport& CrashReport::call(const char* module, std::uint64_t offset) {
    const char* name = module;
    for (const char* c = module; *c != '\0'; ++c)
        if (*c == '/' || *c == '\\') name = c + 1;
    return add("  ").add(name).add("+").hex(offset).add("\n");
}

CrashReport& CrashReport::digits(std::uint64_t value, unsigned base) {
    char reversed[20];
    std::size_t count = 0;
    do {
        reversed[count++] = "0123456789abcdef"[value % base];
        value /= base;
    } while (value != 0);
    std::reverse(reversed, reversed + count);
    return add(reversed, count);
}

const char* uncaughtException() {
    return exceptionType;
}

void noteUncaughtExceptions() {
    std::set_terminate([] {
        if (const std::type_info* type = abi::__cxa_current_exception_type()) exceptionType = type->name();
        std::abort();
    });
}

}  // namespace kibo::platform
