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
        QString text;
    };

    explicit FakePage(ManualClock& clock) : clock_(clock) {}

    // How it behaves
    QHash<QString, QString> names;  // number → saved name; others show their number
    QSet<QString> unknown;          // numbers that are not on WhatsApp
    std::function<int(const QString&)> openDelay = [](const QString&) { return 0; };
    bool loggedIn = true;
    QString banner;
    int qrCodes = 0, qrReloads = 0;
    QString qrData;
    PageLook::Presence presence = PageLook::Presence::Here;
    int swallowEnters = 0;  // so many presses of Enter do nothing
    int loseTexts = 0;      // so many typed texts end up elsewhere
    bool noPage = false;    // the browser could not load the page
    bool silent = false;    // no command is answered
    std::function<void()> beforeEnter;

    bool hideHistory = false;  // the chat shows none of its messages

    // What happened
    std::vector<Delivered> delivered;
    QStringList clicks;
    QStringList commands;
    int ended = 0, reloadsClicked = 0;

    void open(const QString& number) {
        ++serial_;
        openNumber_ = number;
        box_.clear();
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
    void setBox(const QString& text) { box_ = text; }
    QString box() const { return box_; }
    void deliver(const QString& number, const QString& text) {
        delivered.push_back({number, text});
        history_[number].append({QStringLiteral("true_%1").arg(++lastId_), true, text + QStringLiteral("14:05")});
    }
    QStringList messageIds(const QString& number) const {
        QStringList ids;
        for (const ChatMessage& message : history_.value(number)) ids.prepend(message.id);
        return ids;
    }

    PageLook look() override {
        commands.append(QStringLiteral("look"));
        PageLook look;
        look.presence = silent ? PageLook::Presence::Silent : presence;
        if (look.presence != PageLook::Presence::Here) return look;
        look.noPage = noPage;
        look.newChatControls = loggedIn && !noPage ? 1 : 0;
        look.qrCodes = qrCodes;
        look.qrData = qrData;
        look.qrReloads = qrReloads;
        look.hasBanner = !banner.isEmpty();
        look.banner = banner;
        look.linkPlanted = planted_;
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
        const QString number = address.section(QRegularExpression(QStringLiteral("[^0-9]")), -1);
        clicks.append(number);
        ++clicked_;
        clickedAddresses_.append(address);
        const auto result = [this, number, generation = generation_] {
            if (generation != generation_) return;
            if (unknown.contains(number)) {
                notice_ = QStringLiteral("The number +%1 isn't on WhatsApp.\nOK").arg(number);
            } else {
                open(number);
            }
        };
        const int delay = openDelay(number);
        if (delay == 0) {
            result();
        } else {
            clock_.at(clock_.monotonicMs() + delay, result);
        }
        return clicked;
    }
    std::optional<ChatLook> lookAtChat(bool) override {
        if (!answers("lookAtChat")) return std::nullopt;
        ChatLook look;
        look.linkPlanted = planted_;
        look.linkText = linkAddress_;
        look.hasNotice = !notice_.isEmpty();
        look.notice = notice_;
        look.hasBox = look.boxFocused = !openNumber_.isEmpty();
        look.boxText = box_;
        look.headerPicture = headerPicture;
        look.chat = chat();
        return look;
    }
    std::optional<QList<ChatMessage>> lastMessages() override {
        if (!answers("lastMessages")) return std::nullopt;
        return hideHistory ? QList<ChatMessage>() : history_.value(openNumber_);
    }
    bool typeText(const QString& text) override {
        if (!answers("typeText")) return false;
        if (loseTexts-- > 0) return true;
        box_ += text;
        return true;
    }
    std::optional<BoxLook> awaitBoxText(const QString& text, int milliseconds) override {
        if (!answers("awaitBoxText")) return std::nullopt;
        if (box_.trimmed() != text.trimmed()) clock_.wait(milliseconds);
        return BoxLook{box_.trimmed() == text.trimmed(), serial_};
    }
    bool clearBox() override {
        box_.clear();
        return answers("clearBox");
    }
    bool pressEnter() override {
        if (!answers("pressEnter")) return false;
        if (beforeEnter) beforeEnter();
        if (swallowEnters-- > 0 || openNumber_.isEmpty() || box_.isEmpty()) return true;
        deliver(openNumber_, box_);
        box_.clear();
        return true;
    }
    bool pressEscape() override {
        if (!answers("pressEscape")) return false;
        if (!notice_.isEmpty()) {
            notice_.clear();
        } else {
            openNumber_.clear();
        }
        return true;
    }
    std::optional<ChatListGlance> watchChatList(const QString&) override {
        commands.append(QStringLiteral("watchChatList"));
        QString unread;
        for (const ChatEntry& entry : list)
            if (!entry.badge.isEmpty()) unread += entry.lines.join(QLatin1Char('\n'));
        return ChatListGlance{chatListLength, unread};
    }
    std::optional<ChatListLook> readChatList(int offset) override {
        if (!answers("readChatList")) return std::nullopt;
        ChatListLook look;
        look.length = chatListLength;
        look.entries = list.mid(offset, rowsInSight);
        if (offset + rowsInSight < list.size()) look.nextOffset = offset + rowsInSight;
        return look;
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
        commands.append(QStringLiteral("leaveSearch"));
        return chatListLength;
    }
    bool refresh() override {
        reload();
        return answers("refresh");
    }
    bool openStartPage() override {
        commands.append(QStringLiteral("openStartPage"));
        noPage = false;
        return true;
    }
    bool clickQrReload() override {
        ++reloadsClicked;
        return true;
    }
    QByteArray qrPicture() override { return {}; }
    QByteArray pagePicture() override { return {}; }
    int closeStrayTabs() override {
        commands.append(QStringLiteral("closeStrayTabs"));
        return 0;
    }
    void end() override { ++ended; }

    int chatListLength = 7;
    QList<ChatEntry> list;
    int rowsInSight = 20;
    int stickyBadges = 0;  // so many openings leave the mark on the chat
    std::function<void()> beforeEntryOpens;
    QString headerPicture, namedNumber;  // of every open chat

 private:
    bool answers(const char* command) {
        commands.append(QString::fromLatin1(command));
        return !silent && presence == PageLook::Presence::Here;
    }
    OpenChat chat() const {
        OpenChat chat;
        chat.serial = serial_;
        chat.open = !openNumber_.isEmpty();
        chat.title = chat.open ? names.value(openNumber_, openNumber_) : QString();
        chat.number = chat.open ? namedNumber : QString();
        if (!hideHistory) chat.lastMessageId = messageIds(openNumber_).value(0);
        chat.titles = titles_;
        chat.clicks = clicked_;
        chat.clicked = clickedAddresses_;
        return chat;
    }

    ManualClock& clock_;
    int serial_ = 0;
    int generation_ = 0;
    QString openNumber_, box_, notice_, linkAddress_;
    QStringList titles_, clickedAddresses_;
    int clicked_ = 0;
    bool planted_ = false;
    QHash<QString, QList<ChatMessage>> history_;  // by number, newest last
    int lastId_ = 0;
};

}  // namespace kibo::test
