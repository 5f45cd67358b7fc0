#include "browser/element_store.h"

#include "base/log.h"
#include "store/transaction.h"

namespace kibo {

QString ElementStore::LoadElement(const QString& name) {
    return database_.OpenRecordset(QStringLiteral("select isi from element where nama = ?"), {name}).field(0);
}

bool ElementStore::SaveElement(const QString& name, const QString& locator) {
    return database_.execute(QStringLiteral("delete from element where nama = ?"), {name}) &&
           database_.execute(QStringLiteral("INSERT INTO element VALUES (?, ?)"), {name, locator});
}

bool ElementStore::saveAll(const QList<std::pair<QString, QString>>& locators) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) {
        log::warning("browser", QStringLiteral("the element store can't be written: ") +
                                    QString::fromStdString(transaction.failure().text));
        return false;
    }
    for (const auto& [name, locator] : locators)
        if (!SaveElement(name, locator)) return false;
    const Result<void> committed = transaction.value().commit();
    if (!committed)
        log::warning("browser", QStringLiteral("the element store can't be written: ") +
                                    QString::fromStdString(committed.failure().text));
    return committed.ok();
}

}  // namespace kibo
