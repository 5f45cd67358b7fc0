#include "browser/launch.h"

#include <gtest/gtest.h>

#include <QJsonArray>

namespace kibo {
namespace {

const QString kYes = QStringLiteral("Y");
const QString kProfile = QStringLiteral("/k/profil/1");

TEST(Launch, ArgumentsFollowTheSettings) {
    Settings settings;
    const QStringList always =
        QStringLiteral(
            "--no-sandbox --disable-gpu --disable-extensions --disable-plugins --process-per-site --process-per-tab "
            "--site-per-process --disable-setuid-sandbox --disable-dev-shm-usage --disable-accelerated-2d-canvas "
            "--no-first-run")
            .split(u' ');
    const QString profile = QStringLiteral("--user-data-dir=/k/profil/1");
    EXPECT_EQ(launchArguments(settings, kProfile), always + QStringList{profile});

    settings.NoSandBox = kYes;
    const QStringList again{QStringLiteral("--no-sandbox"), QStringLiteral("--disable-gpu")};
    EXPECT_EQ(launchArguments(settings, kProfile), always + again + QStringList{profile});

    // Headless replaces the other set, and incognito leaves the profile out.
    settings.Headless = kYes;
    settings.Incognito = kYes;
    const QStringList headless = launchArguments(settings, kProfile).mid(always.size());
    ASSERT_EQ(headless.size(), 4);
    EXPECT_EQ(headless.mid(0, 3), QStringList({QStringLiteral("--headless"), QStringLiteral("--disable-gpu"),
                                               QStringLiteral("--no-sandbox")}));
    EXPECT_TRUE(headless[3].startsWith(QStringLiteral("user-agent=Mozilla/5.0 (Windows NT 6.3; Win64; x64) ")));
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
