#include "browser/launch.h"

#include <gtest/gtest.h>

#include <QJsonArray>

namespace kibo {
namespace {

const QString kYes = QStringLiteral("Y");
const QString kProfile = QStringLiteral("/k/profil/1");

TEST(Launch, ArgumentsFollowTheSettings) {
    Settings settings;
    const QStringList usual = launchArguments(settings, kProfile);
    EXPECT_EQ(usual.first(), QStringLiteral("--no-sandbox"));
    EXPECT_EQ(usual.last(), QStringLiteral("--user-data-dir=/k/profil/1"));
    settings.NoSandBox = kYes;
    EXPECT_EQ(launchArguments(settings, kProfile).size(), usual.size() + 2);

    // Headless replaces the other set, and incognito leaves the profile out.
    settings.Headless = settings.Incognito = kYes;
    const QStringList headless = launchArguments(settings, kProfile);
    EXPECT_EQ(headless.size(), usual.size() + 3);
    EXPECT_TRUE(headless.contains(QStringLiteral("--headless")));
    EXPECT_TRUE(headless.last().startsWith(QStringLiteral("user-agent=Mozilla/5.0 (Windows NT 6.3; Win64; x64) ")));
}

TEST(Launch, BinaryIsSetForAPortableChromeOnly) {
    const auto options = [](const Settings& settings) {
        return launchCapabilities(settings, kProfile)[QStringLiteral("goog:chromeOptions")].toObject();
    };
    Settings settings;
    settings.ChromeBinary = QStringLiteral("/opt/chrome");
    EXPECT_FALSE(options(settings).contains(QStringLiteral("binary")));
    settings.ChromePortable = kYes;
    EXPECT_EQ(options(settings)[QStringLiteral("binary")].toString(), settings.ChromeBinary);
}

TEST(Launch, AProfileStaysInItsFolder) {
    const QString home = QStringLiteral("/k");
    EXPECT_EQ(profileFolder(home, QStringLiteral("Toko 1..2")).value(), QStringLiteral("/k/profil/Toko 1..2"));
    for (const char* name : {"", ".", "..", "../x", "a/b", "a\\..\\..\\b", "C:x", "a\nb"}) {
        EXPECT_FALSE(profileFolder(home, QString::fromUtf8(name))) << name;
    }
}

}  // namespace
}  // namespace kibo
