#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/title_match.h"
#include "platform/top_level_windows.h"

namespace kibo::platform {
namespace {

constexpr std::uint32_t kAnyLength = 0x1000000;  // of a property, in 4-byte units: more than any server holds
constexpr std::size_t kMostWindows = 20000;      // a walk that goes on beyond this is not a desktop's

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, Free>;

/// One connection to the display for one call: nothing to keep alive, and a display that comes back is found.
class Display {
 public:
    Display() : connection_(xcb_connect(nullptr, &screenNumber_)) {
        if (!connected()) return;
        xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection_));
        for (int i = 0; i < screenNumber_ && screen.rem > 1; ++i) xcb_screen_next(&screen);
        root_ = screen.data->root;
    }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display() { xcb_disconnect(connection_); }

    bool connected() const { return xcb_connection_has_error(connection_) == 0; }
    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return root_; }

    xcb_atom_t atom(std::string_view name) const {
        const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }

    std::string property(xcb_window_t window, xcb_atom_t name) const {
        const auto cookie = xcb_get_property(connection_, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, kAnyLength);
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
        if (!reply) return {};
        const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
        return {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    std::vector<xcb_window_t> childrenOf(xcb_window_t window) const {
        const Reply<xcb_query_tree_reply_t> reply(
            xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        if (!reply) return {};
        const xcb_window_t* first = xcb_query_tree_children(reply.get());
        return {first, first + xcb_query_tree_children_length(reply.get())};
    }

 private:
    int screenNumber_ = 0;
    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

/// The windows that the window manager looks after, oldest first; empty without a window manager.
std::vector<xcb_window_t> managedWindows(const Display& display) {
    const std::string list = display.property(display.root(), display.atom("_NET_CLIENT_LIST"));
    std::vector<xcb_window_t> windows(list.size() / sizeof(xcb_window_t));
    if (!windows.empty()) std::memcpy(windows.data(), list.data(), windows.size() * sizeof(xcb_window_t));
    return windows;
}

/// What a property of one number holds; 0 when it is not there.
std::uint32_t numberOf(const std::string& property) {
    std::uint32_t number = 0;
    if (property.size() >= sizeof number) std::memcpy(&number, property.data(), sizeof number);
    return number;
}

/// All windows, those next to the root first.
std::vector<xcb_window_t> allWindows(const Display& display) {
    std::vector<xcb_window_t> windows = display.childrenOf(display.root());
    for (std::size_t i = 0; i < windows.size() && windows.size() < kMostWindows; ++i) {
        const std::vector<xcb_window_t> inner = display.childrenOf(windows[i]);
        windows.insert(windows.end(), inner.begin(), inner.end());
    }
    return windows;
}

}  // namespace

bool canHideWindows() {
    return Display().connected();
}

std::string windowSystem() {
    // Where there is nothing to show windows on, the program runs all the same, as on a server.
    return std::getenv("WAYLAND_DISPLAY") == nullptr && !canHideWindows() ? "offscreen" : "";
}

std::optional<WindowHandle> FindWindowByTitle(std::string_view text, ProcessId owner) {
    const Display display;
    if (!display.connected()) return std::nullopt;
    const xcb_atom_t utf8Name = display.atom("_NET_WM_NAME");
    const xcb_atom_t processId = display.atom("_NET_WM_PID");
    const auto matches = [&](xcb_window_t window) {
        if (owner != 0 && numberOf(display.property(window, processId)) != owner) return false;
        const std::string name = display.property(window, utf8Name);
        return titleContains(name.empty() ? display.property(window, XCB_ATOM_WM_NAME) : name, text);
    };
    for (const auto& windows : {managedWindows, allWindows}) {
        const std::vector<xcb_window_t> candidates = windows(display);
        const auto found = std::find_if(candidates.begin(), candidates.end(), matches);
        if (found != candidates.end()) return *found;
    }
    return std::nullopt;
}

void bringToFront(ProcessId owner) {
    const Display display;
    if (!display.connected()) return;
    const xcb_atom_t processId = display.atom("_NET_WM_PID");
    const std::vector<xcb_window_t> windows = managedWindows(display);
    const auto found = std::find_if(windows.begin(), windows.end(), [&](xcb_window_t window) {
        return numberOf(display.property(window, processId)) == owner;
    });
    if (found == windows.end()) return;
    const std::uint32_t above[] = {XCB_STACK_MODE_ABOVE};
    xcb_configure_window(display.connection(), *found, XCB_CONFIG_WINDOW_STACK_MODE, above);
    xcb_client_message_event_t wish = {};
    wish.response_type = XCB_CLIENT_MESSAGE;
    wish.format = 32;
    wish.window = *found;
    wish.type = display.atom("_NET_ACTIVE_WINDOW");
    wish.data.data32[0] = 2;  // the operator's own wish, as from a task bar
    static_assert(sizeof wish == 32);
    xcb_send_event(display.connection(), 0, display.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&wish));
    Reply<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus_reply(display.connection(), xcb_get_input_focus(display.connection()), nullptr));
}

void showWindow(WindowHandle window, bool visible) {
    const Display display;
    if (!display.connected()) return;
    const auto id = static_cast<xcb_window_t>(window);
    if (visible) {
        xcb_map_window(display.connection(), id);
    } else {
        xcb_unmap_window(display.connection(), id);
        // A window manager takes the window off its lists only when told so (ICCCM 4.1.4, "withdrawn").
        xcb_unmap_notify_event_t withdrawn = {};
        withdrawn.response_type = XCB_UNMAP_NOTIFY;
        withdrawn.event = display.root();
        withdrawn.window = id;
        char event[32] = {};
        static_assert(sizeof withdrawn <= sizeof event);
        std::memcpy(event, &withdrawn, sizeof withdrawn);
        xcb_send_event(display.connection(), 0, display.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, event);
    }
    // An answer to any request means that the server has worked through those before it.
    Reply<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus_reply(display.connection(), xcb_get_input_focus(display.connection()), nullptr));
}

}  // namespace kibo::platform
