#include "base/settings.h"

#include <QDir>

#include "base/log.h"
#include "base/settings_file.h"
#include "platform/machine.h"
#include "platform/private_profile.h"

namespace kibo {
namespace {

enum Section { kDb, kKibo };

QString nameOf(Section section) {
    return section == kDb ? QStringLiteral("DB") : QStringLiteral("kibo");
}

enum Kind { kText, kYesNo, kNumber, kEveryOrLast, kLongText, kProgram };

struct Option {
    Section section;
    const char* key;
    QString Settings::*member;
    Kind kind = kText;
};

#define OPTION(section, name, ...) \
    { section, #name, &Settings::name __VA_OPT__(, ) __VA_ARGS__ }

/// Every option there is, in the order in which they are read.
const Option kOptions[] = {
    OPTION(kDb, dsn),
    OPTION(kDb, user),
    OPTION(kDb, password),
    OPTION(kKibo, Profil),
    OPTION(kKibo, DummyContact),
    OPTION(kKibo, UseBotPHP, kYesNo),
    OPTION(kKibo, UseBotEXE, kYesNo),
    OPTION(kKibo, PHP),
    OPTION(kKibo, EXE, kProgram),
    OPTION(kKibo, CountryCode),
    OPTION(kKibo, IntervalMode1),
    OPTION(kKibo, Incognito, kYesNo),
    OPTION(kKibo, UseCapture, kYesNo),
    OPTION(kKibo, CaptureImage),
    OPTION(kKibo, SendUsingClipboard, kYesNo),
    OPTION(kKibo, SendUsingDummy, kYesNo),
    OPTION(kDb, MySQL_WithoutDSN, kYesNo),
    OPTION(kDb, MySQL_Server),
    OPTION(kDb, MySQL_DB),
    OPTION(kKibo, DebugMode, kYesNo),
    OPTION(kDb, Port, kNumber),
    OPTION(kKibo, DisableRead, kYesNo),
    OPTION(kKibo, DisableDoubleInbox, kYesNo),
    OPTION(kKibo, AutoStart, kYesNo),
    OPTION(kKibo, HideChrome, kYesNo),
    OPTION(kKibo, Multi, kYesNo),
    OPTION(kKibo, Break, kNumber),
    OPTION(kKibo, AfterSend, kNumber),
    OPTION(kKibo, GetNumberInbox, kYesNo),
    OPTION(kKibo, Scheduled, kYesNo),
    OPTION(kKibo, ChromePortable, kYesNo),
    OPTION(kKibo, VBSleep, kYesNo),
    OPTION(kKibo, ChromeBinary),
    OPTION(kKibo, Headless, kYesNo),
    OPTION(kKibo, TmpFolder),
    OPTION(kKibo, ClearTmp, kYesNo),
    OPTION(kKibo, CaptureQR, kYesNo),
    OPTION(kKibo, Prefix),
    OPTION(kDb, UseMDB, kYesNo),
    OPTION(kDb, HideMe, kYesNo),
    OPTION(kKibo, Slow),
    OPTION(kKibo, Speed),
    OPTION(kKibo, NoAgent, kYesNo),
    OPTION(kKibo, LimitSelect, kYesNo),
    OPTION(kKibo, NoSandBox, kYesNo),
    OPTION(kKibo, UseIE, kYesNo),
    OPTION(kKibo, ShowIE, kYesNo),
    OPTION(kKibo, InboxRead, kEveryOrLast),
    OPTION(kKibo, ExpandText),
    OPTION(kKibo, InboxMedia, kYesNo),
    OPTION(kKibo, InboxFolder),
    OPTION(kKibo, InboxMaxMB, kNumber),
    OPTION(kKibo, MaxFileMB, kNumber),
    OPTION(kKibo, MessageDays, kNumber),
    OPTION(kKibo, BrowserMaxMB, kNumber),
    OPTION(kKibo, BrowserMaxHours, kNumber),
    OPTION(kKibo, StartAddress, kLongText),
    OPTION(kKibo, ChatAddress, kLongText),
    OPTION(kKibo, PageLanguage),
    OPTION(kKibo, ChromeDriver, kLongText),
    OPTION(kKibo, ElementServer, kLongText),
    OPTION(kKibo, SupportNumber),
};

#undef OPTION

/// Whether a default also counts for this run, or only from the next start on.
enum class Takes { AtOnce, NextStart };

struct Default {
    Section section;  ///< where it is written
    const char* key;
    QString Settings::*member;
    const char* value;
    Takes takes = Takes::AtOnce;
};

/// Applied in this order, each when its option is still empty. GetNumberInbox stands here twice, UseMDB is written
/// where it is not read, and Scheduled is left empty for this run: all three as intended, for what a first start
/// leaves in the file is known to those who install it.
const Default kDefaults[] = {
    {kKibo, "GetNumberInbox", &Settings::GetNumberInbox, "N", Takes::NextStart},
    {kKibo, "Prefix", &Settings::Prefix, "0"},
    {kKibo, "NoSandBox", &Settings::NoSandBox, "N"},
    {kKibo, "UseIE", &Settings::UseIE, "Y"},
    {kKibo, "ShowIE", &Settings::ShowIE, "N"},
    {kKibo, "UseMDB", &Settings::UseMDB, "N"},
    {kDb, "Port", &Settings::Port, "3306"},
    {kKibo, "NoAgent", &Settings::NoAgent, "Y"},
    {kKibo, "Speed", &Settings::Speed, "NORMAL"},
    {kKibo, "Scheduled", &Settings::Scheduled, "N", Takes::NextStart},
    {kKibo, "ChromePortable", &Settings::ChromePortable, "N"},
    {kKibo, "GetNumberInbox", &Settings::GetNumberInbox, "Y"},
};

bool looksLikeYes(const QString& value) {
    static const QStringList kYes{QStringLiteral("y"), QStringLiteral("yes"), QStringLiteral("true"),
                                  QStringLiteral("on"), QStringLiteral("1")};
    return !isYes(value) && kYes.contains(value.toLower());
}

bool isLong(const Option& option, const QString& file) {
    if (option.kind != kProgram) return option.kind == kLongText;
    const QString whole = readLongIni(nameOf(option.section), QString::fromLatin1(option.key), file);
    return QDir::fromNativeSeparators(whole).section(u'/', -1) == responderFileName();
}

/// What can't be meant as it stands, without the value, which may be a password; empty: nothing.
QString problemOf(const Option& option, const QString& value, const QString& file) {
    const QString key = QString::fromLatin1(option.key);
    const bool mayBeLong = isLong(option, file);
    if ((mayBeLong ? isCutByReadLongIni : isCutByReadIni)(nameOf(option.section), key, file))
        return QStringLiteral("%1 is longer than %2 bytes and was cut").arg(key).arg(mayBeLong ? 1023 : 49);
    if (option.kind == kYesNo && looksLikeYes(value)) return key + QStringLiteral(" is on with a capital Y only");
    if (option.kind == kEveryOrLast && !value.isEmpty() && value != QStringLiteral("every") &&
        value != QStringLiteral("last"))
        return key + QStringLiteral(" is neither every nor last");
    bool isNumber = value.isEmpty();
    if (!isNumber) (void)value.toDouble(&isNumber);
    if (option.kind == kNumber && !isNumber) return key + QStringLiteral(" is no number");
    return {};
}

}  // namespace

Settings loadSettings(const QString& file) {
    Settings settings;
    const QString unreadable = settingsProblem(file);
    if (!unreadable.isEmpty()) settings.problems.append({{}, unreadable, true});
    for (const Option& option : kOptions) {
        const QString key = QString::fromLatin1(option.key);
        QString& value = settings.*option.member;
        value = (isLong(option, file) ? readLongIni : ReadIni)(nameOf(option.section), key, file);
        const QString problem = problemOf(option, value, file);
        if (problem.isEmpty()) continue;
        const bool ofConnection = option.section == kDb && option.member != &Settings::HideMe;
        settings.problems.append({key, QStringLiteral("kibo.ini: ") + problem, ofConnection});
        log::warning("app", settings.problems.back().text);
    }
    for (const Default& preset : kDefaults) {
        if (!(settings.*preset.member).isEmpty()) continue;
        const QString value = QString::fromLatin1(preset.value);
        if (unreadable.isEmpty()) WriteIni(nameOf(preset.section), QString::fromLatin1(preset.key), value, file);
        if (preset.takes == Takes::AtOnce) settings.*preset.member = value;
    }
    return settings;
}

QString responderFileName() {
    return QString::fromStdString(platform::programFileName("autochat"));
}

QString settingsProblem(const QString& file) {
    const Result<void> readable = platform::checkPrivateProfile(file.toLocal8Bit().toStdString());
    return readable ? QString() : QString::fromLocal8Bit(readable.failure().text);
}

}  // namespace kibo
