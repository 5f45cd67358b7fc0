#include "engine/hindrances.h"

#include <gtest/gtest.h>

namespace kibo::test {
namespace {

TEST(Hindrances, NameCauseAndRemedyWithThoseFirstThatNeedAPerson) {
    GatewayState state;
    Settings settings;
    state.cmd_OpenWA.enabled = false;
    EXPECT_TRUE(hindrances(state, settings).empty());

    state.dboff = {true, QStringLiteral("Can't connect to server on 'db' (111)")};
    state.pageChanged = QStringLiteral("XX_ChatBox");
    state.cmd_Pause.caption = QChar(kPausedCaption);
    const auto found = hindrances(state, settings);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].remedy, Hindrance::Remedy::Elements);
    state.readingChanged = QStringLiteral("XX_EntryTitle");
    EXPECT_TRUE(hindrances(state, settings)[1].text.startsWith(QStringLiteral("Page changed: XX_EntryTitle.")));
    state.readingChanged.clear();
    EXPECT_TRUE(found[0].text.contains(state.pageChanged)) << found[0].text.toStdString();
    EXPECT_EQ(found[1].remedy, Hindrance::Remedy::Continue);
    EXPECT_EQ(found[2].ends, Hindrance::Ends::ByItself);
    EXPECT_TRUE(found[2].text.contains(QStringLiteral("(111). Kibo goes on"))) << found[2].text.toStdString();
    state.notDelivered = true;
    EXPECT_TRUE(hindrances(state, settings).back().text.contains(QStringLiteral("phone")));
    state.notDelivered = false;
    state.BreakTime.setEnabled(true);
    EXPECT_EQ(hindrances(state, settings).size(), 2U) << "a break is no hindrance";

    state = {};
    settings.AutoStart = QStringLiteral("Y");
    ASSERT_EQ(hindrances(state, settings).size(), 1U);
    EXPECT_EQ(hindrances(state, settings)[0].ends, Hindrance::Ends::ByItself);
    settings.AutoStart = QStringLiteral("N");
    EXPECT_EQ(hindrances(state, settings)[0].ends, Hindrance::Ends::WhenSomeoneActs);
    state.pQR.visible = true;
    EXPECT_TRUE(hindrances(state, settings)[0].text.contains(QStringLiteral("scan")));
}

}  // namespace
}  // namespace kibo::test
