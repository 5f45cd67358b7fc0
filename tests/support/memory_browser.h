#pragma once

#include <QDateTime>
#include <QFile>
#include <QMap>

#include "browser/chat_browser.h"

namespace kibo::test {

/// A browser that takes no room: its page is in memory, its account a file that keeps what was sent, a line of JSON for
/// each message ("to", "text", "at": milliseconds since 1970). Several browsers may be logged in to one account, as
/// linked devices are. Chats open at once, Enter sends at once.
class MemoryBrowser final : public ChatBrowser, private ChatPage, private PageProbe {
 public:
    MemoryBrowser(const Clock& clock, QString account) : clock_(clock), account_(std::move(account)) {}

    Result<void> open(const LaunchOptions& options) override;
    bool isOpen() const override { return openedAtMs_ > 0; }
    void quit() override;
    qint64 ageMs() const override { return isOpen() ? clock_.monotonicMs() - openedAtMs_ : 0; }
    quint64 memoryBytes() const override { return 0; }
    bool hideWindow(bool) override { return true; }
    void hideWhenTitled() override {}
    ChatPage& page() override { return *this; }
    PageProbe& probe() override { return *this; }

 private:
    PageLook look(const QString& nextAddress) override;
    bool plantLink(const QString& address) override;
    bool pointLink(const QString& address) override;
    std::optional<ClickedLink> clickLink(const QString& address) override;
    std::optional<ChatLook> lookAtChat(bool focusBox) override;
    std::optional<QList<ChatMessage>> lastMessages() override;
    std::optional<UnreadMessages> readUnread(const QString&, int) override { return std::nullopt; }
    bool forgetArrived(const QStringList&) override { return true; }
    void goBy(std::function<KnownMessages()>) override {}
    std::optional<BoxLook> pasteText(Box box, const QString& text, int chatSerial, int milliseconds) override;
    bool typeText(const QString&) override { return false; }
    bool typeKeys(const QString&) override { return false; }
    bool pressPaste() override { return false; }
    std::optional<BoxLook> awaitBoxText(Box box, const QString& text, int milliseconds) override;
    std::optional<BoxLook> awaitSent(const QString& nextAddress, int milliseconds) override;
    bool clearBox(Box box) override;
    bool chooseFile(FileInput, const QString&) override { return false; }
    std::optional<PreviewLook> lookAtPreview(bool) override { return std::nullopt; }
    std::optional<bool> sendPreview() override { return false; }
    std::optional<FileSentLook> awaitFileSent(int) override { return std::nullopt; }
    std::optional<SearchLook> lookAtSearch() override { return std::nullopt; }
    std::optional<EntryClick> clickEntry(const QString&) override { return std::nullopt; }
    bool downloadInto(const QString&) override { return false; }
    bool cancelDownload(const QString&) override { return false; }
    std::optional<MediaStep> saveMedia(const QString&, const QString&, bool) override { return std::nullopt; }
    bool pressEnter() override;
    bool pressEscape() override { return isOpen(); }
    bool pressEscapeTwice(int) override { return isOpen(); }
    std::optional<ChatListGlance> watchChatList(const QString&) override { return ChatListGlance{}; }
    std::optional<ChatListLook> readChatList(int, const QString&) override { return ChatListLook{}; }
    std::optional<QList<ListedChat>> listChats() override { return QList<ListedChat>(); }
    std::optional<ClickedEntry> clickEntry(const ChatEntry&) override { return ClickedEntry{}; }
    std::optional<int> leaveSearch() override { return 0; }
    bool refresh() override { return isOpen(); }
    bool openStartPage() override { return isOpen(); }
    bool clickQrReload() override { return false; }
    bool clickUseHere() override { return false; }
    QByteArray qrPicture() override { return {}; }
    QByteArray pagePicture() override { return {}; }
    int closeStrayTabs() override { return 0; }
    void end() override { quit(); }
    Result<Matches> outline(const QString&) override { return Matches{}; }
    Result<QString> report() override { return QString(); }

    OpenChat chat() const;
    QList<ChatMessage> messages() const;

    const Clock& clock_;
    const QString account_;
    qint64 openedAtMs_ = 0;
    OpenChat chat_;
    QString link_;
    bool planted_ = false;
    QMap<Box, QString> boxes_;
};

}  // namespace kibo::test
