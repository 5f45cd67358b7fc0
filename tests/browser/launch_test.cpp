#include "browser/launch.h"

#include <gtest/gtest.h>

namespace kibo {
namespace {

TEST(Launch, OnlyTheFirstOfTwoOptionsTakesTheSandboxAway) {
    Settings settings;
    const auto count = [&] { return launchArguments(settings, QStringLiteral("/k/profil/1")).size(); };
    const auto usual = count();
    settings.NoSandBox = QStringLiteral("Y");
    EXPECT_EQ(count(), usual + 2);
    settings.Headless = QStringLiteral("Y");
    EXPECT_EQ(count(), usual + 4);
}

TEST(Launch, WhereTheSandboxIsToStayNothingElseChanges) {
    Settings settings;
    settings.Headless = QStringLiteral("Y");
    QStringList expected = launchArguments(settings, QStringLiteral("/k"));
    expected.removeIf([](const QString& argument) { return argument.endsWith(QStringLiteral("-sandbox")); });
    EXPECT_EQ(launchArguments(settings, QStringLiteral("/k"), true), expected);
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
