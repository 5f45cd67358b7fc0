#pragma once

#include <QString>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kibo::fuzz {

/// Ends the program, and with it the run, when what must always hold doesn't.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// An input taken apart: numbers from its beginning, then texts.
class Input {
 public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

    /// 0 when the input is used up.
    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const char first = rest_.front();
        rest_.remove_prefix(1);
        return static_cast<std::uint8_t>(first);
    }
    /// Up to the next line feed.
    std::string_view line() {
        const std::string_view line = rest_.substr(0, rest_.find('\n'));
        rest_.remove_prefix(std::min(rest_.size(), line.size() + 1));
        return line;
    }
    std::string_view rest() const { return rest_; }

 private:
    std::string_view rest_;
};

inline QString toText(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace kibo::fuzz

/// libFuzzer calls it with one input after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
