#pragma once

#include <stdexcept>

#include "platform/result.h"

namespace kibo {

/// Thrown for a failed page or database statement while `DebugMode` is "Y"; caught where ticks and clicks start.
class SurfacedError : public std::runtime_error {
 public:
    explicit SurfacedError(Failure failure) : std::runtime_error(failure.text), failure_(std::move(failure)) {}
    const Failure& failure() const { return failure_; }

 private:
    Failure failure_;
};

/// The one decision on failing page and database statements, applied where they are issued: everyday operation
/// logs and skips them, so that procedures read as their steps; `DebugMode` "Y" lets them surface.
class ErrorPolicy {
 public:
    void setDebugMode(bool on) { debugMode_ = on; }
    /// The program ends: connections are closed under ticks that have yet to unwind. That they are lost is no news from
    /// now on, and nothing surfaces any more, for a box would hold up the end.
    void programEnds() {
        ending_ = true;
        debugMode_ = false;
    }

    /// Whether `skip` throws.
    bool surfaces() const { return debugMode_; }
    /// Logs `failure` (category named by `area`, e.g. "browser"); in debug mode also throws SurfacedError.
    void skip(const char* area, const char* statement, const Failure& failure) const;
    /// The same, and never throws.
    void note(const char* area, const char* statement, const Failure& failure) const;

 private:
    bool debugMode_ = false;
    bool ending_ = false;
};

}  // namespace kibo
