#include "main_window/setting_indicators.h"

namespace kibo {
namespace {

constexpr Colour kOnGrey = 0xF0F0F0;

}  // namespace

const std::array<SettingIndicator, 14>& settingIndicators() {
    // Reading and the agent are on when the setting that switches them off says "N".
    static const std::array<SettingIndicator, 14> table{{
        {"AutoStart", "Auto start", &Settings::AutoStart, "Y"},
        {"Multi", "Multi", &Settings::Multi, "Y"},
        {"UseMDB", "Local file", &Settings::UseMDB, "Y"},
        {"Scheduled", "Scheduled", &Settings::Scheduled, "Y"},
        {"DisableRead", "Reading", &Settings::DisableRead, "N"},
        {"NoAgent", "Agent", &Settings::NoAgent, "N"},
        {"UseBotPHP", "Web bot", &Settings::UseBotPHP, "Y"},
        {"UseBotEXE", "Local bot", &Settings::UseBotEXE, "Y"},
        {"SendUsingClipboard", "Clipboard", &Settings::SendUsingClipboard, "Y"},
        {"Headless", "Headless", &Settings::Headless, "Y"},
        {"Incognito", "Incognito", &Settings::Incognito, "Y"},
        {"CaptureQR", "QR file", &Settings::CaptureQR, "Y"},
        {"DebugMode", "Debug", &Settings::DebugMode, "Y"},
        {"Speed", "", &Settings::Speed, nullptr},
    }};
    return table;
}

void refreshSettingIndicators(const Settings& settings, GatewayState& state) {
    std::size_t i = 0;
    for (const SettingIndicator& indicator : settingIndicators()) {
        const QString& value = settings.*indicator.value;
        const bool lit = indicator.lit != nullptr && value == QLatin1String(indicator.lit);
        Label& label = state.lb[i++];
        label.caption = indicator.lit != nullptr ? QString::fromLatin1(indicator.caption) : value;
        label.background = lit ? colour::kYellow : colour::kGrey;
        label.foreground = lit ? colour::kBlack : kOnGrey;
    }
}

}  // namespace kibo
