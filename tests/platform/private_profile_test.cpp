// The same cases run on Debian and, under Wine, against the Windows calls: the two can't drift apart unseen.
#include "platform/private_profile.h"

#include <gtest/gtest.h>

#include "temporary_folder.h"

namespace kibo::platform {
namespace {

const struct {
    const char* name;
    std::string text;
    const char *section, *key;
    std::string expected;
} kReadCases[] = {
    {"lastLineOpen", "[kibo]\r\nSpeed=SLOW", "kibo", "Speed", "SLOW"},
    {"caseBlind", "[KIBO]\r\nsPEED=Slow\r\n", "kibo", "Speed", "Slow"},
    {"blanksDropped", "  [kibo]  \r\n\t Speed \t=  SLOW  \t\r\n", "kibo", "Speed", "SLOW"},
    {"doubleQuotes", "[DB]\r\npassword=\" a;b \"\r\n", "DB", "password", " a;b "},
    {"onePairOnly", "[DB]\r\npassword=\"\"a\"\"\r\n", "DB", "password", "\"a\""},
    {"unevenQuotes", "[DB]\r\npassword=\"a'\r\n", "DB", "password", "\"a'"},
    {"semicolonInValue", "[kibo]\r\nPHP=a ; b\r\n", "kibo", "PHP", "a ; b"},
    {"commentLine", "[kibo]\r\n;Speed=FAST\r\n; Speed=FAST\r\nSpeed=SLOW\r\n", "kibo", "Speed", "SLOW"},
    {"lineWithoutEquals", "[kibo]\r\nSpeed\r\n", "kibo", "Speed", ""},
    {"firstKeyWins", "[kibo]\r\nSpeed=A\r\nSpeed=B\r\n", "kibo", "Speed", "A"},
    {"firstSectionWins", "[kibo]\r\nSpeed=A\r\n[DB]\r\n[kibo]\r\nSpeed=B\r\n", "kibo", "Speed", "A"},
    {"keyBeforeAnySection", "Speed=SLOW\r\n[kibo]\r\n", "kibo", "Speed", ""},
    {"textAfterSection", "[kibo] note\r\nSpeed=SLOW\r\n", "kibo", "Speed", "SLOW"},
    {"sectionNotClosed", "[kibo\r\nSpeed=SLOW\r\n", "kibo", "Speed", ""},
    {"sectionWithBlanks", "[ kibo ]\r\nSpeed=A\r\n", "kibo", "Speed", "A"},
    {"bracketsInSection", "[DB][kibo]\r\nSpeed=A\r\n", "DB][kibo", "Speed", "A"},
    {"byteOrderMark", "\xEF\xBB\xBF[kibo]\r\nSpeed=A\r\n", "kibo", "Speed", "A"},
    {"carriageReturnsOnly", "[kibo]\rSpeed=A\rSlow=1\r", "kibo", "Speed", "A"},
    {"blanksInQuestion", "[kibo]\r\nSpeed=A\r\n", " kibo ", " Speed ", "A"},
    {"cut", "[kibo]\r\nEXE=" + std::string(50, 'x') + "\r\n", "kibo", "EXE", std::string(49, 'x')},
    {"quotesCountNot", "[kibo]\r\nEXE=\"" + std::string(50, 'x') + "\"\r\n", "kibo", "EXE", std::string(49, 'x')},
    {"codePage", "[DB]\r\npassword=sch\xF6n \xDF\r\n", "DB", "password", "sch\xC3\xB6n \xC3\x9F"},
    {"halfACharacter", "[DB]\r\npassword=" + std::string(48, 'x') + "\xC3\xA9\r\n", "DB", "password",
     std::string(48, 'x')},
};

TEST(PrivateProfile, isRead) {
    const TemporaryFolder folder;
    const std::string file = folder.file("kibo.ini");
    for (const auto& c : kReadCases) {
        writeContent(file, c.text);
        EXPECT_EQ(readPrivateProfileString(c.section, c.key, file, 49), c.expected) << c.name;
    }
}

const struct {
    const char *name, *before, *section, *key, *value, *after;
} kWriteCases[] = {
    {"replaces", "[kibo]\r\nSpeed=SLOW\r\nSlow=1\r\n", "kibo", "Speed", "NORMAL",
     "[kibo]\r\nSpeed=NORMAL\r\nSlow=1\r\n"},
    {"addsKey", "[kibo]\r\nSlow=1\r\n[DB]\r\nPort=1\r\n", "kibo", "Speed", "SLOW",
     "[kibo]\r\nSlow=1\r\nSpeed=SLOW\r\n[DB]\r\nPort=1\r\n"},
    {"addsSection", "[kibo]\r\nSlow=1\r\n", "DB", "Port", "3306", "[kibo]\r\nSlow=1\r\n[DB]\r\nPort=3306\r\n"},
    {"findsCaseBlind", "[KIBO]\r\nSPEED=SLOW\r\n", "kibo", "Speed", "NORMAL", "[KIBO]\r\nSPEED=NORMAL\r\n"},
    {"keepsOthers", "; head\r\n[kibo]\r\n; speed:\r\nSpeed=SLOW\r\nstray\r\nPHP=\"a \"\r\n", "kibo", "Speed", "NORMAL",
     "; head\r\n[kibo]\r\n; speed:\r\nSpeed=NORMAL\r\nstray\r\nPHP=\"a \"\r\n"},
    {"changesFirstOfTwo", "[kibo]\r\nSpeed=A\r\nSpeed=B\r\n[kibo]\r\nSpeed=C\r\n", "kibo", "Speed", "D",
     "[kibo]\r\nSpeed=D\r\nSpeed=B\r\n[kibo]\r\nSpeed=C\r\n"},
    {"closesOpenLine", "[kibo]\r\nSlow=1", "kibo", "Speed", "SLOW", "[kibo]\r\nSlow=1\r\nSpeed=SLOW\r\n"},
    {"blanksAroundEquals", "[kibo]\r\n  Speed = SLOW \r\n", "kibo", "Speed", "A", "[kibo]\r\nSpeed=A\r\n"},
};

TEST(PrivateProfile, changesOneLine) {
    const TemporaryFolder folder;
    const std::string file = folder.file("kibo.ini");
    for (const auto& c : kWriteCases) {
        writeContent(file, c.before);
        EXPECT_TRUE(writePrivateProfileString(c.section, c.key, c.value, file).ok()) << c.name;
        EXPECT_EQ(contentOf(file), c.after) << c.name;
    }
    EXPECT_EQ(folder.entries(), 1);
}

TEST(PrivateProfile, createsAMissingFileButForgesNoLinesAndWritesIntoNoFolder) {
    const TemporaryFolder folder;
    const std::string file = folder.file("kibo.ini");
    EXPECT_TRUE(checkPrivateProfile(file).ok());
    EXPECT_EQ(readPrivateProfileString("kibo", "Speed", file, 49), "");
    EXPECT_EQ(writePrivateProfileString("kibo", "Profil", "a\r\nUseBotEXE=Y", file).failure().kind,
              FailureKind::InvalidArgument);
    EXPECT_FALSE(writePrivateProfileString("kibo", "Profil\n", "a", file).ok());
    EXPECT_FALSE(writePrivateProfileString("kibo", "Profil", std::string_view("a\0b", 3), file).ok());
    EXPECT_EQ(folder.entries(), 0);
    ASSERT_TRUE(writePrivateProfileString("DB", "Port", "3306", file).ok());
    ASSERT_TRUE(writePrivateProfileString("kibo", "Speed", "NORMAL", file).ok());
    EXPECT_EQ(readPrivateProfileString("DB", "Port", file, 49), "3306");
    EXPECT_EQ(folder.entries(), 1);

    const std::string path = folder.path().string();
    EXPECT_EQ(readPrivateProfileString("kibo", "Speed", path, 49), "");
    EXPECT_EQ(writePrivateProfileString("kibo", "Speed", "SLOW", path).failure().kind, FailureKind::Io);
    EXPECT_EQ(checkPrivateProfile(path).failure().kind, FailureKind::Io);
    EXPECT_FALSE(writePrivateProfileString("kibo", "Speed", "SLOW", folder.file("none/kibo.ini")).ok());
}

}  // namespace
}  // namespace kibo::platform
