#include "base/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "base/log.h"
#include "base/settings_file.h"
#include "support/files.h"

namespace kibo {
namespace {

class SettingsTest : public testing::Test {
 protected:
    QString file() const { return folder_.filePath(QStringLiteral("kibo.ini")); }
    std::string content() const { return test::contentOf(file()).toStdString(); }
    void setContent(const QByteArray& text) const { test::written(file(), text); }

    QTemporaryDir folder_;
};

TEST_F(SettingsTest, whatIsMissingOrEmptyIsWrittenAsItsDefault) {
    const std::string first =
        "[kibo]\nGetNumberInbox=Y\nPrefix=0\nNoSandBox=N\nUseIE=Y\nShowIE=N\nUseMDB=N\n"
        "NoAgent=Y\nSpeed=NORMAL\nScheduled=N\nChromePortable=N\n[DB]\nPort=3306\n";
    EXPECT_EQ(loadSettings(file()).Scheduled, QString()) << "counts from the next start on";
    EXPECT_EQ(content(), first);
    EXPECT_EQ(loadSettings(file()).Scheduled, QStringLiteral("N"));
    EXPECT_EQ(content(), first) << "a second start changes nothing";
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);

    setContent("[kibo]\r\nSpeed=\r\nUseMDB=Y\r\nLimitSelect=y\r\n[DB]\r\nUseMDB=\r\ndsn=shop\r\n");
    const Settings settings = loadSettings(file());
    EXPECT_EQ(settings.Speed, QStringLiteral("NORMAL"));
    EXPECT_EQ(settings.dsn, QStringLiteral("shop"));
    EXPECT_FALSE(isYes(settings.LimitSelect)) << "only the capital letter means yes";
    EXPECT_THAT(content(), testing::StartsWith("[kibo]\r\nSpeed=NORMAL\r\nUseMDB=N\r\nLimitSelect=y\r\n"));
    EXPECT_THAT(content(), testing::EndsWith("[DB]\r\nUseMDB=\r\ndsn=shop\r\nPort=3306\r\n"));
}

TEST_F(SettingsTest, valuesAreCutButAddressesAreNot) {
    const QByteArray address = "https://" + QByteArray(100, 'x') + "/";
    setContent("[kibo]\nEXE=" + address + "\nStartAddress=" + address + "\nChatAddress=" + address +
               "\nChromeDriver=" + QByteArray(2000, 'y') + "\nProfil=" + QByteArray(48, 'z') +
               "\xC3\xA9\nDummyContact=" + QByteArray(48, '\xE4') + "\x80x\n");
    const Settings settings = loadSettings(file());
    EXPECT_EQ(settings.EXE, QString::fromLatin1(address.left(49)));
    EXPECT_EQ(settings.StartAddress, QString::fromLatin1(address));
    EXPECT_EQ(settings.ChatAddress, QString::fromLatin1(address));
    EXPECT_EQ(settings.ChromeDriver.size(), 1023);
    EXPECT_EQ(settings.Profil, QString(48, QLatin1Char('z'))) << "half a character must not remain";

    EXPECT_EQ(settings.DummyContact, QString(48, QChar(u'ä')) + QChar(u'€')) << "an ANSI program's";

    EXPECT_TRUE(WriteIni(QStringLiteral("DB"), QStringLiteral("password"), QStringLiteral("gehéim"), file()));
    EXPECT_EQ(ReadIni(QStringLiteral("db"), QStringLiteral("PASSWORD"), file()), QStringLiteral("gehéim"));
}

TEST_F(SettingsTest, valuesThatCannotBeMeantAreNamedWithoutRepeatingThem) {
    setContent("[DB]\nUseMDB=y\nPort=33o6\npassword=" + QByteArray(49, 'p') + "!\nuser=" + QByteArray(49, 'u') +
               "\n[kibo]\nMulti=Y\nHeadless=yes\nBreak=1.5\nAfterSend=ten\nStartAddress=" + QByteArray(1024, 'x') +
               "\nSpeed=y\n");
    QStringList connection, others;
    for (const SettingProblem& problem : loadSettings(file()).problems) {
        (problem.ofConnection ? connection : others).append(problem.key);
        EXPECT_TRUE(problem.text.contains(problem.key) && !problem.text.contains(QStringLiteral("pp")));
        EXPECT_TRUE(log::newestLines().join(u'\n').contains(problem.text));
    }
    EXPECT_EQ(connection.join(u' ').toStdString(), "password Port UseMDB");
    EXPECT_EQ(others.join(u' ').toStdString(), "AfterSend Headless StartAddress");
}

TEST_F(SettingsTest, aFileThatIsNotOneIsToldAndLeftAsItIs) {
    setContent(QByteArray("\xFF\xFE[\0D\0B\0]\0", 10));
    const std::string before = content();
    const QList<SettingProblem> problems = loadSettings(file()).problems;
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems[0].ofConnection && problems[0].text.contains(QStringLiteral("UTF-16")));
    EXPECT_EQ(content(), before);

    ASSERT_TRUE(QFile::remove(file()));
    EXPECT_EQ(settingsProblem(file()), QString()) << "no file yet is no problem";
    ASSERT_TRUE(QDir().mkpath(file()));
    EXPECT_TRUE(settingsProblem(file()).contains(file()));
    EXPECT_EQ(loadSettings(file()).Speed, QStringLiteral("NORMAL"));
    EXPECT_TRUE(WriteIni(QStringLiteral("kibo"), QStringLiteral("Speed"), QStringLiteral("SLOW"), file()));
}

TEST(LogTest, sameTroubleIsCountedAndNotRepeated) {
    for (const auto tell : {log::warning, log::error}) {
        const quint64 before = log::revision();
        const QString full = QStringLiteral("no space left %1").arg(before);
        for (int i = 0; i < 5; ++i) tell("app", full);
        EXPECT_EQ(log::revision(), before + 1);
        tell("app", full + QStringLiteral(" elsewhere"));
        EXPECT_EQ(log::revision(), before + 2);
    }
}

}  // namespace
}  // namespace kibo
