#include "browser/launch.h"

#include <gtest/gtest.h>

namespace kibo {
namespace {

TEST(Launch, OnlyTheFirstOfTwoOptionsTakesTheSandboxAwayAndOnlyWhereItNeedNotStay) {
    Settings settings;
    const auto arguments = [&](bool keep = false) { return launchArguments(settings, QStringLiteral("/k"), keep); };
    const auto usual = arguments().size();
    settings.NoSandBox = QStringLiteral("Y");
    EXPECT_EQ(arguments().size(), usual + 2);
    settings.Headless = QStringLiteral("Y");
    EXPECT_EQ(arguments().size(), usual + 4);
    QStringList kept = arguments();
    kept.removeIf([](const QString& argument) { return argument.endsWith(QStringLiteral("-sandbox")); });
    EXPECT_EQ(arguments(true), kept) << "nothing else changes";
    EXPECT_EQ(arguments().last(), QStringLiteral("--lang=en"));
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
