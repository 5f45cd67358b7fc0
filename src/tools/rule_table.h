#pragma once

#include <atomic>
#include <optional>
#include <stop_token>
#include <vector>

#include "responder/rule.h"
#include "store/database.h"

namespace kibo {

/// The rules in `autochat`. No failure has gone to the error policy.
class RuleTable {
 public:
    explicit RuleTable(Database& database) : database_(database) {}

    /// A profile's rules whose keyword or answer holds `search`; empty: all of them. BACK and END come first, the steps
    /// of a conversation behind one another.
    Result<std::vector<Rule>> list(const QString& profile, const QString& search);
    /// Those of all profiles, as they were made.
    Result<std::vector<Rule>> all();
    /// Nothing: it has been deleted.
    Result<std::optional<Rule>> find(qint64 id);

    /// Stores the rule and gives its id: as a new one where none has its id. A WELCOME or NOT FOUND rule makes a TEXT
    /// rule of every other of its kind, whosever it is.
    Result<qint64> save(const Rule& rule);
    Result<void> remove(qint64 id);

    struct Added {
        int added = 0;
        int there = 0;         ///< were in the table already, the same in everything but the id
        bool stopped = false;  ///< nothing was added
    };
    /// Adds all of `rules` to their profiles or, after a failure or a stop, none of them. Where one's `previous` names
    /// another of them it names its new id then.
    Result<Added> add(const std::vector<Rule>& rules, const std::stop_token& stop = {});

 private:
    Result<std::vector<Rule>> read(const QString& sql, const Database::Values& values);
    Result<void> write(const Rule& rule, bool isThere);
    /// Leaves the kind to `rule` alone, if only one of all rules may have it.
    Result<void> claimKind(RuleKind kind);

    Database& database_;
};

/// As texts are stored, without single quotes, since programs put them between such.
QString storableRuleText(QString text);

/// What becomes of rules that another profile gets: the one WELCOME and the one NOT FOUND rule stay where they are,
/// their copies are TEXT rules.
std::vector<Rule> copiedRules(std::vector<Rule> rules, const QString& profile);

}  // namespace kibo
