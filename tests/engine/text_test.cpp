#include <gtest/gtest.h>

#include "engine/message_sender.h"
#include "engine/phone_number.h"
#include "engine/text_expansion.h"

namespace kibo {
namespace {

const QDateTime kNow(QDate(2026, 3, 14), QTime(15, 9, 26));

std::string expand(const QByteArray& text, double random = 0) {
    const auto result = expandAlternatives(QString::fromUtf8(text), [random] { return random; });
    return result ? result.value().toStdString() : "(" + result.failure().text + ")";
}

TEST(Expansion, ChoosesOneMemberOfEachGroup) {
    EXPECT_EQ(expand("[a|b] and [c|d]", 0), "a and c");
    EXPECT_EQ(expand("[a|b] and [c|d]", 0.999), "b and d");
    EXPECT_EQ(expand("x[]y[|]z"), "xyz");
    EXPECT_EQ(expand("user's own {1}, [a|b]"), "user's own a, a") << "markers are replaced wherever they stand";
    EXPECT_EQ(expand("[a[b]"), "a[b") << "the first brackets belong together, whatever lies between";
    std::string chosen;
    for (double r = 0; r < 1; r += 0.125) chosen += expand("[a|b|c|d]", r);
    EXPECT_EQ(chosen, "aabbccdd");
}

TEST(Expansion, RefusesMoreThanNineGroupsAndReversedBrackets) {
    EXPECT_EQ(expand("[1][2][3][4][5][6][7][8][9]"), "123456789");
    for (const char* refused : {"[1][2][3][4][5][6][7][8][9][10]", "a] [b|c]", "late ]"})
        EXPECT_EQ(expand(refused).front(), '(') << refused;
}

TEST(Expansion, BadInputIsReadByTheSameRule) {
    EXPECT_EQ(expand("[a[b|c]d"), "a[bd");
    EXPECT_EQ(expand("[[a]]").front(), '(') << "the second \"]\" stands before the appended \"[\"";
    EXPECT_EQ(expand("late [a"), "late a[") << "closed by the appended group";
    const auto many = [](const char* piece) { return QByteArray(piece).repeated(10'000); };
    EXPECT_EQ(expand("x" + many("[")), ("x" + many("[")).toStdString());
    for (const char* piece : {"]", "[]", "][", "[a|b]"}) EXPECT_EQ(expand(many(piece)).front(), '(') << piece;
    // Each of nine members names the next one ten times.
    QByteArray growing;
    for (int group = 2; group <= 10; ++group)
        growing += '[' + QByteArray("{" + QByteArray::number(group) + "}").repeated(10) + ']';
    EXPECT_EQ(expand(growing), "(the alternatives make the text too long)");
}

TEST(Expansion, ReplacesCodesAlsoInTextWhoseBracketsAreRefused) {
    QString problem;
    const auto inMessage = [&](const QString& text) {
        return expandMessageText(
                   text, kNow, [] { return 0.0; }, &problem)
            .toStdString();
    };
    EXPECT_EQ(inMessage(u"a~rb\\nc\td\ne"_qs), "a\r\nb\r\nc d\ne");
    EXPECT_NE(inMessage(u"%time%"_qs).find("09:26"), std::string::npos);
    EXPECT_TRUE(problem.isEmpty());
    EXPECT_EQ(inMessage(u"a]~rb"_qs), "a]\r\nb");
    EXPECT_FALSE(problem.isEmpty());
    EXPECT_EQ(insertContactName(u"%name% %NAME%"_qs, u"Äni"_qs), u"Äni ÄNI"_qs);
}

TEST(TypableText, KeepsWhatCanBeTypedOnly) {
    EXPECT_EQ(typableText(u"a\r\nb\rc\nd"_qs), u"a\nb\nc\nd"_qs);
    EXPECT_EQ(typableText(QString::fromUtf8("👩‍👩‍👧\x01\x7f é")),
              QString::fromUtf8("👩‍👩‍👧 é"));
    QString broken = u"a"_qs;
    broken += QChar(0xD83D);
    EXPECT_EQ(typableText(broken + u"b"_qs), u"ab"_qs);
}

TEST(PhoneNumber, IsCleanedAndMadeInternational) {
    EXPECT_EQ(cleanedNumber(u"+62 (812) 000-1"_qs), u"628120001"_qs);
    const QString zero = u"0"_qs, indonesia = u"62"_qs;
    EXPECT_EQ(destinationNumber(u"0812-1"_qs, zero, indonesia), u"628121"_qs);
    EXPECT_EQ(destinationNumber(u"0812-1"_qs, zero, {}), u"08121"_qs);
    EXPECT_EQ(destinationNumber(u"628121"_qs, zero, indonesia), u"628121"_qs);
    for (const char* bad : {"", "000", "12a", "1.5", "١٢٣", "12\n", "<b>"})
        EXPECT_FALSE(isPositiveNumber(QString::fromUtf8(bad))) << bad;
}

TEST(PhoneNumber, SpellingsOfOneSubscriberAreRecognised) {
    const QString number = u"6281234567890"_qs;
    EXPECT_TRUE(sameSubscriber(number, u"+62 812-3456-7890"_qs));
    EXPECT_TRUE(sameSubscriber(number, u"0812 3456 7890"_qs));
    EXPECT_FALSE(sameSubscriber(number, u"+62 812-3456-7891"_qs));
    EXPECT_FALSE(sameSubscriber(number, u"7890"_qs)) << "too short to tell";
    EXPECT_FALSE(sameSubscriber({}, {}));
    EXPECT_TRUE(looksLikeNumber(QString::fromUtf8("\u202a+62 812‑3456‑7890\u202c")));
    EXPECT_FALSE(looksLikeNumber(u"Agent 007"_qs));
}

}  // namespace
}  // namespace kibo
