#pragma once

#include <QString>
#include <functional>

#include "base/clock.h"
#include "browser/chat_page.h"
#include "engine/attachment.h"
#include "engine/pacing.h"
#include "engine/text_typer.h"
#include "platform/result.h"

namespace kibo {

/// Failure code: the message may have gone out.
inline constexpr char kInDoubt[] = "in doubt";

/// Puts one file into the open chat: gives it to the page, awaits its preview, types the caption, sends the preview
/// and sees the message stand in the chat.
class AttachmentSender {
 public:
    AttachmentSender(ChatPage& page, Clock& clock, Pacing& pacing, TextTyper& typer);

    /// Sends into the conversation `chatSerial`, which is open, and gives the page's id of the chat's newest message
    /// then; empty where it has none. `beforeSending` runs right before the preview is sent;
    /// when it fails, nothing is sent. The failure's text is a reason for the operator; it
    /// begins with "in doubt" when the file may have gone out all the same. What is left open then is the caller's
    /// business to close.
    Result<QString> send(const Attachment& file, const QString& caption, int chatSerial,
                         const std::function<Result<void>(const QString& newest)>& beforeSending);

 private:
    Result<void> awaitPreview(int chatSerial);
    Result<QString> sendAndConfirm();

    ChatPage& page_;
    Clock& clock_;
    Pacing& pacing_;
    TextTyper& typer_;
};

}  // namespace kibo
