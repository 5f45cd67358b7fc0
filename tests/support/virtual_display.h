#pragma once

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <string>

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
