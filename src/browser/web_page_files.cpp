#include <QDir>
#include <QJsonArray>
#include <algorithm>

#include "browser/web_page.h"

namespace kibo {

using namespace webdriver;

bool WebPage::chooseFile(FileInput input, const QString& path) {
    // An input takes several paths in lines of their own.
    if (path.contains(QLatin1Char('\n'))) return false;
    const auto found = callOrSkip("find the file input", "fileInput", {input == FileInput::Media});
    const auto element = found ? elementFrom(*found) : std::nullopt;
    return element && sendOrSkip("choose the file", ElementSendKeys{*element, path});
}

std::optional<PreviewLook> WebPage::lookAtPreview(bool focusCaption) {
    const auto answer = callOrSkip("look at the preview", "lookAtPreview", {focusCaption});
    if (!answer) return std::nullopt;
    const QJsonObject seen = answer->toObject();
    return PreviewLook{seen[QStringLiteral("hasCaption")].toBool(), seen[QStringLiteral("hasSendButton")].toBool(),
                       seen[QStringLiteral("captionFocused")].toBool(), seen[QStringLiteral("chatSerial")].toInt()};
}

std::optional<bool> WebPage::sendPreview() {
    const auto answer = callOrSkip("send the preview", "sendPreview");
    return answer ? std::optional(answer->toBool()) : std::nullopt;
}

std::optional<FileSentLook> WebPage::awaitFileSent(int milliseconds) {
    const auto answer =
        callOrSkip("await the sent file", "awaitFileSent", {std::min(milliseconds, kLongestScriptWaitMs)});
    if (!answer) return std::nullopt;
    const QJsonObject seen = answer->toObject();
    return FileSentLook{seen[QStringLiteral("previewGone")].toBool(), seen[QStringLiteral("inChat")].toBool(),
                        seen[QStringLiteral("chatSerial")].toInt(), seen[QStringLiteral("lastMessageId")].toString()};
}

bool WebPage::downloadInto(const QString& folder) {
    QJsonObject wanted{{QStringLiteral("behavior"), QStringLiteral("default")}};
    if (!folder.isEmpty())
        wanted = {{QStringLiteral("behavior"), QStringLiteral("allowAndName")},
                  {QStringLiteral("downloadPath"), QDir::toNativeSeparators(folder)}};
    return sendOrSkip("choose the folder for downloads",
                      ChromeExecuteCdp{QStringLiteral("Browser.setDownloadBehavior"), wanted});
}

bool WebPage::cancelDownload(const QString& name) {
    return sendOrSkip("cancel a download",
                      ChromeExecuteCdp{QStringLiteral("Browser.cancelDownload"), {{QStringLiteral("guid"), name}}});
}

std::optional<MediaStep> WebPage::saveMedia(const QString& messageId, const QString& kind, bool begins) {
    const auto answer = callOrSkip("save a message's file", "saveMedia", {messageId, kind, begins});
    if (!answer) return std::nullopt;
    // A menu left open would take the next key.
    if ((*answer)[QStringLiteral("menuLeft")].toBool()) pressEscape();
    const QString state = (*answer)[QStringLiteral("state")].toString();
    using enum MediaStep::State;
    return MediaStep{state == QStringLiteral("asked")  ? Asked
                     : state == QStringLiteral("none") ? None
                                                       : Gone,
                     (*answer)[QStringLiteral("suffix")].toString()};
}

}  // namespace kibo
