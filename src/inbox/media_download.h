#pragma once

#include <QLockFile>
#include <QString>
#include <memory>
#include <vector>

#include "base/clock.h"
#include "base/settings.h"
#include "platform/process.h"
#include "platform/result.h"

namespace kibo {

struct DownloadLimits {
    qint64 bytes = 64 * 1024 * 1024;
    int seconds = 300;  ///< for a whole file
    int connectSeconds = 15;
    int stallSeconds = 30;  ///< without a byte
};

/// Fetches the files that messages name by a web address into the folder `TmpFolder`; empty: the folder "tmp" of the
/// program folder. The folder is made when it is missing. Logs and failures name an address's host only: the rest may
/// hold a key.
class MediaDownload {
 public:
    /// `settings` and `clock` must outlive the object.
    MediaDownload(const Settings& settings, Clock& clock, QString programFolder, DownloadLimits limits = {});

    /// Runs the program Downloadmedia and waits for it, with events running. The path of the file, which belongs to the
    /// caller until `release`: it has the name of mediaFileName, with a number where another address's file of that
    /// name, or another instance's, is in use. The failure's text is for the operator.
    Result<QString> fetch(const QString& address);
    /// The caller needs the file no more: its name is free for others.
    void release(const QString& file);

    /// Has the external downloader (wget) fetch the file at `address`, under its last part, and doesn't wait for it.
    /// Fails when it can't be started; what becomes of the download is not known here.
    Result<void> DownloadMedia(const QString& address) const;

 private:
    /// A name that nobody else may write to meanwhile, not even another instance.
    struct HeldName {
        QString address;
        QString file;
        std::unique_ptr<QLockFile> lock;
    };

    QString folder() const;
    Result<QString> holdName(const QString& address);
    Result<void> runDownloader(const QString& address, const QString& file) const;

    const Settings& settings_;
    Clock& clock_;
    const QString programFolder_;
    const DownloadLimits limits_;
    std::vector<HeldName> held_;  ///< of the message in progress
};

}  // namespace kibo
