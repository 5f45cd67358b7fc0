#pragma once

#include <QString>
#include <optional>

#include "base/dialogs.h"

namespace kibo {

/// Where ChromeDriver is to be had (its makers' own list of downloads).
inline constexpr const char* kDriverDownloadAddress = "https://googlechromelabs.github.io/chrome-for-testing/";

/// Asks whether to fetch another driver when the two don't fit: ChromeDriver drives browsers of its own major version
/// only. Nothing when they fit, and when either is unknown. `driverLine` is as the driver prints it ("ChromeDriver
/// 116.0.5845.96 (…)"), `browserVersion` a bare version.
std::optional<MessageBox> versionMismatch(const QString& driverLine, const QString& browserVersion);

}  // namespace kibo
