#pragma once

#include <QStringList>
#include <optional>

#include "base/controls.h"
#include "responder/rule.h"

namespace kibo {

// The list of rules as values: its columns, what stands in them, their colours.

enum class RuleColumn {
    Id,
    Keyword,
    Previous,
    Logic,
    Answer,
    Media,
    File,
    Kind,
    Script,
    Program,
    Respon,
    Next,
    Remark
};
/// Those of the rule itself, without the remark on it.
inline constexpr int kRuleColumns = static_cast<int>(RuleColumn::Remark);

QStringList ruleHeader();
QStringList ruleCells(const Rule& rule, const QStringList& troubles);
std::optional<Colour> ruleColour(const QStringList& cells, int column);

/// A kind of rule as it is offered: what its choice makes the keyword, and which fields don't apply to it.
struct RuleKindOption {
    const char *name, *caption;
    RuleKind kind;
    const char* keyword;
    bool coversActions;  ///< panel `tutup`: programs and follow-up
    bool coversKeyword;  ///< panel `tutup2`: keyword, previous rule and logic
};
inline constexpr RuleKindOption kRuleKinds[] = {
    {"Option0", "TEXT", RuleKind::Text, "", false, false},
    {"Option1", "WELCOME", RuleKind::Welcome, "START", false, true},
    {"Option2", "NOT FOUND", RuleKind::NotFound, "???", false, true},
    {"Option3", "BACK", RuleKind::Back, "0", true, false},
    {"Option4", "END", RuleKind::End, "999", true, false},
};

}  // namespace kibo
