#include "store/transaction.h"

#include "base/log.h"
#include "store/database.h"

namespace kibo {

Result<Transaction> Transaction::begin(Database& database) {
    if (!database.open_) database.openAgain();
    Result<void> begun;
    switch (database.dialect_) {
        case Database::Dialect::MySql:
            begun = database.runPlain(QStringLiteral("START TRANSACTION"));
            break;
        case Database::Dialect::Sqlite:
            begun = database.runPlain(QStringLiteral("BEGIN IMMEDIATE"));
            break;
        case Database::Dialect::Access:
            begun = database.throughDriver(&QSqlDatabase::transaction);
            break;
    }
    if (!begun) return begun.failure();
    database.inTransaction_ = true;
    return Transaction(database);
}

Result<void> Transaction::commit() {
    if (!database_) return Failure{FailureKind::InvalidArgument, "The transaction has ended."};
    Result<void> done = database_->dialect_ == Database::Dialect::Access
                            ? database_->throughDriver(&QSqlDatabase::commit)
                            : database_->runPlain(QStringLiteral("COMMIT"));
    if (done) std::exchange(database_, nullptr)->inTransaction_ = false;
    return done;
}

Transaction::~Transaction() {
    if (!database_) return;
    database_->inTransaction_ = false;
    if (!database_->isOpen()) return;
    const Result<void> undone = database_->dialect_ == Database::Dialect::Access
                                    ? database_->throughDriver(&QSqlDatabase::rollback)
                                    : database_->runPlain(QStringLiteral("ROLLBACK"));
    if (!undone)
        log::warning("app", QStringLiteral("a transaction could not be undone: ") +
                                QString::fromStdString(undone.failure().text));
}

}  // namespace kibo
