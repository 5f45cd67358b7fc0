// The expander of alternatives against the rule it follows, written down as it is told.
#include "engine/text_expansion.h"

#include <vector>

#include "fuzz/fuzzing.h"

using namespace kibo;
using fuzz::require;

namespace {

/// "Replace from the first [ to the first ] by a marker, keep what lies between; when all are done, replace the
/// markers". None for a text that is to be refused.
std::optional<QString> byTheRule(const QString& text, const RandomSource& random) {
    QString rest = text + QStringLiteral("[|]");
    std::vector<QStringList> slots_;
    do {
        const qsizetype open = rest.indexOf(QLatin1Char('['));
        const qsizetype close = rest.indexOf(QLatin1Char(']'));
        if (close < open || slots_.size() == 10) return std::nullopt;
        slots_.push_back(rest.mid(open + 1, close - open - 1).split(QLatin1Char('|')));
        rest.replace(open, close - open + 1, QStringLiteral("{%1}").arg(slots_.size()));
    } while (rest.contains(QLatin1Char(']')) && rest.contains(QLatin1Char('[')));
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const QString& chosen = slots_[i][randomInteger(0, static_cast<int>(slots_[i].size()) - 1, random)];
        const QStringList pieces = rest.split(QStringLiteral("{%1}").arg(i + 1));
        if (rest.size() + (pieces.size() - 1) * chosen.size() > kLongestExpansion) return std::nullopt;
        rest = pieces.join(chosen);
    }
    return rest;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const double r = input.byte() / 256.0;
    const RandomSource random = [r] { return r; };
    const QString text = fuzz::toText(input.rest());

    const Result<QString> expanded = expandAlternatives(text, random);
    const std::optional<QString> wanted = byTheRule(text, random);
    require(expanded.ok() == wanted.has_value(), "the same texts are refused");
    if (wanted) require(expanded.value() == *wanted, "the text is what the rule makes of it");

    QString problem;
    const QString whole = expandMessageText(text, QDateTime(), random, &problem);
    require(problem.isEmpty() == expanded.ok(), "a refusal has a reason");
    require(!whole.contains(QLatin1Char('\t')) && !whole.contains(QStringLiteral("~r")), "codes are expanded");
    return 0;
}
