#pragma once

#include <cstdint>
#include <string>

namespace kibo::standin {

/// A message that a page sent. `timeMs` here and below: milliseconds since 1970, stamped when the server got it.
struct ReceivedMessage {
    int64_t seq = 0;  ///< counts from 1 in order of arrival
    std::string number;
    std::string name;  ///< the contact's, empty when the number isn't saved
    std::string text;
    std::string kind;  ///< "text", "image", "video", "document", "sticker"
    std::string caption;
    std::string fileName;
    int64_t fileSize = 0;
    bool linkPreview = false;  ///< the preview of an address in the text was there when it was sent
    int64_t timeMs = 0;
};

/// Something that happened on a page: "ready", "openRequested", "read", "chatOpened", "chatClosed", "notice",
/// "startingPopup", "qrReloaded", "refreshed", "enterSwallowed", "focusLost", "reloading", "frozen" and, by the server,
/// "tab".
struct PageEvent {
    int64_t seq = 0;
    std::string kind;
    std::string number;  ///< of the chat it is about, else empty
    std::string detail;
    int64_t timeMs = 0;
};

}  // namespace kibo::standin
