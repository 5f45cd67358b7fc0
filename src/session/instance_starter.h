#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "platform/result.h"

namespace kibo {

/// `mnmulti`: starts the program again for the next profile, and with each further use for the one after it.
class InstanceStarter {
 public:
    struct Needs {
        const GatewayState& state;
        const Settings& settings;
        Dialogs& dialogs;
        std::function<Result<void>(const QString& profile)> start;  ///< this program, for that profile
        std::function<void()> openSettings = {};                    ///< the settings screen; may be empty
    };
    /// What it is given must outlive it.
    explicit InstanceStarter(Needs needs) : n_(std::move(needs)) {}

    /// Says so where several instances are not switched on, and where this one's profile is no number to count from.
    void mnmulti_Click();

    /// The counter from which on nothing is started.
    static constexpr int kMost = 100;

 private:
    Needs n_;
    std::optional<int> counter_;  // profile that was started last
};

}  // namespace kibo
