#include "responder/rule_graph.h"

#include <QSet>
#include <algorithm>
#include <utility>

namespace kibo {
namespace {

/// Neither waits for a certain rule: one answers where a chat begins, the other where nothing else does.
bool answersAnywhere(const Rule& rule) {
    return rule.kind == RuleKind::Welcome || rule.kind == RuleKind::NotFound;
}

class Graph {
 public:
    explicit Graph(const std::vector<Rule>& rules) : rules_(rules) {
        for (const Rule& rule : rules) byId_.insert(rule.id, &rule);
        for (const Rule& rule : rules)
            if (const Rule* before = previous(rule)) followers_[before->id].push_back(&rule);
        for (const Rule& rule : rules) findLoop(rule);
    }

    /// nullptr: none, or none that is there.
    const Rule* previous(const Rule& rule) const {
        return rule.previous.trimmed().isEmpty() || answersAnywhere(rule)
                   ? nullptr
                   : byId_.value(rule.previous.trimmed().toLongLong(), nullptr);
    }
    bool previousIsMissing(const Rule& rule) const {
        return !rule.previous.trimmed().isEmpty() && !answersAnywhere(rule) && !previous(rule);
    }
    const std::vector<const Rule*>& followers(const Rule& rule) const {
        static const std::vector<const Rule*> kNone;
        const auto found = followers_.find(rule.id);
        return found == followers_.end() ? kNone : found.value();
    }
    /// The rules of the loop that it is part of, from itself on; empty: none.
    std::vector<const Rule*> loop(const Rule& rule) const {
        std::vector<const Rule*> around;
        if (!inLoop_.contains(rule.id)) return around;
        const Rule* one = &rule;
        do {
            around.push_back(one);
            one = previous(*one);
        } while (one != &rule);
        std::reverse(around.begin() + 1, around.end());
        return around;
    }
    bool isInLoop(const Rule& rule) const { return inLoop_.contains(rule.id); }

 private:
    /// Each rule has one before it at most, so whoever goes back from rule to rule either ends or goes round.
    void findLoop(const Rule& rule) {
        QSet<qint64> passed;
        const Rule* one = &rule;
        for (; one && !seen_.contains(one->id); one = previous(*one)) {
            seen_.insert(one->id);
            passed.insert(one->id);
        }
        if (!one || !passed.contains(one->id)) return;
        for (const Rule* around = one; !inLoop_.contains(around->id); around = previous(*around))
            inLoop_.insert(around->id);
    }

    const std::vector<Rule>& rules_;
    QHash<qint64, const Rule*> byId_;
    QHash<qint64, std::vector<const Rule*>> followers_;
    QSet<qint64> seen_, inLoop_;
};

QString loopInWords(const std::vector<const Rule*>& loop) {
    constexpr size_t kNamed = 6;
    QStringList ids;
    for (size_t i = 0; i < std::min(loop.size(), kNamed); ++i) ids.append(QString::number(loop[i]->id));
    ids.append(loop.size() > kNamed ? QStringLiteral("…") : ids.front());
    return ids.join(QStringLiteral(" → "));
}

}  // namespace

QHash<qint64, QStringList> ruleTroubles(const std::vector<Rule>& rules) {
    const Graph graph(rules);
    QHash<qint64, QStringList> troubles;
    std::vector<const Rule*> unreachable;
    QHash<std::pair<QString, QString>, qint64> first;
    for (const Rule& rule : rules) {
        const auto tell = [&](const QString& words) { troubles[rule.id].append(words); };
        if (graph.previousIsMissing(rule)) {
            tell(QStringLiteral("never reached: there is no rule %1").arg(rule.previous.trimmed()));
            unreachable.push_back(&rule);
        } else if (graph.isInLoop(rule)) {
            tell(QStringLiteral("never reached: the rules go round, %1").arg(loopInWords(graph.loop(rule))));
            unreachable.push_back(&rule);
        }
        const Rule* before = graph.previous(rule);
        if (before && !before->expectsNext)
            tell(QStringLiteral("rule %1 before it doesn't have NEED NEXT ANSWER").arg(before->id));
        const bool asks = rule.kind == RuleKind::Text || rule.kind == RuleKind::Welcome;
        if (rule.expectsNext && asks && graph.followers(rule).empty())
            tell(QStringLiteral("dead end: it needs a next answer, and no rule follows it"));
        if (rule.kind != RuleKind::Text || rule.logic != kExactLogic) continue;
        const std::pair place(rule.previous.trimmed(), rule.keyword.trimmed());
        if (const qint64 other = first.value(place)) {
            tell(QStringLiteral("same keyword as rule %1").arg(other));
        } else {
            first.insert(place, rule.id);
        }
    }
    // What follows a rule that is never reached isn't either; those in a loop have been named.
    while (!unreachable.empty()) {
        const Rule* before = unreachable.back();
        unreachable.pop_back();
        for (const Rule* rule : graph.followers(*before)) {
            if (graph.isInLoop(*rule)) continue;
            troubles[rule->id].prepend(
                QStringLiteral("never reached: rule %1 before it is never reached").arg(before->id));
            unreachable.push_back(rule);
        }
    }
    return troubles;
}

std::vector<RulePlace> rulePlaces(const std::vector<Rule>& rules) {
    const Graph graph(rules);
    std::vector<RulePlace> places;
    QSet<qint64> placed;
    int line = 0;
    // Without recursion, since a chat may have any number of steps.
    const auto placeFrom = [&](const Rule& root) {
        std::vector<std::pair<const Rule*, int>> open{{&root, 0}};
        for (bool opensLine = false; !open.empty();) {
            const auto [rule, column] = open.back();
            open.pop_back();
            if (placed.contains(rule->id)) continue;
            placed.insert(rule->id);
            if (opensLine) ++line;
            const Rule* before = graph.previous(*rule);
            places.push_back({rule->id, column, line, before ? before->id : 0, before && column == 0});
            const auto& followers = graph.followers(*rule);
            opensLine = true;
            for (auto next = followers.rbegin(); next != followers.rend(); ++next) {
                if (placed.contains((*next)->id)) continue;
                open.emplace_back(*next, column + 1);
                opensLine = false;
            }
        }
        ++line;
    };
    for (const Rule& rule : rules)
        if (!graph.previous(rule)) placeFrom(rule);
    for (const Rule& rule : rules)  // loops, which begin nowhere
        if (!placed.contains(rule.id)) placeFrom(rule);
    return places;
}

}  // namespace kibo
