#include "browser/element_store.h"

#include "base/log.h"
#include "store/new_store.h"
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

void ElementStore::complete() {
    const QHash<QString, QString> former = formerElements();
    const QHash<QString, QString> shipped = shippedElements();
    QList<std::pair<QString, QString>> renewed;
    for (auto row = former.begin(); row != former.end(); ++row) {
        const Recordset held =
            database_.OpenRecordset(QStringLiteral("select isi from element where nama = ?"), {row.key()});
        const bool asShipped = held.eof() ? row->isEmpty() : !row->isEmpty() && held.field(0) == *row;
        if (asShipped) renewed.append({row.key(), shipped.value(row.key())});
    }
    if (renewed.isEmpty() || !saveAll(renewed)) return;
    log::info("browser", QStringLiteral("%1 rows of element.sys are as they are shipped today").arg(renewed.size()));
}

}  // namespace kibo
