#include "base/settings.h"

#include "base/settings_file.h"
#include "platform/private_profile.h"

namespace kibo {
namespace {

enum Section { kDb, kKibo };

QString nameOf(Section section) {
    return section == kDb ? QStringLiteral("DB") : QStringLiteral("kibo");
}

struct Option {
    Section section;
    const char* key;
    QString Settings::*member;
    QString (*read)(const QString&, const QString&, const QString&) = ReadIni;
};

#define OPTION(section, name) \
    { section, #name, &Settings::name }

/// Every option there is, in the order in which they are read.
const Option kOptions[] = {
    OPTION(kDb, dsn),
    OPTION(kDb, user),
    OPTION(kDb, password),
    OPTION(kKibo, Profil),
    OPTION(kKibo, DummyContact),
    OPTION(kKibo, UseBotPHP),
    OPTION(kKibo, UseBotEXE),
    OPTION(kKibo, PHP),
    OPTION(kKibo, EXE),
    OPTION(kKibo, CountryCode),
    OPTION(kKibo, IntervalMode1),
    OPTION(kKibo, Incognito),
    OPTION(kKibo, UseCapture),
    OPTION(kKibo, CaptureImage),
    OPTION(kKibo, SendUsingClipboard),
    OPTION(kKibo, SendUsingDummy),
    OPTION(kDb, MySQL_WithoutDSN),
    OPTION(kDb, MySQL_Server),
    OPTION(kDb, MySQL_DB),
    OPTION(kKibo, DebugMode),
    OPTION(kDb, Port),
    OPTION(kKibo, DisableRead),
    OPTION(kKibo, DisableDoubleInbox),
    OPTION(kKibo, AutoStart),
    OPTION(kKibo, HideChrome),
    OPTION(kKibo, Multi),
    OPTION(kKibo, Break),
    OPTION(kKibo, AfterSend),
    OPTION(kKibo, GetNumberInbox),
    OPTION(kKibo, Scheduled),
    OPTION(kKibo, ChromePortable),
    OPTION(kKibo, VBSleep),
    OPTION(kKibo, ChromeBinary),
    OPTION(kKibo, Headless),
    OPTION(kKibo, TmpFolder),
    OPTION(kKibo, ClearTmp),
    OPTION(kKibo, CaptureQR),
    OPTION(kKibo, Prefix),
    OPTION(kDb, UseMDB),
    OPTION(kDb, HideMe),
    OPTION(kKibo, Slow),
    OPTION(kKibo, Speed),
    OPTION(kKibo, NoAgent),
    OPTION(kKibo, LimitSelect),
    OPTION(kKibo, NoSandBox),
    OPTION(kKibo, UseIE),
    OPTION(kKibo, ShowIE),
    OPTION(kKibo, MaxFileMB),
    {kKibo, "StartAddress", &Settings::StartAddress, readLongIni},
    {kKibo, "ChatAddress", &Settings::ChatAddress, readLongIni},
    {kKibo, "ChromeDriver", &Settings::ChromeDriver, readLongIni},
    {kKibo, "ElementServer", &Settings::ElementServer, readLongIni},
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

}  // namespace

Settings loadSettings(const QString& file) {
    Settings settings;
    for (const Option& option : kOptions)
        settings.*option.member = option.read(nameOf(option.section), QString::fromLatin1(option.key), file);
    for (const Default& preset : kDefaults) {
        if (!(settings.*preset.member).isEmpty()) continue;
        const QString value = QString::fromLatin1(preset.value);
        WriteIni(nameOf(preset.section), QString::fromLatin1(preset.key), value, file);
        if (preset.takes == Takes::AtOnce) settings.*preset.member = value;
    }
    return settings;
}

QString settingsProblem(const QString& file) {
    const Result<void> readable = platform::checkPrivateProfile(file.toLocal8Bit().toStdString());
    return readable ? QString() : QString::fromLocal8Bit(readable.failure().text);
}

}  // namespace kibo
