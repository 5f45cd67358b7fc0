#pragma once

#include <utility>

#include "platform/result.h"

namespace kibo {

class Database;

/// Statements that take effect together. Undone when it goes without a successful commit. At most one at a time per
/// database.
class Transaction {
 public:
    /// Takes the write lock at once where the store has one, so that it can't fail half-way for another writer.
    static Result<Transaction> begin(Database& database);
    Transaction(Transaction&& other) noexcept : database_(std::exchange(other.database_, nullptr)) {}
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    Transaction& operator=(Transaction&&) = delete;
    ~Transaction();

    Result<void> commit();

 private:
    explicit Transaction(Database& database) : database_(&database) {}

    Database* database_;
};

}  // namespace kibo
