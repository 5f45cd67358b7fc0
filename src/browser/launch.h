#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "base/settings.h"
#include "platform/result.h"

namespace kibo {

/// How the browser is started, as pure functions of the settings.

/// Folder of the browser profile `name`. Each instance keeps its own login in its own profile. Fails with
/// InvalidArgument for a name that is no single folder name: it must not lead out of the program folder.
Result<QString> profileFolder(const QString& programFolder, const QString& name);

/// Chrome's command-line arguments in their order. Some come twice, when settings overlap: they are passed as they are.
/// `profileFolder` is left out when `Incognito` is "Y". With `sandbox` none of them takes Chrome's sandbox away.
QStringList launchArguments(const Settings& settings, const QString& profileFolder, bool sandbox = false);

/// The W3C capabilities of the session to ask for.
QJsonObject launchCapabilities(const Settings& settings, const QString& profileFolder, bool sandbox = false);

QString startAddress(const Settings& settings);

/// Whether `ChromeDriver` names a driver that runs already (an http or https address) instead of a program.
bool isDriverAddress(const QString& setting);
/// Whether that driver, and so its browser, runs on another computer than this one.
bool isDriverElsewhere(const QString& setting);

}  // namespace kibo
