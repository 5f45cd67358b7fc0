#pragma once

#include <array>

#include "base/settings.h"
#include "engine/gateway_state.h"

namespace kibo {

/// What one of the marks lb1 to lb14 tells about: yellow when its setting holds `lit`, grey otherwise. The last
/// one has no `lit` value and shows its setting's text instead.
struct SettingIndicator {
    const char* setting;  ///< name of the setting, shown as a hint
    const char* caption;
    QString Settings::*value;
    const char* lit;
};

/// In the order of lb1 to lb14.
const std::array<SettingIndicator, 14>& settingIndicators();

/// The tick of `Timer_variabel`: shows the present settings in the marks.
void refreshSettingIndicators(const Settings& settings, GatewayState& state);

}  // namespace kibo
