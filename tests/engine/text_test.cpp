#include <gtest/gtest.h>

#include <set>

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
    EXPECT_EQ(expand("no group"), "no group");
    EXPECT_EQ(expand("[a|b] and [c|d]", 0), "a and c");
    EXPECT_EQ(expand("[a|b] and [c|d]", 0.999), "b and d");
    EXPECT_EQ(expand("x[]y[|]z"), "xyz");
    EXPECT_EQ(expand("user's own {1}, [a|b]"), "user's own a, a") << "markers are replaced wherever they stand";
    EXPECT_EQ(expand("[a[b]"), "a[b") << "the first brackets belong together, whatever lies between";
}

TEST(Expansion, EveryMemberIsChosenAboutEquallyOften) {
    std::set<std::string> seen;
    for (double r = 0; r < 1; r += 0.01) seen.insert(expand("[a|b|c|d]", r));
    EXPECT_EQ(seen, (std::set<std::string>{"a", "b", "c", "d"}));
}

TEST(Expansion, RefusesMoreThanNineGroupsAndReversedBrackets) {
    EXPECT_EQ(expand("[1][2][3][4][5][6][7][8][9]"), "123456789");
    EXPECT_EQ(expand("[1][2][3][4][5][6][7][8][9][10]").front(), '(');
    EXPECT_EQ(expand("a] [b|c]").front(), '(');
    EXPECT_EQ(expand("late ]").front(), '(');
    // Refused text goes out as it stood, with the other codes expanded.
    QString problem;
    EXPECT_EQ(expandMessageText(
                  QStringLiteral("a]~rb"), kNow, [] { return 0.0; }, &problem),
              QStringLiteral("a]\r\nb"));
    EXPECT_FALSE(problem.isEmpty());
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

TEST(Expansion, ReplacesCodes) {
    QString problem;
    const auto text = expandMessageText(
        QStringLiteral("a~rb\\nc\td\ne"), kNow, [] { return 0.0; }, &problem);
    EXPECT_EQ(text, QStringLiteral("a\r\nb\r\nc d\ne"));
    const auto time = expandMessageText(
        QStringLiteral("%time%"), kNow, [] { return 0.0; }, &problem);
    EXPECT_TRUE(time.contains(QStringLiteral("09:26"))) << time.toStdString();
    EXPECT_TRUE(problem.isEmpty());
    EXPECT_EQ(insertContactName(QStringLiteral("%name% %NAME%"), QStringLiteral("Äni")), QStringLiteral("Äni ÄNI"));
}

TEST(TypableText, KeepsWhatCanBeTypedOnly) {
    EXPECT_EQ(typableText(QStringLiteral("a\r\nb\rc\nd")), QStringLiteral("a\nb\nc\nd"));
    EXPECT_EQ(typableText(QString::fromUtf8("👩‍👩‍👧\x01\x7f é")),
              QString::fromUtf8("👩‍👩‍👧 é"));
    QString broken = QStringLiteral("a");
    broken += QChar(0xD83D);
    EXPECT_EQ(typableText(broken + QStringLiteral("b")), QStringLiteral("ab"));
}

TEST(PhoneNumber, IsCleanedAndMadeInternational) {
    EXPECT_EQ(cleanedNumber(QStringLiteral("+62 (812) 000-1")), QStringLiteral("628120001"));
    const QString zero = QStringLiteral("0"), indonesia = QStringLiteral("62");
    EXPECT_EQ(destinationNumber(QStringLiteral("0812-1"), zero, indonesia), QStringLiteral("628121"));
    EXPECT_EQ(destinationNumber(QStringLiteral("0812-1"), zero, {}), QStringLiteral("08121"));
    EXPECT_EQ(destinationNumber(QStringLiteral("628121"), zero, indonesia), QStringLiteral("628121"));
    for (const char* bad : {"", "000", "12a", "1.5", "١٢٣", "12\n", "<b>"})
        EXPECT_FALSE(isPositiveNumber(QString::fromUtf8(bad))) << bad;
}

TEST(PhoneNumber, SpellingsOfOneSubscriberAreRecognised) {
    const QString number = QStringLiteral("6281234567890");
    EXPECT_TRUE(sameSubscriber(number, QStringLiteral("+62 812-3456-7890")));
    EXPECT_TRUE(sameSubscriber(number, QStringLiteral("0812 3456 7890")));
    EXPECT_FALSE(sameSubscriber(number, QStringLiteral("+62 812-3456-7891")));
    EXPECT_FALSE(sameSubscriber(number, QStringLiteral("7890"))) << "too short to tell";
    EXPECT_FALSE(sameSubscriber({}, {}));
    EXPECT_TRUE(looksLikeNumber(QString::fromUtf8("\u202a+62 812‑3456‑7890\u202c")));
    EXPECT_FALSE(looksLikeNumber(QStringLiteral("Agent 007")));
}

}  // namespace
}  // namespace kibo
