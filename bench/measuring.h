#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kibo::bench {

/// Milliseconds that `work` took.
inline double millisecondsOf(const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

inline double median(std::vector<double> values) {
    if (values.empty()) throw std::runtime_error("no samples");
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// Medians of two things done in turns, so that whatever else runs on the computer slows both alike.
struct SideBySide {
    double measured = 0;
    double reference = 0;
};
inline SideBySide sideBySide(int samples, const std::function<void()>& measured,
                             const std::function<void()>& reference) {
    std::vector<double> ours, theirs;
    for (int i = 0; i < samples; ++i) {
        // Who goes first changes, since the second one finds warm caches.
        if (i % 2) theirs.push_back(millisecondsOf(reference));
        ours.push_back(millisecondsOf(measured));
        if (i % 2 == 0) theirs.push_back(millisecondsOf(reference));
    }
    return {median(ours), median(theirs)};
}

inline void require(bool condition, const std::string& what) {
    if (!condition) throw std::runtime_error(what);
}

}  // namespace kibo::bench
