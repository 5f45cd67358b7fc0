#pragma once

#include <QString>
#include <optional>

#include "base/clipboard.h"
#include "base/clock.h"
#include "base/settings.h"
#include "browser/chat_page.h"
#include "engine/gateway_state.h"
#include "engine/pacing.h"
#include "platform/result.h"

namespace kibo {

/// Puts a text into one of the page's boxes and sees that exactly this text stands there.
class TextTyper {
 public:
    /// `settings` is changed in one place: a browser without a window has no use of the clipboard, so `Headless` "Y"
    /// makes `SendUsingClipboard` "N". `clipboard` may be null: then nothing is pasted.
    TextTyper(GatewayState& state, Settings& settings, ChatPage& page, Clock& clock, Pacing& pacing,
              Clipboard* clipboard);

    /// Puts `text` (see typableText) into `box`, which has the focus, and reads it back: by a paste event, or where the
    /// box doesn't take it by KETIK, or at last by single keys. Fails when the box didn't take it, and when the page
    /// shows another conversation than `chatSerial` afterwards. The failure's text is a reason for the operator. The
    /// value is the id of the conversation's newest message at that moment; empty where it isn't known.
    Result<QString> type(Box box, const QString& text, int chatSerial);

    /// Looks once more at a text that was typed: the same conditions, for the moment before it is sent.
    Result<QString> check(Box box, const QString& text, int chatSerial);

    /// Types `text` into the focused box: from the clipboard with `SendUsingClipboard` "Y", else line by line.
    /// Afterwards its line feeds are characters 11.
    void KETIK(QString& text);

 private:
    bool usesClipboard();
    Result<QString> paste(Box box, const QString& text, int chatSerial);
    void typeLines(const QString& text);
    void typeKeys(const QString& text);
    Result<QString> readBack(Box box, const QString& text, int chatSerial);
    static Result<QString> judge(Box box, const std::optional<BoxLook>& look, int chatSerial);

    GatewayState& state_;
    Settings& settings_;
    ChatPage& page_;
    Clock& clock_;
    Pacing& pacing_;
    Clipboard* clipboard_;
    bool takesPastes_ = true;  // the page's boxes, as far as it is known
};

/// What WhatsApp takes in one message, in characters of UTF-16.
inline constexpr qsizetype kLongestText = 65'536;

/// A text as it can be typed: line breaks as line feeds, other control characters and broken surrogates left out.
QString typableText(const QString& text);

}  // namespace kibo
