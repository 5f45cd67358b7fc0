#pragma once

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kibo::test {

/// A display of its own that shows nothing, on a number that is free; the environment names it for as long as the
/// object lives. Ends with the program, also when that crashes.
class VirtualDisplay {
 public:
    VirtualDisplay();
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

 private:
    std::string before_;
    std::FILE* output_ = nullptr;
    int pid_ = -1;
};

/// A connection to the display that the environment names.
class XClient {
 public:
    XClient() : connection_(xcb_connect(nullptr, nullptr)) {}
    ~XClient() { xcb_disconnect(connection_); }
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root; }
    /// A window that is on the screen when this returns.
    xcb_window_t addWindow(xcb_window_t parent, std::string_view title) const {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent, 0, 0, 50, 50, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        setProperty(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, title.size(), title.data());
        xcb_map_window(connection_, window);
        sync();
        return window;
    }
    void setProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::uint8_t bits, std::size_t count,
                     const void* values) const {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, name, type, bits,
                            static_cast<std::uint32_t>(count), values);
        sync();
    }
    xcb_atom_t atom(std::string_view name) const {
        const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection_, cookie, nullptr);
        const xcb_atom_t atom = reply->atom;
        std::free(reply);
        return atom;
    }
    /// Returns when the display has done what it was told.
    void sync() const { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }
    bool isViewable(xcb_window_t window) const {
        const auto cookie = xcb_get_window_attributes(connection_, window);
        auto* attributes = xcb_get_window_attributes_reply(connection_, cookie, nullptr);
        const bool viewable = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        std::free(attributes);
        return viewable;
    }

 private:
    xcb_connection_t* connection_;
};

}  // namespace kibo::test
