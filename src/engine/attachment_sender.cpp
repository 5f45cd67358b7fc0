#include "engine/attachment_sender.h"

namespace kibo {
namespace {

constexpr int kPreviewLooks = 200;
constexpr int kLookMs = 100;
constexpr int kBuildingMs = 400;  // and the 100 of every look
// A page that keeps the preview until the file is uploaded takes minutes on a slow line.
constexpr qint64 kLongestUploadMs = 180'000;
// Once the preview is gone the message stands in the chat at once.
constexpr qint64 kLongestDrawingMs = 10'000;
constexpr int kSentLookMs = 500;

Failure failed(const char* why) {
    return {FailureKind::NotFound, why};
}

Failure inDoubt(const char* why) {
    return {FailureKind::NotFound, why, kInDoubt};
}

}  // namespace

AttachmentSender::AttachmentSender(ChatPage& page, Clock& clock, Pacing& pacing, TextTyper& typer)
    : page_(page), clock_(clock), pacing_(pacing), typer_(typer) {}

Result<QString> AttachmentSender::send(const Attachment& file, const QString& caption, int chatSerial,
                                       const std::function<Result<void>(const QString& newest)>& beforeSending) {
    if (!page_.chooseFile(file.input, file.path)) return failed("the page did not take the file");
    if (const auto preview = awaitPreview(chatSerial); !preview) return preview.failure();
    const Result<QString> typed = typer_.type(Box::Caption, caption, chatSerial);
    if (!typed) return typed.failure();
    if (clock_.waitingStopped()) return failed("stopped by the operator");
    if (const auto ready = beforeSending(typed.value()); !ready) return ready.failure();
    return sendAndConfirm();
}

Result<void> AttachmentSender::awaitPreview(int chatSerial) {
    for (int looks = 0; looks < kPreviewLooks; ++looks) {
        pacing_.WA_WAIT(kLookMs);
        if (clock_.waitingStopped()) return failed("stopped by the operator");
        const auto look = page_.lookAtPreview(true);
        if (!look) continue;
        if (look->chatSerial != chatSerial) return failed("another chat came up before the file was sent");
        if (look->hasSendButton && look->captionFocused) return {};
        if (look->hasSendButton || look->hasCaption) pacing_.WA_WAIT(kBuildingMs);
    }
    return failed("the page showed no preview of the file");
}

/// The one place where a preview is sent.
Result<QString> AttachmentSender::sendAndConfirm() {
    if (page_.sendPreview() == false) return failed("the file's preview was closed before it was sent");
    const qint64 begin = clock_.monotonicMs();
    qint64 goneSince = -1;  // it hasn't gone
    while (clock_.monotonicMs() - begin < kLongestUploadMs && !clock_.waitingStopped()) {
        const auto look = page_.awaitFileSent(kSentLookMs);
        if (look && look->previewGone && look->inChat) return look->lastMessageId;
        if (!look || !look->previewGone) {
            goneSince = -1;
        } else if (goneSince < 0) {
            goneSince = clock_.monotonicMs();
        } else if (clock_.monotonicMs() - goneSince > kLongestDrawingMs) {
            return inDoubt("in doubt: the file's preview has gone, but the file did not appear in the chat");
        }
        pacing_.WA_WAIT(kLookMs);  // the window stays alive
    }
    return inDoubt("in doubt: the file was sent, but its preview did not close");
}

}  // namespace kibo
