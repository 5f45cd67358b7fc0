#include "platform/top_level_windows.h"

#include <gtest/gtest.h>

#include "support/virtual_display.h"

namespace kibo::platform {
namespace {

class TopLevelWindows : public testing::Test {
 protected:
    xcb_window_t addWindow(xcb_window_t parent, const std::string& title) {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent, 0, 0, 50, 50, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(title.size()), title.data());
        xcb_map_window(connection_, window);
        sync();
        return window;
    }
    void publishAsManaged(xcb_window_t window) {
        constexpr std::string_view kName = "_NET_CLIENT_LIST";
        const auto cookie = xcb_intern_atom(connection_, 0, kName.size(), kName.data());
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection_, cookie, nullptr);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, root_, reply->atom, XCB_ATOM_WINDOW, 32, 1, &window);
        std::free(reply);
        sync();
    }
    xcb_window_t topmost() {
        auto* tree = xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr);
        const xcb_window_t last = xcb_query_tree_children(tree)[xcb_query_tree_children_length(tree) - 1];
        std::free(tree);
        return last;
    }
    void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

    const test::VirtualDisplay display_;
    const test::XClient client_;
    xcb_connection_t* const connection_ = client_.get();
    const xcb_window_t root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
};

TEST_F(TopLevelWindows, areFoundByTitleHiddenAndShown) {
    ASSERT_TRUE(canHideWindows());
    addWindow(root_, "Notes");
    const xcb_window_t frame = addWindow(root_, "");
    const xcb_window_t chat = addWindow(frame, "(3) WhatsApp - Google Chrome");

    EXPECT_EQ(FindWindowByTitle("whatsapp - GOOGLE chrome"), chat);
    EXPECT_EQ(FindWindowByTitle("New Tab - Google Chrome"), std::nullopt);
    EXPECT_EQ(FindWindowByTitle(""), std::nullopt);

    EXPECT_TRUE(client_.isViewable(chat));
    showWindow(chat, false);
    EXPECT_FALSE(client_.isViewable(chat));
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), chat) << "a hidden window must be found to be shown again";
    showWindow(chat, true);
    EXPECT_TRUE(client_.isViewable(chat));

    const xcb_window_t second = addWindow(root_, "WhatsApp");
    publishAsManaged(second);
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), second) << "the window manager's list comes first";
    EXPECT_EQ(FindWindowByTitle("WhatsApp", ownProcessId()), std::nullopt) << "nobody knows whose it is";
    const std::uint32_t process = static_cast<std::uint32_t>(ownProcessId());
    constexpr std::string_view kProcess = "_NET_WM_PID";
    xcb_intern_atom_reply_t* atom =
        xcb_intern_atom_reply(connection_, xcb_intern_atom(connection_, 0, kProcess.size(), kProcess.data()), nullptr);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, second, atom->atom, XCB_ATOM_CARDINAL, 32, 1, &process);
    std::free(atom);
    addWindow(root_, "above it");
    EXPECT_EQ(FindWindowByTitle("WhatsApp", ownProcessId()), second);
    EXPECT_NE(topmost(), second);
    bringToFront(ownProcessId() + 1);
    EXPECT_NE(topmost(), second);
    bringToFront(ownProcessId());
    EXPECT_EQ(topmost(), second);
    xcb_destroy_window(connection_, second);
    sync();
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), chat);
    showWindow(second, true);  // gone: nothing happens

    ::setenv("DISPLAY", "", 1);
    EXPECT_FALSE(canHideWindows());
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), std::nullopt);
    showWindow(chat, false);
}

}  // namespace
}  // namespace kibo::platform
