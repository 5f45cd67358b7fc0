#pragma once

#include <QString>

#include "base/dialogs.h"
#include "base/settings.h"
#include "store/database.h"

namespace kibo {

/// The question whether to make the tables that a server lacks. `lack`: which, in a sentence.
MessageBox tablesQuestion(const QString& title, const QString& lack);

/// Offers to complete Kibo's own tables on a server that has those of an earlier version. Messages are sent without
/// them, so nothing waits for the answer: a gateway that starts unattended goes on behind the box. A No is kept in the
/// settings file, and nobody is asked again.
class TableOffer {
 public:
    /// All must outlive it.
    struct Needs {
        Database& database;
        const Settings& settings;
        Dialogs& dialogs;
        QString settingsFile;
    };
    explicit TableOffer(Needs needs) : n_(std::move(needs)) {}

    void ask();

 private:
    bool isLacking();
    void make();

    Needs n_;
};

}  // namespace kibo
