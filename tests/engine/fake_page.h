#pragma once

#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <functional>
#include <vector>

#include "browser/chat_page.h"
#include "support/manual_clock.h"

namespace kibo::test {

/// A chat page in memory that behaves like the real one where the engine could be misled: chats open some time after
/// the click and independently of each other, the old message box stays until then, names hide numbers. It can
/// be told to fail, to hang and to lose what is asked of it, and it counts.
class FakePage : public ChatPage {
 public:
    struct Delivered {
        QString number;
        QString text;       // of a file: its caption
        QString file = {};  // its path
    };

    explicit FakePage(ManualClock& clock) : clock_(clock) {}

    // How it behaves
    QHash<QString, QString> names;  // number → saved name; others show their number
    QSet<QString> unknown;          // numbers that are not on WhatsApp
    std::function<int(const QString&)> openDelay = [](const QString&) { return 0; };
    bool loggedIn = true;
    PageLook shown;  // besides what follows from the rest
    PageLook::Presence presence = PageLook::Presence::Here;
    int swallowEnters = 0;    // so many presses of Enter do nothing
    int loseTexts = 0;        // so many typed texts end up elsewhere
    bool boxRenamed = false;  // the message box is no element that the locator matches
    bool silent = false;      // no command is answered
    std::function<void()> beforeEnter;
    enum class Preview { Comes, Vanishes, Stays, GoesUnsent };
    Preview preview = Preview::Comes;
    int previewDelay = 150, uploadDelay = 150;
    int titleDelay = 0;  // until an opened chat shows its title
    QString clipboard;   // what a paste gives

    bool hideHistory = false;  // the chat shows none of its messages

    // What happened
    std::vector<Delivered> delivered;
    QStringList clicks;
    QStringList commands;
    int ended = 0;

    void open(const QString& number) {
        ++serial_;
        openNumber_ = number;
        openedMs_ = clock_.monotonicMs();
        boxes_[Box::Message].clear();
        previewShown_ = false;
        titles_.append(names.value(number, number));
    }
    void reload() {
        serial_ = 0;
        openNumber_.clear();
        titles_.clear();
        clicked_ = 0;
        clickedAddresses_.clear();
        linkAddress_.clear();
        planted_ = false;
        ++generation_;
    }
    void setBox(const QString& text) { boxes_[Box::Message] = text; }
    QString box(Box box = Box::Message) const { return boxes_.value(box); }
    void deliver(const QString& number, const QString& text) {
        delivered.push_back({number, text});
        history_[number].append({u"true_%1"_qs.arg(++lastId_), true, text + u"14:05"_qs});
    }
    void forgetHistory() { history_.clear(); }
    QStringList messageIds(const QString& number) const {
        QStringList ids;
        for (const ChatMessage& message : history_.value(number)) ids.prepend(message.id);
        return ids;
    }

