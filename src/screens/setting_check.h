#pragma once

#include <QString>

#include "base/setting_list.h"
#include "base/settings.h"

namespace kibo {

/// Why `value` can't work for a setting, in words for the operator; empty when nothing speaks against it. Looks at the
/// disk, not at the network. What is empty always works, by its default.
QString settingTrouble(const SettingEntry& entry, const QString& value);

/// The version of the browser that these settings start; empty: none was found.
QString installedBrowser(const Settings& settings);
/// "ChromeDriver 116.0.5845.96", of what the setting `ChromeDriver` names; empty: there is none here that can be asked.
QString installedDriver(const QString& setting);

/// Tries of what settings name, as a sentence that says what was seen. They take up to seconds and touch nothing of
/// other threads.
QString tryDatabase(const Settings& settings, const QString& programFolder);
QString tryBrowser(const Settings& settings);
QString tryBot(const Settings& settings);

}  // namespace kibo
