#pragma once

#include <QString>

namespace kibo {

/// Puts the helper program in place: "Downloadmedia.kb" of the program folder is copied over "Downloadmedia.exe" unless
/// a file spelled exactly "DownloadMedia.exe" is there. Does nothing when there is no "Downloadmedia.kb"; what fails is
/// logged.
void installDownloadHelper(const QString& programFolder);

}  // namespace kibo
