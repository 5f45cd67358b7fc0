#include "inbox/inbox_reader.h"

#include <algorithm>

#include "app/log.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr int kSmallWaitMs = 100;
constexpr qint64 kStoreAgainMs = 5'000;
const QString kNothing = QStringLiteral(":");

}  // namespace

void InboxReader::BACA_WA() {
    GatewayState& s = p_.state;
    const QString before = s.step;
    s.step = QStringLiteral("Baca WA");
    if (!mayRead()) {
        s.step = before;
        return;
    }
    // However the pass ends, an error that surfaces included.
    struct Pass {
        GatewayState& state;
        explicit Pass(GatewayState& s) : state(s) {
            state.busy = true;
            state.Timer2.setEnabled(false);
        }
        ~Pass() {
            state.waitread.visible = false;
            state.busy = false;
            state.Timer2.setEnabled(true);
        }
    } const pass(s);
    passBeganMs_ = p_.clock.monotonicMs();
    s.readAgain = true;  // unless it reaches its end
    const auto list = readList();
    if (!list) return;
    s.readAgain = false;
    ++s.readPasses;
    settleDoubtful();
    const auto length = list->search ? p_.page.leaveSearch() : list->length;
    if (length) s.len1.text = QString::number(*length);
}

bool InboxReader::mayRead() {
    GatewayState& s = p_.state;
    if (p_.pageInUse && p_.pageInUse()) return false;
    if (p_.BACA_PROFIL) p_.BACA_PROFIL();
    s.l_disableread.visible = isYes(p_.settings.DisableRead);
    if (s.l_disableread.visible || s.dboff.visible || s.wait.visible || s.stepRunning || s.busy) return false;
    storeWaiting();
    const auto& waiting = p_.journal.entries();
    // As long as the database refuses, messages are safest as unread ones.
    if (std::any_of(waiting.begin(), waiting.end(), [](const auto& entry) { return !entry.doubtful; })) return false;
    const Result<void> journal = p_.journal.open();
    if (!journal)
        log::error("inbox", QStringLiteral("the inbox is not read: ") + QString::fromStdString(journal.failure().text));
    return journal.ok();
}

/// The list as it was at last; nothing when it was not read to the end that this pass was to reach.
std::optional<ChatListLook> InboxReader::readList() {
    for (int offset = 0;;) {
        const auto list = readRows(offset);
        if (!list) {
            scanFrom_ = scanFrom_ < 0 ? offset : std::min(scanFrom_, offset);
            return std::nullopt;
        }
        const bool scanning = scanFrom_ >= 0;
        int next = list->look.nextOffset;
        // Below the rows that the page holds, unread ones are expected only under unread ones, and where a pass was
        // broken off. At the start, after hours without Kibo, they may be anywhere.
        if (next >= 0 && !list->anyUnread) next = scanning ? std::max(next, scanFrom_) : -1;
        if (next < 0 || (scanning && offset >= scanFrom_)) scanFrom_ = next;
        if (next < 0) return offset > 0 ? p_.page.readChatList(0) : list->look;
        offset = next;
    }
}

/// The rows at one scroll position, the unread ones stored; nothing when the pass ends there.
std::optional<InboxReader::Rows> InboxReader::readRows(int offset) {
    auto look = p_.page.readChatList(offset);
    if (!look) return std::nullopt;
    bool anyUnread = false;
    ownPicture_ = look->ownPicture;
    for (qsizetype i = 0; i < look->entries.size(); ++i) {
        if (!unreadChat(look->entries[i])) continue;
        anyUnread = true;
        p_.clock.runPendingEvents();
        if (mustGiveWay() || readEntry(look->entries[i]) == Then::EndPass) return std::nullopt;
        // Chats may have changed places meanwhile.
        look = p_.page.readChatList(offset);
        if (!look) return std::nullopt;
    }
    if (mustGiveWay()) return std::nullopt;
    return Rows{std::move(*look), anyUnread};
}

bool InboxReader::mustGiveWay() const {
    const bool late = p_.clock.monotonicMs() - passBeganMs_ > kLongestPassMs;
    return p_.clock.waitingStopped() || (late && p_.state.ms_out.rowCount() > 1);
}

