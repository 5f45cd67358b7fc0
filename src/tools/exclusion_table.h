#pragma once

#include <QStringList>
#include <stop_token>

#include "store/database.h"

namespace kibo {

/// Numbers and groups in `autochat_exclude` that no automatic answer goes to. The statements name the profile without
/// quotes, so it must be a number. No failure has gone to the error policy.
class ExclusionTable {
 public:
    explicit ExclusionTable(Database& database) : database_(database) {}

    /// Why a profile can't have such a list, in words for the operator; empty: it can.
    static QString trouble(const QString& profile);

    Result<QStringList> load(const QString& profile);
    /// Puts `numbers` in the place of the profile's list, empty ones too; after a failure or a stop, which gives false,
    /// all is as it was.
    Result<bool> save(const QString& profile, const QStringList& numbers, const std::stop_token& stop = {});

 private:
    Database& database_;
};

/// The rows of a text on the clipboard, of each its first cell.
QStringList pastedNumbers(QString text);

}  // namespace kibo
