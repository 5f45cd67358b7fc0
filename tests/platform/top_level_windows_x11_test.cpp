#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/machine.h"
#include "platform/shell.h"
#include "platform/top_level_windows.h"

namespace kibo::platform {
namespace {

/// A display of our own that shows nothing, on a number that is free.
class VirtualDisplay {
 public:
    VirtualDisplay() : before_(environment("DISPLAY")) {
        int ends[2];
        if (::pipe(ends) != 0) return;
        const std::string server = findProgram("Xvfb");
        const std::string reportTo = std::to_string(ends[1]);
        pid_ = ::fork();
        if (pid_ == 0) {
            const int null = ::open("/dev/null", O_RDWR);
            for (int standard : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, standard);
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // a test that crashes must not leave a server behind
            ::execl(server.c_str(), "Xvfb", "-displayfd", reportTo.c_str(), "-screen", "0", "640x480x24", "-nolisten",
                    "tcp", nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        std::string number;
        pollfd input = {ends[0], POLLIN, 0};
        for (char c = 0; ::poll(&input, 1, 20000) == 1 && ::read(ends[0], &c, 1) == 1 && c != '\n';) number += c;
        ::close(ends[0]);
        name_ = ":" + number;
        ::setenv("DISPLAY", name_.c_str(), 1);
    }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay() {
        ::setenv("DISPLAY", before_.c_str(), 1);
        if (pid_ <= 0) return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }

 private:
    std::string before_;
    std::string name_;
    pid_t pid_ = -1;
};

class TopLevelWindows : public testing::Test {
 protected:
    void SetUp() override {
        connection_ = xcb_connect(nullptr, nullptr);
        ASSERT_EQ(xcb_connection_has_error(connection_), 0);
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    void TearDown() override { xcb_disconnect(connection_); }

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
    bool isVisible(xcb_window_t window) {
        const auto cookie = xcb_get_window_attributes(connection_, window);
        xcb_get_window_attributes_reply_t* reply = xcb_get_window_attributes_reply(connection_, cookie, nullptr);
        const bool visible = reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
        std::free(reply);
        return visible;
    }
    void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

    VirtualDisplay display_;
    xcb_connection_t* connection_ = nullptr;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

TEST_F(TopLevelWindows, areFoundByTitleHiddenAndShown) {
    ASSERT_TRUE(canHideWindows());
    addWindow(root_, "Notes");
    const xcb_window_t frame = addWindow(root_, "");
    const xcb_window_t chat = addWindow(frame, "(3) WhatsApp - Google Chrome");

    EXPECT_EQ(FindWindowByTitle("whatsapp - GOOGLE chrome"), chat);
    EXPECT_EQ(FindWindowByTitle("New Tab - Google Chrome"), std::nullopt);
    EXPECT_EQ(FindWindowByTitle(""), std::nullopt);

    EXPECT_TRUE(isVisible(chat));
    showWindow(chat, false);
    EXPECT_FALSE(isVisible(chat));
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), chat) << "a hidden window must be found to be shown again";
    showWindow(chat, true);
    EXPECT_TRUE(isVisible(chat));

    const xcb_window_t second = addWindow(root_, "WhatsApp");
    publishAsManaged(second);
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), second) << "the window manager's list comes first";
    xcb_destroy_window(connection_, second);
    sync();
    EXPECT_EQ(FindWindowByTitle("WhatsApp"), chat);
    showWindow(second, true);  // gone: nothing happens
}

TEST(TopLevelWindowsWithoutDisplay, areNotThere) {
    const std::string before = environment("DISPLAY");
    ::unsetenv("DISPLAY");
    EXPECT_FALSE(canHideWindows());
    EXPECT_EQ(FindWindowByTitle("a"), std::nullopt);
    showWindow(1, false);
    if (!before.empty()) ::setenv("DISPLAY", before.c_str(), 1);
}

}  // namespace
}  // namespace kibo::platform
