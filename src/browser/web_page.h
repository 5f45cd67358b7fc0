#pragma once

#include <QJsonObject>

#include "base/error_policy.h"
#include "browser/browser.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "browser/page/page_module.h"
#include "browser/page_probe.h"

namespace kibo {

/// The chat page in the real browser. Reads go through scripts, because one script reads all that a step needs in
/// one command; keys and typed text are real input, because the page's editor ignores anything else.
class WebPage : public ChatPage, public PageProbe {
 public:
    /// All must outlive the page. A locator that changes counts from the next member call on.
    WebPage(Browser& browser, const ElementTable& elements, const ErrorPolicy& policy);

    PageLook look(const QString& nextAddress = {}) override;
    bool plantLink(const QString& address) override;
    bool pointLink(const QString& address) override;
    std::optional<ClickedLink> clickLink(const QString& address) override;
    std::optional<ChatLook> lookAtChat(bool focusBox) override;
    std::optional<QList<ChatMessage>> lastMessages() override;
    std::optional<UnreadMessages> readUnread(const QString& title, int count) override;
    bool forgetArrived(const QStringList& keys) override;
    void goBy(std::function<KnownMessages()> known) override { known_ = std::move(known); }
    std::optional<BoxLook> pasteText(Box box, const QString& text, int chatSerial, int milliseconds) override;
    bool typeText(const QString& text) override;
    bool typeKeys(const QString& text) override;
    bool pressPaste() override;
    std::optional<BoxLook> awaitBoxText(Box box, const QString& text, int milliseconds) override;
    std::optional<BoxLook> awaitSent(const QString& nextAddress, int milliseconds) override;
    bool clearBox(Box box) override;
    bool chooseFile(FileInput input, const QString& path) override;
    std::optional<PreviewLook> lookAtPreview(bool focusCaption) override;
    std::optional<bool> sendPreview() override;
    std::optional<FileSentLook> awaitFileSent(int milliseconds) override;
    std::optional<SearchLook> lookAtSearch() override;
    std::optional<EntryClick> clickEntry(const QString& title) override;
    bool downloadInto(const QString& folder) override;
    bool cancelDownload(const QString& name) override;
    std::optional<MediaStep> saveMedia(const QString& messageId, const QString& kind, bool begins) override;
    bool pressEnter() override;
    bool pressEscape() override;
    bool pressEscapeTwice(int milliseconds) override;
    std::optional<ChatListGlance> watchChatList(const QString& title) override;
    std::optional<ChatListLook> readChatList(int offset, const QString& title = {}) override;
    std::optional<QList<ListedChat>> listChats() override;
    std::optional<ClickedEntry> clickEntry(const ChatEntry& entry) override;
    std::optional<int> leaveSearch() override;
    bool refresh() override;
    bool openStartPage() override;
    bool clickQrReload() override;
    bool clickUseHere() override;
    QByteArray qrPicture() override;
    QByteArray pagePicture() override;
    int closeStrayTabs() override;
    void end() override;
    Result<Matches> outline(const QString& locator) override;
    Result<QString> report() override;

 private:
    /// How long the page may wait inside one script; the driver ends scripts after 3 s.
    static constexpr int kLongestScriptWaitMs = 2500;

    Result<QJsonValue> call(const char* name, const QJsonArray& arguments = {});
    std::optional<QJsonValue> callOrSkip(const char* step, const char* name, const QJsonArray& arguments = {});
    bool sendOrSkip(const char* step, const webdriver::Command& command);
    OpenChat openChat(const QJsonValue& chat);

    Browser& browser_;
    const ElementTable& elements_;
    const ErrorPolicy& policy_;
    std::function<KnownMessages()> known_;
    page_module::Heard heard_;
    QStringList titles_, clicked_;  // the newest of those that were heard
    QStringList reported_;          // locators that the browser does not understand
};

}  // namespace kibo
