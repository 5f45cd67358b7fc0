#pragma once

#include <functional>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Opens a browser anew that has grown beyond `BrowserMaxMB` (empty: 1500) or is older than `BrowserMaxHours` (empty:
/// 24), since pages that stay open for days leak. Only while nothing is due or a break runs, and never under anybody's
/// hands.
class BrowserRenewal {
 public:
    struct Needs {
        const GatewayState& state;
        const Settings& settings;
        const Clock& clock;
        std::function<qint64()> ageMs;         ///< of the session
        std::function<quint64()> memoryBytes;  ///< of the browser; 0: not known
        std::function<bool()> pageInUse;       ///< a screen drives the page
        std::function<void()> openFreshSession;
    };
    /// What it is given must outlive it.
    explicit BrowserRenewal(Needs needs) : n_(std::move(needs)) {}

    /// Call it as often as you like: it looks once a minute.
    void tick();

    static constexpr qint64 kLookMs = 60'000;
    /// A browser that needs this much anyway isn't opened again and again.
    static constexpr qint64 kRestMs = 3'600'000;

 private:
    bool isTime();

    Needs n_;
    std::optional<qint64> lookedAtMs_;
};

}  // namespace kibo
