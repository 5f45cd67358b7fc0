#include "responder/rule_graph.h"

#include <gtest/gtest.h>

namespace kibo::test {
namespace {

Rule rule(qint64 id, const char* previous, bool expectsNext, RuleKind kind = RuleKind::Text) {
    return {.id = id,
            .keyword = QString::number(id),
            .previous = QLatin1String(previous),
            .expectsNext = expectsNext,
            .kind = kind};
}

/// "id: words" of each rule that something is wrong with.
std::string troubles(const std::vector<Rule>& rules) {
    const auto found = ruleTroubles(rules);
    QStringList told;
    for (const Rule& one : rules)
        if (found.contains(one.id)) told.append(QStringLiteral("%1: %2").arg(one.id).arg(found[one.id].join(u", "_qs)));
    return told.join(u'\n').toStdString();
}

TEST(RuleTroubles, AConversationThatGoesOnHasNone) {
    EXPECT_EQ(troubles({rule(9, "", false, RuleKind::End), rule(8, "", true, RuleKind::Back),
                        rule(7, "99", false, RuleKind::NotFound), rule(6, "", true, RuleKind::Welcome),
                        rule(1, "6", true), rule(2, " 1 ", true), rule(3, "1", false), rule(4, "2", false)}),
              "");
}

TEST(RuleTroubles, NamesWhatIsNeverReachedAndWhereAChatEnds) {
    EXPECT_EQ(troubles({rule(1, "99", true), rule(2, "1", true), rule(3, "2", false), rule(4, "x", false)}),
              "1: never reached: there is no rule 99\n"
              "2: never reached: rule 1 before it is never reached\n"
              "3: never reached: rule 2 before it is never reached\n"
              "4: never reached: there is no rule x");
    EXPECT_EQ(
        troubles({rule(1, "3", true), rule(2, "1", true), rule(3, "2", true), rule(4, "3", false), rule(5, "5", true)}),
        "1: never reached: the rules go round, 1 → 2 → 3 → 1\n"
        "2: never reached: the rules go round, 2 → 3 → 1 → 2\n"
        "3: never reached: the rules go round, 3 → 1 → 2 → 3\n"
        "4: never reached: rule 3 before it is never reached\n"
        "5: never reached: the rules go round, 5 → 5");
    EXPECT_EQ(troubles({rule(1, "", true), rule(2, "", false), rule(3, "2", false)}),
              "1: dead end: it needs a next answer, and no rule follows it\n"
              "3: rule 2 before it doesn't have NEED NEXT ANSWER");
    std::vector<Rule> same(4);
    for (size_t i = 0; i < same.size(); ++i) same[i] = {.id = static_cast<qint64>(i + 1), .keyword = u"price"_qs};
    same[2].logic = kContainsLogic;
    same[3].keyword = u"Price "_qs;
    EXPECT_EQ(troubles(same), "2: same keyword as rule 1") << "one that contains it, and one written otherwise, differ";
}

TEST(RulePlaces, FollowersStandToTheRightAndEveryRuleOnce) {
    const std::vector<Rule> rules{rule(1, "", true),    rule(2, "1", true), rule(3, "1", false), rule(4, "2", false),
                                  rule(5, "99", false), rule(6, "7", true), rule(7, "6", true)};
    const std::vector<RulePlace> expected{{1, 0, 0, 0, false}, {2, 1, 0, 1, false}, {4, 2, 0, 2, false},
                                          {3, 1, 1, 1, false}, {5, 0, 2, 0, false}, {6, 0, 3, 7, true},
                                          {7, 1, 3, 6, false}};
    EXPECT_EQ(rulePlaces(rules), expected);
    std::vector<Rule> chain;
    for (int id = 1; id <= 100'000; ++id) chain.push_back(rule(id, std::to_string(id - 1).c_str(), true));
    EXPECT_EQ(rulePlaces(chain).back().column, 99'999) << "as long as you like";
    EXPECT_EQ(ruleTroubles(chain).size(), 100'000) << "there is no rule 0";
}

}  // namespace
}  // namespace kibo::test
