#include <QDir>
#include <QFile>
#include <QImage>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "engine/attachment_sender.h"

namespace kibo::bench {
namespace {

constexpr int kSamples = 5;
constexpr double kTarget = 1.5;
constexpr int kUploadMs = 1000;
constexpr int kPictureEdge = 512;
constexpr qint64 kFileSize = 10 * 1024 * 1024;
const QString kNumber = QStringLiteral("6281234567890");

/// A picture that the page can draw, filled up to the size behind its end.
QString writePicture(const QString& folder) {
    const QString path = QDir(folder).filePath(QStringLiteral("picture.png"));
    QImage image(kPictureEdge, kPictureEdge, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    require(image.save(path), "the picture can't be written");
    QFile file(path);
    require(file.open(QIODevice::ReadWrite) && file.resize(kFileSize), "the picture can't be filled up");
    return path;
}

/// The page's part: the file, its preview, its upload, each followed at once.
void sendBare(BrowserPage& chat, const QString& path) {
    const size_t before = chat.standIn.received().size();
    require(chat.page.chooseFile(FileInput::Media, path), "the page does not take the file");
    for (;;) {
        const auto preview = chat.page.lookAtPreview(true);
        require(preview.has_value(), "the preview can't be looked at");
        if (preview->hasSendButton && preview->captionFocused) break;
    }
    require(chat.page.sendPreview() == true, "the preview can't be sent");
    require(chat.standIn.waitForReceived(before + 1, std::chrono::seconds(30)), "the file does not arrive");
}

}  // namespace

void measureFiles(Table& table) {
    SystemClock clock;
    BrowserPage chat(clock);
    standin::Behaviour behaviour = chat.standIn.behaviour();
    behaviour.previewDelayMs = 0;
    behaviour.uploadDelayMs = kUploadMs;
    chat.standIn.setBehaviour(behaviour);
    require(chat.standIn.waitUntilPageKnows(std::chrono::seconds(5)), "the page does not follow");
    GatewayState state;
    Pacing pacing(state, chat.settings, clock);
    TextTyper typer(state, chat.settings, chat.page, clock, pacing, nullptr);
    AttachmentSender sender(chat.page, clock, pacing, typer);
    const QString path = writePicture(chat.folder.path());
    const Attachment file{FileInput::Media, path, kFileSize};

    chat.openChat(kNumber);
    sendBare(chat, path);  // the first one finds cold caches
    const SideBySide times = sideBySide(
        kSamples,
        [&] {
            const auto look = chat.page.lookAtChat(true);
            require(look && sender.send(file, QStringLiteral("A caption."), look->chat.serial,
                                        [](const QString&) { return Result<void>(); }),
                    "the file can't be sent");
        },
        [&] { sendBare(chat, path); });
    table.add({"picture of 10 MB with a caption, over the page's own time", "ms", times.measured, times.reference,
               kTarget, kSamples});
}

}  // namespace kibo::bench