InboxReader::Then InboxReader::readEntry(const ChatEntry& entry) {
    const UnreadChat chat = *unreadChat(entry);
    p_.state.waitread.visible = true;
    if (isTyping(chat.text, p_.elements[QStringLiteral("XXTyping")])) {
        leave();
        return Then::EndPass;
    }
    dropDoubtful(chat);
    const QString signature = chat.title + chat.text;
    meetings_ = signature == lastSignature_ ? meetings_ + 1 : 1;
    if (meetings_ % kMostMeetings == 0) {
        recover();
        return Then::EndPass;
    }
    if (meetings_ < kMostMeetings) return openAndStore(entry, chat);
    // Its rows are stored; what is left is a chat to be rid of.
    awaitSettled();
    if (const auto clicked = p_.page.clickEntry(entry); clicked && clicked->found) {
        p_.opener.clickedName(chat.title, clicked->before);
        awaitChat(chat.title, clicked->before);
    }
    leave();
    return Then::GoOn;
}

InboxReader::Then InboxReader::openAndStore(const ChatEntry& entry, const UnreadChat& chat) {
    const GatewayState& s = p_.state;
    const qint64 began = p_.clock.monotonicMs();
    IncomingRow row{isYes(p_.settings.Multi),
                    s.cb_Profil.text,
                    chat.title,
                    numberOf(chat, std::nullopt),
                    chat.sender,
                    chat.text,
                    p_.clock.now().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))};
    const Result<quint64> written = p_.journal.add(row);
    if (!written) {  // the message is safe as long as its mark is on the page
        log::error("inbox", QStringLiteral("a chat is not opened: ") + QString::fromStdString(written.failure().text));
        leave();
        return Then::EndPass;
    }
    const quint64 key = written.value();
    awaitSettled();
    p_.journal.setDoubtful(key, true);  // until the page has answered
    const auto clicked = p_.page.clickEntry(entry);
    if (clicked && clicked->found) p_.opener.clickedName(chat.title, clicked->before);
    if (!clicked) {
        p_.opener.clickedNameBlindly(chat.title);
        return Then::EndPass;  // the next pass decides
    }
    if (!clicked->found) {  // opened by a person or by an earlier click, or its row shows something newer: see later
        p_.state.waitread.visible = false;
        return Then::GoOn;
    }
    p_.journal.setDoubtful(key, false);

    const auto look = awaitChat(chat.title, clicked->before);
    const QString wanted = p_.elements[QStringLiteral("XXDraft")];
    if (!wanted.isEmpty() && chat.text.startsWith(wanted)) row.wa_text = textBehindDraft(chat.title, chat.text);
    row.wa_no = numberOf(chat, look);
    if (row.wa_text.trimmed() == kNothing) {
        p_.journal.settle(key);
        leave();
        return Then::EndPass;
    }
    p_.journal.change(key, row);
    const bool stored = store(key);
    lastSignature_ = chat.title + chat.text;
    log::info("inbox", QStringLiteral("message of %1 characters from %2 %3 after %4 ms")
                           .arg(row.wa_text.size())
                           .arg(log::maskedNumber(row.wa_no),
                                stored ? QStringLiteral("stored") : QStringLiteral("not stored yet"))
                           .arg(p_.clock.monotonicMs() - began));
    leave();
    return stored ? Then::GoOn : Then::EndPass;
}

/// Lets the dummy's chat come up first: later it would take the place of the one that is about to be clicked.
void InboxReader::awaitSettled() {
    for (int tries = 0; tries < ChatOpener::kTryLimit && !p_.opener.settled() && !p_.clock.waitingStopped(); ++tries) {
        if (const auto look = p_.page.lookAtChat(false)) p_.opener.observe(look->chat, look->linkPlanted);
        if (!p_.opener.settled()) p_.pacing.WA_WAIT(kSmallWaitMs);
    }
}

