#pragma once

#include <QString>
#include <functional>

#include "base/dialogs.h"
#include "platform/result.h"
#include "screens/background_work.h"

namespace kibo {

/// Compares the installed build with the newest one that the element service tells of, and starts the updater. Builds
/// are dates, "2023-09-20", which are in order as texts.
class UpdateCheck {
 public:
    struct Parts {
        Dialogs& dialogs;  ///< must outlive it
        QString server;    ///< of the element service
        QString settingsFile;
        QString buildDate;  ///< the program's own
        std::function<Result<void>()> startUpdater;
    };

    explicit UpdateCheck(Parts parts) : p_(std::move(parts)), work_(nullptr) {}

    /// Asks the service, which may take seconds, without the window waiting for it; then says in a box what there is.
    void mnupdate_Click();

    /// `LastBuild` of the settings file, which can lower the program's own date but never raise it.
    QString installedBuild() const;

 private:
    void answered(const Result<QString>& newest);
    void offer(const QString& newest);

    Parts p_;
    BackgroundWork work_;
};

}  // namespace kibo
