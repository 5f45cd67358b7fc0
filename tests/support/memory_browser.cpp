#include "support/memory_browser.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace kibo::test {

Result<void> MemoryBrowser::open(const LaunchOptions& options) {
    quit();
    if (options.readProfile) options.readProfile();
    openedAtMs_ = clock_.monotonicMs();
    if (options.armStepMachine) options.armStepMachine();
    return {};
}

void MemoryBrowser::quit() {
    openedAtMs_ = 0;
    chat_ = {};
    link_.clear();
    planted_ = false;
    boxes_.clear();
}

/// As the account has it now, whichever device has written.
QList<ChatMessage> MemoryBrowser::messages() const {
    QFile file(account_);
    if (chat_.number.isEmpty() || !file.open(QIODevice::ReadOnly)) return {};
    QList<ChatMessage> messages;
    int line = 0;
    while (!file.atEnd()) {
        const QJsonObject message = QJsonDocument::fromJson(file.readLine()).object();
        ++line;
        if (message[QStringLiteral("to")].toString() == chat_.number)
            messages.append({QStringLiteral("true_%1").arg(line), true, message[QStringLiteral("text")].toString()});
    }
    return messages;
}

OpenChat MemoryBrowser::chat() const {
    OpenChat chat = chat_;
    const QList<ChatMessage> shown = messages();
    if (!shown.isEmpty()) chat.lastMessageId = shown.last().id;
    return chat;
}

PageLook MemoryBrowser::look(const QString& nextAddress) {
    PageLook look;
    look.presence = isOpen() ? PageLook::Presence::Here : PageLook::Presence::Gone;
    if (!isOpen()) return look;
    if (!nextAddress.isEmpty()) pointLink(nextAddress);
    look.newChatControls = 1;
    look.hasChatList = true;
    look.hasBox = chat_.open;
    look.linkText = link_;
    look.chat = chat();
    return look;
}

bool MemoryBrowser::plantLink(const QString& address) {
    planted_ = isOpen();
    link_ = address;
    return planted_;
}

bool MemoryBrowser::pointLink(const QString& address) {
    if (planted_) link_ = address;
    return planted_;
}

std::optional<ClickedLink> MemoryBrowser::clickLink(const QString& address) {
    if (!isOpen() || address != link_) return std::nullopt;
    const ClickedLink clicked{chat(), 0};
    static const QRegularExpression kDigits(QStringLiteral("\\d+$"));
    chat_.open = true;
    ++chat_.serial;
    chat_.number = chat_.title = kDigits.match(address).captured();
    chat_.titles = chat_.titles.mid(qMax<qsizetype>(0, chat_.titles.size() - 19)) + QStringList{chat_.title};
    ++chat_.clicks;
    chat_.clicked = chat_.clicked.mid(qMax<qsizetype>(0, chat_.clicked.size() - 19)) + QStringList{address};
    boxes_.clear();
    return clicked;
}

std::optional<ChatLook> MemoryBrowser::lookAtChat(bool) {
    if (!isOpen()) return std::nullopt;
    ChatLook look;
    look.linkText = link_;
    look.hasBox = look.boxFocused = chat_.open;
    look.boxText = boxes_[Box::Message];
    look.chat = chat();
    return look;
}

std::optional<QList<ChatMessage>> MemoryBrowser::lastMessages() {
    if (!isOpen()) return std::nullopt;
    return messages();
}

std::optional<BoxLook> MemoryBrowser::pasteText(Box box, const QString& text, int chatSerial, int milliseconds) {
    if (chatSerial == chat_.serial) boxes_[box] += text;
    return awaitBoxText(box, text, milliseconds);
}

std::optional<BoxLook> MemoryBrowser::awaitBoxText(Box box, const QString& text, int) {
    if (!isOpen()) return std::nullopt;
    return BoxLook{boxes_[box].trimmed() == text.trimmed(), chat_.serial, false, chat().lastMessageId};
}

std::optional<BoxLook> MemoryBrowser::awaitSent(const QString& nextAddress, int milliseconds) {
    auto look = awaitBoxText(Box::Message, {}, milliseconds);
    if (look && look->asExpected && !nextAddress.isEmpty()) look->linkPointed = pointLink(nextAddress);
    return look;
}

bool MemoryBrowser::clearBox(Box box) {
    boxes_[box].clear();
    return isOpen();
}

bool MemoryBrowser::pressEnter() {
    if (!isOpen() || boxes_[Box::Message].isEmpty()) return isOpen();
    const QJsonObject message{{QStringLiteral("to"), chat_.number},
                              {QStringLiteral("text"), boxes_[Box::Message]},
                              {QStringLiteral("at"), QDateTime::currentMSecsSinceEpoch()}};
    QFile file(account_);
    // One write at the end of the file: several devices may send at once.
    if (file.open(QIODevice::Append | QIODevice::Unbuffered))
        file.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n');
    boxes_[Box::Message].clear();
    return true;
}

}  // namespace kibo::test
