#include "platform/top_level_windows.h"

#include <gtest/gtest.h>

#include "support/virtual_display.h"

namespace kibo::platform {
namespace {

TEST(TopLevelWindows, areFoundByTitleHiddenShownAndRaised) {
    const test::VirtualDisplay display;
    const test::XClient client;
    ASSERT_TRUE(canHideWindows());
    client.addWindow(client.root(), "Notes");
    const xcb_window_t chat = client.addWindow(client.addWindow(client.root(), ""), "(3) WhatsApp - Google Chrome");

    EXPECT_EQ(FindWindowByTitle("whatsapp - GOOGLE chrome"), chat);
    EXPECT_EQ(FindWindowByTitle("New Tab - Google Chrome"), std::nullopt);
    EXPECT_EQ(FindWindowByTitle(""), std::nullopt);

    EXPECT_TRUE(client.isViewable(chat));
    showWindow(chat, false);
    EXPECT_FALSE(client.isViewable(chat));
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), chat) << "a hidden window must be found to be shown again";
    showWindow(chat, true);
    EXPECT_TRUE(client.isViewable(chat));

    const xcb_window_t second = client.addWindow(client.root(), "WhatsApp");
    client.setProperty(client.root(), client.atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW, 32, 1, &second);
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), second) << "the window manager's list comes first";
    EXPECT_EQ(FindWindowByTitle("WhatsApp", ownProcessId()), std::nullopt) << "nobody knows whose it is";
    const auto process = static_cast<std::uint32_t>(ownProcessId());
    client.setProperty(second, client.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &process);
    client.addWindow(client.root(), "above it");
    EXPECT_EQ(FindWindowByTitle("WhatsApp", ownProcessId()), second);
    for (const bool own : {false, true}) {
        bringToFront(ownProcessId() + (own ? 0 : 1));
        auto* tree = xcb_query_tree_reply(client.get(), xcb_query_tree(client.get(), client.root()), nullptr);
        const xcb_window_t topmost = xcb_query_tree_children(tree)[xcb_query_tree_children_length(tree) - 1];
        std::free(tree);
        EXPECT_EQ(topmost == second, own);
    }
    xcb_destroy_window(client.get(), second);
    client.sync();
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), chat);
    showWindow(second, true);  // gone: nothing happens

    ::setenv("DISPLAY", "", 1);
    EXPECT_FALSE(canHideWindows());
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), std::nullopt);
    showWindow(chat, false);
}

}  // namespace
}  // namespace kibo::platform
