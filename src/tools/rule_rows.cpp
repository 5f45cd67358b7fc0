#include "tools/rule_rows.h"

namespace kibo {
namespace {

constexpr Colour kWelcome = 0xC0FFC0, kNotFound = 0xFF8080, kBack = 0xFFC080, kEnd = 0xC0C0C0, kWhite = 0xFFFFFF;

QString cell(const QStringList& cells, RuleColumn column) {
    return cells.value(static_cast<int>(column));
}

std::optional<Colour> idColour(const QStringList& cells) {
    if (!cell(cells, RuleColumn::Program).isEmpty() || !cell(cells, RuleColumn::Script).isEmpty()) return colour::kCyan;
    switch (static_cast<RuleKind>(cell(cells, RuleColumn::Kind).toInt())) {
        case RuleKind::Welcome:
            return kWelcome;
        case RuleKind::NotFound:
            return kNotFound;
        case RuleKind::Back:
            return kBack;
        case RuleKind::End:
            return kEnd;
        case RuleKind::Text:
            break;
    }
    return {};
}

}  // namespace

QStringList ruleHeader() {
    return {QStringLiteral("ID"),     QStringLiteral("Keyword"), QStringLiteral("PrevID"), QStringLiteral("Logic"),
            QStringLiteral("Answer"), QStringLiteral("Media"),   QStringLiteral("File"),   QStringLiteral("Tipe"),
            QStringLiteral("PHP"),    QStringLiteral("EXE"),     QStringLiteral("Respon"), QStringLiteral("Next"),
            QStringLiteral("Remark")};
}

QStringList ruleCells(const Rule& rule, const QStringList& troubles) {
    return {QString::number(rule.id),
            rule.keyword,
            rule.previous,
            rule.logic,
            rule.answer,
            rule.media,
            rule.file,
            QString::number(static_cast<int>(rule.kind)),
            rule.script,
            rule.program,
            QString::number(int{rule.answersByScript}),
            QString::number(int{rule.expectsNext}),
            troubles.join(QStringLiteral("; "))};
}

std::optional<Colour> ruleColour(const QStringList& cells, int column) {
    switch (static_cast<RuleColumn>(column)) {
        case RuleColumn::Id:
            return idColour(cells);
        case RuleColumn::Keyword:
            return cell(cells, RuleColumn::Next) == QStringLiteral("1") ? colour::kYellow : kWhite;
        case RuleColumn::Previous:  // in sight, where the remark may not be
        case RuleColumn::Remark:
            return cell(cells, RuleColumn::Remark).isEmpty() ? std::nullopt : std::optional(colour::kWarningRow);
        default:
            return {};
    }
}

}  // namespace kibo
