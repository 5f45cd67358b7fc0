#pragma once

#include <QString>
#include <optional>

#include "store/database.h"

namespace kibo {

/// This instance's rows in the tables that the instances of one database and their control panel share. A
/// statement that fails is skipped by the database's error policy.
class InstanceRows {
 public:
    /// `database` must outlive it.
    explicit InstanceRows(Database& database) : database_(database) {}

    /// Puts the program's name where the control panel looks for it.
    void announce(const QString& applicationName);
    /// How many status rows `profile` has: 1 when an instance with it runs, or was ended without its unload.
    int statusRows(const QString& profile);
    /// What the control panel asks of one instance.
    struct Commands {
        bool restart = false;           ///< of its browser session
        bool off = false;               ///< whatever the row's value
        std::optional<QString> status;  ///< as its row has it; nothing: there is no row
    };
    /// Nothing when the database didn't tell. A single session is restarted by the key that names no profile, and can't
    /// be switched off.
    std::optional<Commands> commands(const QString& profile, bool multi);
    /// A single session's row then says "no", for the panel to see; one of several instances has its row deleted. False
    /// when the command still stands.
    bool restartObeyed(const QString& profile, bool multi);
    /// `written`: what the row says already. The same is not written again: who reads it can't tell, and a local store
    /// would take it for a change of the queue.
    void report(const QString& profile, const QString& status, const std::optional<QString>& written);

    /// Removes the rows of `profile` and clears its login code: the instance goes.
    void withdraw(const QString& profile);
    /// Removes the command and status rows of all instances.
    void withdrawAll();

 private:
    Database& database_;
};

}  // namespace kibo
