#pragma once

#include <QString>

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
    /// Removes the rows of `profile` and clears its login code: the instance goes.
    void withdraw(const QString& profile);
    /// Removes the command and status rows of all instances.
    void withdrawAll();

 private:
    Database& database_;
};

}  // namespace kibo
