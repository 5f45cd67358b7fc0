#pragma once

#include <QString>

#include "base/dialogs.h"
#include "base/settings.h"
#include "store/database.h"
#include "store/new_store.h"

namespace kibo {

/// The steps of the start-up routine that can end the program, with their boxes. The other steps never fail
/// visibly.
class StartUp {
 public:
    /// `dialogs` must outlive it. `programFolder` holds settings and stores.
    StartUp(StartDialogs& dialogs, QString programFolder)
        : dialogs_(dialogs), programFolder_(std::move(programFolder)) {}

    /// Where a crash leaves its trace, in the program folder.
    static constexpr const char* kCrashFile = "kibo.crash";

    QString settingsFile() const;

    /// Says in the log that the last run has crashed, and keeps its trace until the next one leaves another.
    void reportCrash() const;

    /// Reads the settings. A folder without a settings file is new: its local file becomes the database, so that the
    /// program is ready to use, and the stores that are missing are made. Later only the element store is made where
    /// it is missing; a queue that has gone is an error, since another folder may be the right one.
    Settings prepareFolder();
    /// False: the operator chose to end the program. True with a closed database: the settings are to be mended.
    bool openDatabase(Database& database, const Settings& settings);
    /// Whether the operator said so there: the window then opens with the settings screen.
    bool settingsAsked() const { return settingsAsked_; }
    /// False: the program can't run without its element store.
    bool openElementStore(Database& elementStore);

 private:
    Result<void> offerTables(Database& database, const Settings& settings, const Failure& failure);
    void makeStore(const QString& name, StoreContent content);
    /// Tells the operator when the settings file is there but can't be read; its options then have defaults.
    void reportSettingsProblem();

    StartDialogs& dialogs_;
    QString programFolder_;
    bool settingsAsked_ = false;
};

}  // namespace kibo
