#pragma once

#include <QList>
#include <QString>
#include <utility>

#include "store/database.h"

namespace kibo {

/// The table `element` of the element store: a locator or text by name.
class ElementStore {
 public:
    /// `database` is the element store's connection and must outlive it.
    explicit ElementStore(Database& database) : database_(database) {}

    /// The row of `name`; empty when there is none.
    QString LoadElement(const QString& name);
    /// Replaces the row of `name`. False after a failure, which the error policy has handled.
    bool SaveElement(const QString& name, const QString& locator);
    /// Replaces the rows of all these names, or of none when one can't be written: a crash in between loses no row.
    bool saveAll(const QList<std::pair<QString, QString>>& locators);
    /// Gives the rows that still are as an earlier program shipped them the values that are shipped today, and adds
    /// those that it didn't know. What an operator has edited stays.
    void complete();

 private:
    Database& database_;
};

}  // namespace kibo