/// Waits until the chat is there. Left before, it could come up after the dummy's chat and stay open.
std::optional<ChatLook> InboxReader::awaitChat(const QString& title, const OpenChat& before) {
    for (int tries = 0; tries < ChatOpener::kTryLimit && !p_.clock.waitingStopped(); ++tries) {
        p_.pacing.WA_WAIT(kSmallWaitMs);
        const auto look = p_.page.lookAtChat(false);
        if (!look) continue;
        p_.opener.observe(look->chat, look->linkPlanted);
        const bool cameUp = look->chat.serial != before.serial || (before.open && before.title == title);
        if (cameUp && look->chat.open && look->chat.title == title) return look;
    }
    return std::nullopt;
}

QString InboxReader::numberOf(const UnreadChat& chat, const std::optional<ChatLook>& look) const {
    if (!isYes(p_.settings.GetNumberInbox)) return chat.title;
    return look ? senderNumber(chat, look->headerPicture, look->chat.number) : senderNumber(chat, {}, {});
}

/// The row of an open chat shows its last message again, where before it showed a text left in the message box.
QString InboxReader::textBehindDraft(const QString& title, const QString& draft) {
    const auto list = p_.page.readChatList(0);
    if (!list) return draft;
    for (const ChatEntry& entry : list->entries) {
        const auto chat = entry.badge.isEmpty() ? readChat(entry) : unreadChat(entry);
        if (chat && chat->title == title) return chat->text;
    }
    return draft;
}

bool InboxReader::store(quint64 key) {
    IncomingRow row;
    for (const InboxJournal::Entry& entry : p_.journal.entries())
        if (entry.key == key) row = entry.row;
    const auto line = p_.table.insert(row);
    if (!line) {
        p_.journal.setMaybeStored(key);
        storeAgainAtMs_ = p_.clock.monotonicMs() + kStoreAgainMs;
        return false;
    }
    p_.journal.settle(key);
    p_.grid.append(*line);
    p_.handOff.fire(row.wa_no, row.wa_text, row.PROFIL);
    return true;
}

void InboxReader::storeWaiting() {
    if (!p_.state.busy && !p_.state.dboff.visible && p_.clock.monotonicMs() >= storeAgainAtMs_) storeUndoubted();
}

void InboxReader::storeUndoubted() {
    storeAgainAtMs_ = p_.clock.monotonicMs() + kStoreAgainMs;
    const std::vector<InboxJournal::Entry> entries = p_.journal.entries();
    for (const InboxJournal::Entry& entry : entries) {
        if (entry.doubtful) continue;
        const std::optional<bool> held = entry.maybeStored ? p_.table.holds(entry.row) : false;
        if (!held) return;
        if (*held) {
            p_.journal.settle(entry.key);
        } else if (!store(entry.key)) {
            return;
        }
    }
}

/// The chat still has its mark, so the click on it never took place: it is read as if met for the first time.
void InboxReader::dropDoubtful(const UnreadChat& chat) {
    const std::vector<InboxJournal::Entry> entries = p_.journal.entries();
    for (const InboxJournal::Entry& entry : entries)
        if (entry.doubtful && entry.row.title == chat.title && entry.row.wa_text == chat.text)
            p_.journal.settle(entry.key);
}

/// All unread chats are read, so the doubtful ones have lost their marks: they were opened.
void InboxReader::settleDoubtful() {
    const std::vector<InboxJournal::Entry> entries = p_.journal.entries();
    for (const InboxJournal::Entry& entry : entries)
        if (entry.doubtful) p_.journal.setDoubtful(entry.key, false);
    storeUndoubted();
}

/// A chat whose mark does not go away is left to a page that is loaded anew.
void InboxReader::recover() {
    log::warning("inbox", QStringLiteral("a chat keeps its unread mark: the page is loaded anew"));
    p_.state.waitread.visible = false;
    p_.page.refresh();
    p_.pacing.WA_WAIT(kSmallWaitMs);
    p_.page.leaveSearch();
    scanFrom_ = 0;
}

void InboxReader::leave() {
    p_.state.waitread.visible = false;
    p_.opener.KE_DUMMY(ownPicture_);
}

}  // namespace kibo
