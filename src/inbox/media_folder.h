#pragma once

#include <QString>

#include "base/clock.h"
#include "base/settings.h"
#include "platform/result.h"

namespace kibo {

struct MediaLimits {
    qint64 fileBytes = 64LL * 1024 * 1024;
    qint64 leftFreeBytes = 256LL * 1024 * 1024;  ///< on the disk, for journals and logs
};

/// The folder of saved pictures, videos … of received messages: `InboxFolder`; empty: the folder "inbox" of the program
/// folder. It is made when it is missing, and nothing in it is ever removed or written over.
class MediaFolder {
 public:
    /// `settings` and `clock` must outlive the object.
    MediaFolder(const Settings& settings, const Clock& clock, QString programFolder, MediaLimits limits = {});

    QString path() const;
    const MediaLimits& limits() const { return limits_; }
    /// Why nothing can be saved at the moment, in words for the operator; empty: it can.
    QString problem();
    /// Beginning of the name of a folder in it that holds a download under way. What a crash left of them goes with the
    /// first call of `problem`.
    QString downloadFolders() const;
    /// Moves `file` in under `name`, with a number where that is taken. Gives its whole path; fails with Io.
    Result<QString> take(const QString& file, const QString& name);

 private:
    qint64 size();

    const Settings& settings_;
    const Clock& clock_;
    const QString programFolder_;
    const MediaLimits limits_;
    QString swept_;  // the folder that was cleared of downloads
    qint64 size_ = 0, sizeAgainMs_ = -1;
};

}  // namespace kibo
