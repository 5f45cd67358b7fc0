#pragma once

#include <QString>
#include <vector>

#include "base/settings.h"
#include "engine/gateway_state.h"

namespace kibo {

/// Something that keeps messages from being sent or read.
struct Hindrance {
    enum class Ends {
        ByItself,        ///< the gateway goes on as soon as it can
        WhenSomeoneActs  ///< it stays until a person does something
    };
    enum class Remedy { None, OpenWhatsApp, Continue, Elements, ProgramFolder, TryAgain };

    Ends ends = Ends::ByItself;
    QString text;  ///< cause and remedy, in whole sentences
    Remedy remedy = Remedy::None;

    bool operator==(const Hindrance&) const = default;
};

/// All that hinders at the moment, what a person has to do first.
std::vector<Hindrance> hindrances(const GatewayState& state, const Settings& settings);

}  // namespace kibo
