#include "tools/rule_csv.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "base/settings_file.h"
#include "tools/exclusion_table.h"
#include "tools/responder_switch.h"

namespace kibo::test {
namespace {

TEST(RuleCsv, WhatIsWrittenIsReadAgain) {
    const std::vector<Rule> rules{{.id = 7,
                                   .profile = u"1"_qs,
                                   .keyword = u"a,b;\"c\""_qs,
                                   .previous = u"3"_qs,
                                   .logic = kContainsLogic,
                                   .answer = u"one\n\"two\", three 😀\n"_qs,
                                   .media = u"C:\\a b.jpg"_qs,
                                   .file = u"/f"_qs,
                                   .program = u"bot"_qs,
                                   .script = u"http://x/?a=1,2"_qs,
                                   .answersByScript = true,
                                   .expectsNext = true,
                                   .kind = RuleKind::End},
                                  {.id = 3, .profile = u"1"_qs, .keyword = u"3"_qs}};
    const auto read = rulesFromCsv(rulesToCsv(rules));
    ASSERT_TRUE(read) << read.failure().text;
    EXPECT_EQ(read.value(), rules);
}

TEST(RuleCsv, TakesWhatSpreadsheetsWriteAndNamesWhatIsWrong) {
    const auto read = rulesFromCsv("Answer;Keyword;logic\r\n\"it's; fine\";it's;LIKE\r\n;;\r\nx;y;=");
    ASSERT_FALSE(read);
    EXPECT_EQ(read.failure().text, "row 3: the keyword is empty");
    const auto rules = rulesFromCsv("Answer;Keyword;logic\r\n\"it's; fine\";it's;LIKE\r\n\r\nx;y;=");
    ASSERT_TRUE(rules) << rules.failure().text;
    EXPECT_EQ(rules.value(),
              (std::vector<Rule>{{.keyword = u"it`s"_qs, .logic = kContainsLogic, .answer = u"it`s; fine"_qs},
                                 {.keyword = u"y"_qs, .answer = u"x"_qs}}));
    const struct {
        const char *file, *words;
    } cases[] = {{"", "the file is empty"},
                 {"keyword,text\na,b\n", "the first row names no column answer"},
                 {"keyword,answer\n\"a,b\n", "a quotation mark is never closed, behind row 1"},
                 {"keyword,answer\na,\xE4\n", "the file isn't UTF-8; save it as \"CSV UTF-8\""},
                 {"keyword,answer,tipe\na,b,5\n", "row 2: tipe must be a number from 0 to 4"},
                 {"keyword,answer,respon\na,b,yes\n", "row 2: respon and neednext must be 0 or 1"},
                 {"rowid,keyword,answer\n1,a,b\n1,c,d\n", "row 3: another row has the same rowid, 1"}};
    for (const auto& one : cases) {
        const auto refused = rulesFromCsv(one.file);
        ASSERT_FALSE(refused) << one.file;
        EXPECT_EQ(refused.failure().text, one.words);
    }
}

TEST(ResponderSwitch, NamesTheProgramBesideTheGatewayHoweverLongItsPathIs) {
    QTemporaryDir folder;
    const QString home = folder.filePath(QString(60, u'x'));
    ASSERT_TRUE(QDir().mkpath(home));
    const QString file = home + u"/kibo.ini"_qs;
    Settings settings = loadSettings(file);
    ResponderSwitch responder(settings, file, home);
    for (const bool on : {true, false}) {
        responder.set(on);
        for (const Settings& seen : {settings, loadSettings(file)}) {
            EXPECT_EQ(isYes(seen.UseBotEXE), on);
            EXPECT_EQ(seen.EXE, home + u"/autochat"_qs);
            EXPECT_TRUE(seen.problems.isEmpty());
        }
    }
    EXPECT_EQ(responder.otherProgram(), QString());
    settings.EXE = u"/opt/bot"_qs;
    EXPECT_EQ(responder.otherProgram(), u"/opt/bot"_qs);
}

TEST(ExclusionList, RowsOfTheClipboardAreCounted) {
    EXPECT_EQ(pastedNumbers(u"621\r\nOur team\tx\r\n\r\n"_qs),
              QStringList({u"621"_qs, u"Our team"_qs, u""_qs, u""_qs}));
    EXPECT_EQ(pastedNumbers(u"621\n622"_qs), QStringList({u"621"_qs, u"622"_qs}));
    for (const QString& refused : {u"shop"_qs, u"1 or 1=1"_qs, u"007"_qs, u""_qs, u"1.5"_qs})
        EXPECT_NE(ExclusionTable::trouble(refused), QString()) << refused.toStdString();
    EXPECT_EQ(ExclusionTable::trouble(u"27"_qs), QString());
}

}  // namespace
}  // namespace kibo::test