    PageLook look(const QString& nextAddress = {}) override {
        commands.append(u"look"_qs);
        PageLook look;
        look.presence = silent ? PageLook::Presence::Silent : presence;
        if (look.presence != PageLook::Presence::Here) return look;
        look = shown;
        look.presence = PageLook::Presence::Here;
        if (planted_ && !nextAddress.isEmpty()) linkAddress_ = nextAddress;
        look.hasChatList = loggedIn;
        look.hasBox = !openNumber_.isEmpty() && !boxRenamed;
        look.newChatControls = loggedIn && !look.noPage && look.otherSite.isEmpty() ? 1 : 0;
        look.hasBanner = !look.banner.isEmpty();
        look.linkText = linkAddress_;
        look.hasNotice = !notice_.isEmpty();
        look.notice = notice_;
        look.chat = chat();
        return look;
    }
    bool plantLink(const QString& address) override {
        if (!answers("plantLink")) return false;
        planted_ = true;
        linkAddress_ = address;
        return true;
    }
    bool pointLink(const QString& address) override {
        if (!answers("pointLink") || !planted_) return false;
        linkAddress_ = address;
        return true;
    }
    std::optional<ClickedLink> clickLink(const QString& address) override {
        if (!answers("clickLink") || address != linkAddress_) return std::nullopt;
        const ClickedLink clicked{chat(), 42};
        const QString number = address.section(QRegularExpression(u"[^0-9]"_qs), -1);
        clicks.append(number);
        ++clicked_;
        clickedAddresses_.append(address);
        const auto result = [this, number, generation = generation_] {
            if (generation != generation_) return;
            if (unknown.contains(number)) {
                notice_ = u"The number +%1 isn't on WhatsApp.\nOK"_qs.arg(number);
            } else {
                open(number);
            }
        };
        const int delay = openDelay(number);
        delay == 0 ? result() : clock_.at(clock_.monotonicMs() + delay, result);
        return clicked;
    }
    std::optional<ChatLook> lookAtChat(bool focusBox) override {
        if (!answers("lookAtChat")) return std::nullopt;
        if (focusBox) focus_ = Box::Message;
        ChatLook look;
        look.linkText = linkAddress_;
        look.hasNotice = !notice_.isEmpty();
        look.notice = notice_;
        look.hasBox = look.boxFocused = !openNumber_.isEmpty() && !boxRenamed;
        look.headerPicture = headerPicture;
        look.boxText = boxes_[Box::Message];
        look.ticks = ticks;
        look.chat = chat();
        return look;
    }
    std::optional<QList<ChatMessage>> lastMessages() override {
        if (!answers("lastMessages")) return std::nullopt;
        return hideHistory ? QList<ChatMessage>() : history_.value(openNumber_);
    }
    std::optional<UnreadMessages> readUnread(const QString&, int count) override {
        if (!answers("readUnread")) return std::nullopt;
        const qsizetype first = std::max<qsizetype>(conversation.size() - count, 0);
        return UnreadMessages{!conversation.isEmpty(), conversation.mid(first)};
    }
    bool forgetArrived(const QStringList& keys) override {
        if (!answers("forgetArrived")) return false;
        shown.arrived.removeIf([&](const ArrivedMessage& message) { return keys.contains(message.key); });
        return true;
    }
    void goBy(std::function<KnownMessages()>) override {}
    std::optional<BoxLook> pasteText(Box box, const QString& text, int chatSerial, int milliseconds) override {
        if (!answers("pasteText")) return std::nullopt;
        if (chatSerial == serial_ && loseTexts-- <= 0) boxes_[box] += text;
        return boxAfter(box, text, milliseconds);
    }
    bool typeText(const QString& text) override {
        if (!answers("typeText")) return false;
        if (loseTexts-- > 0) return true;
        boxes_[focus_] += text;
        return true;
    }
    bool typeKeys(const QString& text) override { return answers("typeKeys") && typeText(text); }
    bool pressPaste() override { return answers("pressPaste") && typeText(clipboard); }
    std::optional<BoxLook> awaitBoxText(Box box, const QString& text, int milliseconds) override {
        if (!answers("awaitBoxText")) return std::nullopt;
        return boxAfter(box, text, milliseconds);
    }
    std::optional<BoxLook> awaitSent(const QString& nextAddress, int milliseconds) override {
        auto look = awaitBoxText(Box::Message, {}, milliseconds);
        if (!look || !look->asExpected || nextAddress.isEmpty()) return look;
        look->linkPointed = planted_;
        linkAddress_ = nextAddress;
        return look;
    }
    bool clearBox(Box box) override {
        boxes_[box].clear();
        focus_ = box;
        return answers("clearBox");
    }
    bool chooseFile(FileInput, const QString& path) override {
        if (!answers("chooseFile")) return false;
        file_ = {openNumber_, {}, path};
        boxes_[Box::Caption].clear();
        previewShown_ = false;
        clock_.at(clock_.monotonicMs() + previewDelay, [this] { previewShown_ = true; });
        return true;
    }
    std::optional<PreviewLook> lookAtPreview(bool focusCaption) override {
        if (!answers("lookAtPreview")) return std::nullopt;
        if (focusCaption && previewShown_) focus_ = Box::Caption;
        return PreviewLook{previewShown_, previewShown_, previewShown_, serial_};
    }
    std::optional<bool> sendPreview() override {
        if (!answers("sendPreview")) return std::nullopt;
        if (preview == Preview::Vanishes) previewShown_ = false;
        if (!previewShown_) return false;
        inChat_ = false;
        if (preview != Preview::Stays)
            clock_.at(clock_.monotonicMs() + uploadDelay, [this] {
                previewShown_ = false;
                if (preview == Preview::GoesUnsent) return;
                file_.text = boxes_[Box::Caption];
                delivered.push_back(file_);
                inChat_ = true;
            });
        return true;
    }
    std::optional<FileSentLook> awaitFileSent(int milliseconds) override {
        if (!answers("awaitFileSent")) return std::nullopt;
        if (previewShown_ || !inChat_) clock_.wait(milliseconds);
        return FileSentLook{!previewShown_, inChat_, serial_};
    }
    std::optional<SearchLook> lookAtSearch() override {
        if (!answers("lookAtSearch")) return std::nullopt;
        SearchLook look{true, boxes_[Box::Search], {}, true};
        for (const QString& name : std::as_const(names))
            if (name.contains(look.text, Qt::CaseInsensitive)) look.titles.append(name);
        return look;
    }
    std::optional<EntryClick> clickEntry(const QString& title) override {
        if (!answers("clickEntry")) return std::nullopt;
        const QString number = names.key(title);
        if (number.isEmpty()) return EntryClick{};
        const EntryClick click{true, chat()};
        clicks.append(title);
        clock_.at(clock_.monotonicMs() + openDelay(number), [this, number] { open(number); });
        return click;
    }
    bool downloadInto(const QString& folder) override {
        downloadFolder = folder;
        return answers("downloadInto");
    }
    bool cancelDownload(const QString& name) override {
        commands.append(u"cancel "_qs + name);
        return true;
    }
    std::optional<MediaStep> saveMedia(const QString& messageId, const QString& kind, bool begins) override {
        if (!answers("saveMedia")) return std::nullopt;
        return onSaveMedia ? onSaveMedia(messageId, kind, begins) : MediaStep{};
    }
    bool pressEnter() override {
        if (!answers("pressEnter")) return false;
        if (beforeEnter) beforeEnter();
        if (swallowEnters-- > 0 || openNumber_.isEmpty() || box().isEmpty()) return true;
        deliver(openNumber_, box());
        setBox({});
        return true;
    }
    bool pressEscapeTwice(int milliseconds) override {
        pressEscape();
        clock_.wait(milliseconds);
        return pressEscape();
    }
    bool pressEscape() override {
        if (!answers("pressEscape")) return false;
        if (!notice_.isEmpty()) {
            notice_.clear();
        } else if (previewShown_) {
            previewShown_ = false;
        } else {
            openNumber_.clear();
        }
        return true;
    }
    std::optional<ChatListGlance> watchChatList(const QString&) override {
        commands.append(u"watchChatList"_qs);
        QString unread;
        for (const ChatEntry& entry : list.mid(0, rowsInSight))
            if (!entry.badge.isEmpty()) unread += entry.lines.join(QLatin1Char('\n'));
        return ChatListGlance{chatListLength, unread, listTicks};
    }
    std::optional<ChatListLook> readChatList(int offset, const QString& = {}) override {
        if (!answers("readChatList")) return std::nullopt;
        ChatListLook look;
        look.length = chatListLength;
        look.entries = list.mid(offset, rowsInSight);
        if (offset + rowsInSight < list.size()) look.nextOffset = offset + rowsInSight;
        return look;
    }
    std::optional<QList<ListedChat>> listChats() override {
        if (!answers("listChats")) return std::nullopt;
        return listed;
    }
    std::optional<ClickedEntry> clickEntry(const ChatEntry& wanted) override {
        if (!answers("clickEntry")) return std::nullopt;
        const ClickedEntry missed{false, chat()};
        for (ChatEntry& entry : list) {
            if (entry.title != wanted.title || entry.lines != wanted.lines) continue;
            if (beforeEntryOpens) beforeEntryOpens();
            const ClickedEntry clicked{true, chat()};
            open(entry.title);
            if (stickyBadges-- > 0 || entry.badge.isEmpty()) return clicked;
            entry.badge.clear();
            entry.lines.removeLast();
            return clicked;
        }
        return missed;
    }
    std::optional<int> leaveSearch() override {
        commands.append(u"leaveSearch"_qs);
        return chatListLength;
    }
    bool refresh() override {
        reload();
        return answers("refresh");
    }
    bool openStartPage() override {
        commands.append(u"openStartPage"_qs);
        shown.noPage = false;
        shown.otherSite.clear();
        return true;
    }
    bool clickQrReload() override { return true; }
    bool clickUseHere() override { return true; }
    QByteArray qrPicture() override { return {}; }
    QByteArray pagePicture() override { return {}; }
    int closeStrayTabs() override {
        commands.append(u"closeStrayTabs"_qs);
        return 0;
    }
    void end() override { ++ended; }

