#pragma once

#include <QString>

namespace kibo {

/// Has all windows that are made from here on speak a language, as `id`; empty: the system's own. What has no
/// translation stays English. Needs a QCoreApplication.
void speak(const QString& language);

}  // namespace kibo
