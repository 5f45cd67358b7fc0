#pragma once

#include <QString>

#include "base/clock.h"
#include "base/settings.h"
#include "store/database.h"

namespace kibo {

/// Removes the rows of one of Kibo's own tables that are older than `MessageDays`, a few at a time, so that nobody
/// waits for it.
class OldRows {
 public:
    /// `time` is the column that tells a row's age. What is given by reference must outlive the object.
    OldRows(const Settings& settings, Database& database, const Clock& clock, const QString& table,
            const QString& time);

    /// Call it as often as you like, where the table is there.
    void remove();

 private:
    const Settings& settings_;
    Database& database_;
    const Clock& clock_;
    const QString oldest_, remove_;
    qint64 againMs_ = 0;
};

}  // namespace kibo