    int chatListLength = 7;
    QList<ChatEntry> list;
    QList<ListedChat> listed;
    QList<ShownTick> ticks;  // of whatever chat is open
    QList<EntryTick> listTicks;
    int rowsInSight = 20;
    int stickyBadges = 0;  // so many openings leave the mark on the chat
    std::function<void()> beforeEntryOpens;
    QString headerPicture, namedNumber;  // of every open chat
    QString downloadFolder;
    std::function<MediaStep(const QString& messageId, const QString& kind, bool begins)> onSaveMedia;
    QList<ArrivedMessage> conversation;  // the same; without any, messages have no ids

 private:
    bool answers(const char* command) {
        commands.append(QString::fromLatin1(command));
        return !silent && presence == PageLook::Presence::Here;
    }
    /// A box that is given so long to hold `text`.
    BoxLook boxAfter(Box box, const QString& text, int milliseconds) {
        if (boxes_[box].trimmed() != text.trimmed()) clock_.wait(milliseconds);
        return {boxes_[box].trimmed() == text.trimmed(), serial_, false, chat().lastMessageId};
    }
    OpenChat chat() const {
        OpenChat chat;
        chat.serial = serial_;
        chat.open = !openNumber_.isEmpty();
        const bool titled = chat.open && clock_.monotonicMs() >= openedMs_ + titleDelay;
        chat.title = titled ? names.value(openNumber_, openNumber_) : QString();
        if (!hideHistory) chat.lastMessageId = messageIds(openNumber_).value(0);
        chat.number = chat.open ? namedNumber : QString();
        chat.titles = titles_;
        chat.clicks = clicked_;
        chat.clicked = clickedAddresses_;
        return chat;
    }

    ManualClock& clock_;
    int serial_ = 0;
    int generation_ = 0;
    QString openNumber_, notice_, linkAddress_;
    QHash<Box, QString> boxes_;
    Box focus_ = Box::Message;
    Delivered file_;
    bool previewShown_ = false, inChat_ = false;
    qint64 openedMs_ = 0;
    QStringList titles_, clickedAddresses_;
    int clicked_ = 0;
    bool planted_ = false;
    QHash<QString, QList<ChatMessage>> history_;  // by number, newest last
    int lastId_ = 0;
};

}  // namespace kibo::test
