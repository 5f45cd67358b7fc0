#pragma once

#include <condition_variable>
#include <functional>
#include <optional>
#include <stop_token>
#include <thread>

#include "store/database.h"

struct sqlite3;

namespace kibo {

/// Breaks off what a database runs: as long as this object lives, a request to stop ends the statement in hand with an
/// error, on a server too. Made and used in the database's thread; stop may be asked for in any. What an Access file is
/// asked goes on to its end.
class StatementBreak {
 public:
    StatementBreak(Database& database, std::stop_token stop);
    ~StatementBreak();
    StatementBreak(const StatementBreak&) = delete;
    StatementBreak& operator=(const StatementBreak&) = delete;

 private:
    std::stop_token stop_;
    sqlite3* local_ = nullptr;
    std::jthread killer_;  // ends before what it was made in, and after the call that starts it
    std::optional<std::stop_callback<std::function<void()>>> asked_;
};

}  // namespace kibo
