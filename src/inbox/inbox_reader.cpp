#include "inbox/inbox_reader.h"

#include <QScopedValueRollback>
#include <algorithm>

#include "base/log.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr int kSmallWaitMs = 100;
constexpr qint64 kSettledMs = 2'000;
constexpr qint64 kStoreAgainMs = 5'000;
const QString kNothing = QStringLiteral(":");

constexpr int kMostOfAChat = 500;

/// How many messages a mark counts: "7", "1,234"; of "99+" as many as are read at once.
int countIn(const QString& badge) {
    int count = 0;
    for (const QChar c : badge)
        if (c.isDigit()) count = std::min(10 * count + c.digitValue(), kMostOfAChat);  // of whatever script
    return badge.endsWith(u'+') ? kMostOfAChat : std::max(count, 1);
}

}  // namespace

void InboxReader::BACA_WA() {
    GatewayState& s = p_.state;
    // A message may be waiting for its files, and goes on with this text afterwards.
    const QScopedValueRollback<QString> step(s.step, QStringLiteral("Baca WA"));
    if (!mayRead()) return;
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
    if (looksIntoLost()) return;
    const auto list = readList();
    if (!list) return;
    s.readAgain = false;
    ++s.readPasses;
    settleDoubtful();
    saveMissedMedia();
    const auto length = list->search ? p_.page.leaveSearch() : list->length;
    if (length) s.len1.text = QString::number(*length);
}

bool InboxReader::mayRead() {
    GatewayState& s = p_.state;
    if (p_.pageInUse && p_.pageInUse()) return false;
    if (p_.BACA_PROFIL) p_.BACA_PROFIL();
    s.l_disableread.visible = isYes(p_.settings.DisableRead);
    if (s.l_disableread.visible || s.standby.visible || s.dboff.visible || s.pageIsTaken() || s.busy) return false;
    if (p_.reading.readingIsHeld()) return false;
    storeWaiting();
    const auto& waiting = p_.journal.entries();
    // As long as the database takes none, messages are safest as unread ones. Single ones that it refuses wait apart.
    const auto waits = [this](const auto& entry) { return !entry.doubtful && !refused_.contains(entry.key); };
    if (refused_.isFull() || std::any_of(waiting.begin(), waiting.end(), waits)) return false;
    const Result<void> ids = p_.storedIds.open();
    idsProblem_ = ids ? QString() : QString::fromStdString(ids.failure().text);
    const bool journal = p_.journal.open().ok();
    showNotice();
    return journal && ids;
}

/// Opens chats in which something may have come in that only a page knew which has gone: the present one tells it at
/// the next tick, before anything newer is read. False where none was opened.
bool InboxReader::looksIntoLost() {
    constexpr int kLooks = 10;
    bool opened = false;
    const QList<LostChat> lost = p_.opened.lost();
    for (const LostChat& chat : lost) {
        // That of the dummy contact is open at all times, and the page has told of it by now.
        if (const auto now = p_.page.lookAtChat(false); now && now->chat.open && now->chat.title == chat.title) {
            p_.opened.lookedInto(chat.title);
            continue;
        }
        auto look = reopen(chat.title);
        opened = opened || look;
        for (int i = 0; look && look->chat.lastMessageId.isEmpty() && i < kLooks; ++i) {
            p_.pacing.WA_WAIT(kSmallWaitMs);
            look = p_.page.lookAtChat(false);
            if (look) p_.opener.observe(look->chat, look->linkText);
        }
        if (p_.clock.waitingStopped()) return true;
        p_.opened.lookedInto(chat.title);
    }
    if (opened) leave();
    return opened;
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
    if (isLeftTyping(chat)) {
        p_.state.waitread.visible = false;
        return Then::GoOn;
    }
    dropDoubtful(chat);
    const QString signature = chat.title + chat.text;
    meetings_ = signature == lastSignature_ ? meetings_ + 1 : 1;
    const bool keepsMark =
        hasIds_ ? nothingNew_.value(chat.title) >= kMostMeetings - 1 : meetings_ % kMostMeetings == 0;
    if (keepsMark) {
        nothingNew_.remove(chat.title);
        if (meetings_ > kMostMeetings && !entry.marked) p_.reading.staysUnread();
        recover();
        return Then::EndPass;
    }
    if (hasIds_ || meetings_ < kMostMeetings) return openAndStore(entry, chat);
    // Its rows are stored; what is left is a chat to be rid of.
    p_.opener.awaitSettled(kSettledMs);
    if (const auto clicked = p_.page.clickEntry(entry); clicked && clicked->found) {
        p_.opener.clickedName(chat.title, clicked->before);
        awaitChat(chat.title, clicked->before);
    }
    leave();
    return Then::GoOn;
}

/// The row will soon say more, and the others need not wait for that. With ids the chat itself tells what is new in it.
bool InboxReader::isLeftTyping(const UnreadChat& chat) {
    if (!rows_.showsTyping(chat.text)) {
        typingSince_.remove(chat.title);
        return false;
    }
    const qint64 now = p_.clock.monotonicMs();
    if (!typingSince_.contains(chat.title)) {
        typingSince_.insert(chat.title, now);
        return true;
    }
    return !hasIds_ && now - typingSince_.value(chat.title) < kTypingMs;
}

/// Messages that lost their mark to an opening which was broken off. Those that came in since must not be stored before
/// them, or they would stand above the last one that was.
int InboxReader::owedIn(const QString& title) const {
    int owed = 0;
    for (const InboxJournal::Entry& entry : p_.journal.entries())
        if (entry.doubtful && entry.row.title == title) owed += entry.row.unread;
    return owed;
}

InboxReader::Then InboxReader::openAndStore(const ChatEntry& entry, const UnreadChat& chat) {
    const qint64 began = p_.clock.monotonicMs();
    IncomingRow row = rows_.of(chat);
    row.unread = everyMessage() ? std::min(countIn(entry.badge) + owedIn(chat.title), kMostOfAChat) : 1;
    const Result<quint64> written = p_.journal.add(row);
    if (!written) {  // the message is safe as long as its mark is on the page
        leave();
        return Then::EndPass;
    }
    const quint64 key = written.value();
    p_.opener.awaitSettled(kSettledMs);
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
    if (!look && hasIds_) {  // it comes up later, with more than the list tells: it is opened once more
        p_.journal.setDoubtful(key, true);
        leave();
        return Then::GoOn;
    }
    const auto unread = look ? readMessages(chat.title, row.unread) : std::nullopt;
    if (unread && unread->hasIds) return storeMessages(key, chat, *unread, began);

    if (rows_.showsDraft(chat.text)) row.wa_text = textBehindDraft(chat.title, chat.text);
    // Opened because the page had ids so far.
    if (rows_.showsTyping(chat.text) && unread && !unread->messages.isEmpty())
        row.wa_text = unread->messages.back().text;
    if (look) row.wa_no = rows_.of(chat, look->headerPicture, look->chat.number).wa_no;
    row.unread = 0;
    if (row.wa_text.trimmed() == kNothing) {
        p_.journal.settle(key);
        leave();
        return Then::EndPass;
    }
    p_.journal.change(key, row);
    lastSignature_ = chat.title + chat.text;
    return storeRows(chat.title, {key}, began);
}

/// Opens a chat by its row, read or not; nothing where that can't be done.
std::optional<ChatLook> InboxReader::reopen(const QString& title) {
    p_.opener.awaitSettled(kSettledMs);
    const auto list = p_.page.readChatList(0, title);
    for (ChatEntry entry : list ? list->entries : QList<ChatEntry>()) {
        if (entry.lines.value(0) != title) continue;
        entry.title = title;
        const auto clicked = p_.page.clickEntry(entry);
        if (!clicked || !clicked->found) break;
        p_.opener.clickedName(title, clicked->before);
        return awaitChat(title, clicked->before);
    }
    // It may stand below the rows that the page holds.
    const auto click = p_.page.clickEntry(title);
    if (!click || !click->happened) return std::nullopt;
    p_.opener.clickedName(title, click->before);
    return awaitChat(title, click->before);
}

/// What the page shows of the opened chat's unread messages; nothing where it doesn't show that chat.
std::optional<UnreadMessages> InboxReader::readMessages(const QString& title, int count) {
    constexpr int kLooks = 10;
    std::optional<UnreadMessages> unread, withoutIds;
    for (int i = 0; i < kLooks && !p_.clock.waitingStopped(); ++i) {
        auto seen = p_.page.readUnread(title, count);
        // A page that had ids so far draws its messages a moment after the chat's name.
        if (!seen || !seen->hasIds) {
            withoutIds = std::move(seen);
            if (!hasIds_) break;
            p_.pacing.WA_WAIT(kSmallWaitMs);
            continue;
        }
        const bool grew = !unread || seen->messages.size() > unread->messages.size();
        unread = std::move(seen);
        if (!grew || unread->messages.size() >= count) break;  // else scrolling up has just begun
    }
    hasIds_ = unread.has_value();
    return unread ? unread : withoutIds;
}

/// The opened chat's messages take the place of its entry in the journal.
InboxReader::Then InboxReader::storeMessages(quint64 key, const UnreadChat& chat, const UnreadMessages& unread,
                                             qint64 beganMs) {
    const auto keys = addRows(chat, unread);
    if (!keys) {
        p_.journal.setDoubtful(key, true);  // the chat is opened once more
        leave();
        return Then::EndPass;
    }
    p_.journal.settle(key);
    lastSignature_ = chat.title + chat.text;
    if (keys->empty()) {
        ++nothingNew_[chat.title];
        leave();
        return Then::GoOn;
    }
    nothingNew_.remove(chat.title);
    if (keys->size() >= kMostOfAChat)
        log::warning(
            "inbox",
            QStringLiteral("a chat had %1 unread messages or more: those before them are not read").arg(kMostOfAChat));
    return storeRows(chat.title, *keys, beganMs);
}

/// Writes down what is new among them, that is below the last one that was stored, oldest first; nothing where the
/// journal can't be written.
std::optional<std::vector<quint64>> InboxReader::addRows(const UnreadChat& chat, const UnreadMessages& unread) {
    const QList<ArrivedMessage>& messages = unread.messages;
    const auto stored = std::find_if(messages.rbegin(), messages.rend(), [this](const ArrivedMessage& message) {
        return p_.storedIds.contains(message.messageId);
    });
    std::vector<quint64> keys;
    for (auto message = stored.base(); message != messages.end(); ++message) {
        if (p_.journal.holds(message->messageId)) continue;
        auto row = rows_.of(*message);
        if (!row) continue;
        if (&*message == &messages.back()) {
            const bool isWhole = message->text.simplified() == chat.text.simplified();
            const bool isMessage = !rows_.showsTyping(chat.text) && !rows_.showsDraft(chat.text);
            if (isWhole || (!everyMessage() && isMessage)) row->wa_text = chat.text;
            if (row->SUB_NO.isEmpty()) row->SUB_NO = chat.sender;
        }
        const Result<quint64> written = p_.journal.add(*row);
        if (!written) return std::nullopt;
        keys.push_back(written.value());
    }
    return keys;
}

InboxReader::Then InboxReader::storeRows(const QString& title, const std::vector<quint64>& keys, qint64 beganMs) {
    Then then = Then::GoOn;
    try {
        for (const quint64 key : keys) {
            const Stored stored = store(key);
            log::info("inbox",
                      QStringLiteral("received message %1 %2 after %3 ms")
                          .arg(key)
                          .arg(stored == Stored::Yes ? QStringLiteral("stored") : QStringLiteral("not stored yet"))
                          .arg(p_.clock.monotonicMs() - beganMs));
            if (stored != Stored::NotNow) continue;
            then = Then::EndPass;
            break;
        }
        p_.media.save(title);
    } catch (const SurfacedError&) {
        leave();
        throw;
    }
    leave();
    return then;
}

/// Waits until the chat is there. Left before, it could come up after the dummy's chat and stay open.
std::optional<ChatLook> InboxReader::awaitChat(const QString& title, const OpenChat& before) {
    for (int tries = 0; tries < ChatOpener::kTryLimit && !p_.clock.waitingStopped(); ++tries) {
        p_.pacing.WA_WAIT(kSmallWaitMs);
        const auto look = p_.page.lookAtChat(false);
        if (!look) continue;
        p_.opener.observe(look->chat, look->linkText);
        p_.ticks.see(look->ticks);
        const bool cameUp = look->chat.serial != before.serial || (before.open && before.title == title);
        if (cameUp && look->chat.open && look->chat.title == title) return look;
    }
    return std::nullopt;
}

/// The row of an open chat shows its last message again, where before it showed a text left in the message box.
QString InboxReader::textBehindDraft(const QString& title, const QString& draft) {
    const auto list = p_.page.readChatList(0, title);
    if (!list) return draft;
    for (const ChatEntry& entry : list->entries) {
        const auto chat = entry.badge.isEmpty() ? readChat(entry) : unreadChat(entry);
        if (chat && chat->title == title) return chat->text;
    }
    return draft;
}

InboxReader::Stored InboxReader::store(quint64 key) {
    IncomingRow row;
    for (const InboxJournal::Entry& entry : p_.journal.entries())
        if (entry.key == key) row = entry.row;
    p_.journal.setMaybeStored(key);  // from here on, whatever surfaces
    const auto stored = p_.table.insert(row);
    if (!stored) {
        const bool rowRefused = stored.failure().kind == FailureKind::RowRefused;
        const QString why = QString::fromStdString(stored.failure().text);
        if (rowRefused) {
            refused_.add(key, why);
            log::error("inbox", QStringLiteral("received message %1 is refused by the database: %2").arg(key).arg(why));
        } else {
            storeAgainAtMs_ = p_.clock.monotonicMs() + kStoreAgainMs;
        }
        showNotice();
        p_.table.report(row, stored.failure());
        return rowRefused ? Stored::Refused : Stored::NotNow;
    }
    settle(key, row);
    p_.media.add(row, stored.value());
    p_.grid.append(stored.value().line);
    auto& received = p_.state.received;
    const QDate today = p_.clock.now().date();
    received = {today, received.on == today ? received.count + 1 : 1};
    p_.handOff.fire(row.wa_no, row.wa_text, row.PROFIL);
    return Stored::Yes;
}

/// Should its id not get onto the disk, the row stays in the journal, and is found in the table.
void InboxReader::settle(quint64 key, const IncomingRow& row) {
    const Result<void> noted = p_.storedIds.add(row);
    if (noted)
        p_.journal.settle(key);
    else
        log::error("inbox", QStringLiteral("ids: ") + QString::fromStdString(noted.failure().text));
}

/// Whether the row is in the table, put there by an earlier run or by a statement that seemed to fail; nothing when
/// that can't be said. The same text may have come twice within a second: then those count that have ids.
std::optional<bool> InboxReader::isStored(const InboxJournal::Entry& entry) {
    if (p_.storedIds.contains(entry.row.messageId)) return true;
    if (!entry.maybeStored) return false;
    const auto rows = p_.table.countLike(entry.row);
    return rows ? std::optional(*rows > p_.storedIds.storedLike(entry.row)) : std::nullopt;
}

void InboxReader::storeWaiting() {
    if (!p_.state.busy && !p_.state.dboff.visible && p_.clock.monotonicMs() >= storeAgainAtMs_) {
        // Events run while a bot is asked; no pass and no message may begin among them.
        const QScopedValueRollback<bool> busy(p_.state.busy, true);
        storeUndoubted();
    }
    if (!p_.state.busy) p_.media.lookAfter();
    if (!p_.media.waitingChat().isEmpty()) p_.state.readAgain = true;
    showNotice();
}

void InboxReader::storeUndoubted() {
    storeAgainAtMs_ = p_.clock.monotonicMs() + kStoreAgainMs;
    const std::vector<InboxJournal::Entry> entries = p_.journal.entries();
    for (const InboxJournal::Entry& entry : entries) {
        if (entry.doubtful || refused_.holds(entry.key)) continue;
        const std::optional<bool> stored = isStored(entry);
        if (!stored) return;
        if (*stored) {
            settle(entry.key, entry.row);
        } else if (store(entry.key) == Stored::NotNow) {
            return;
        }
    }
}

void InboxReader::showNotice() {
    const auto& entries = p_.journal.entries();
    refused_.dropIf([&entries](quint64 key) {
        return std::none_of(entries.begin(), entries.end(), [key](const auto& entry) { return entry.key == key; });
    });
    QString& notice = p_.state.inboxNotice;
    notice.clear();
    const QString& problem = p_.journal.problem().isEmpty() ? idsProblem_ : p_.journal.problem();
    if (!problem.isEmpty()) {
        notice = QStringLiteral("The inbox is not read: ") + problem;
    } else if (refused_.count() > 0) {
        notice = refused_.count() == 1 ? QStringLiteral("1 received message is")
                                       : QStringLiteral("%1 received messages are").arg(refused_.count());
        notice += QStringLiteral(" refused by the database: ") + refused_.firstReason();
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
        if (entry.doubtful && (entry.row.unread == 0 || !readAnew(entry))) p_.journal.setDoubtful(entry.key, false);
    storeUndoubted();
}

/// Opens a chat again whose unread messages were not written down before its mark went away. False where it can't be
/// opened, or shows no ids: what its row in the list said is all that is known.
bool InboxReader::readAnew(const InboxJournal::Entry& entry) {
    const QString& title = entry.row.title;
    const auto unread = reopen(title) ? readMessages(title, entry.row.unread) : std::nullopt;
    if (unread && unread->hasIds) {
        storeMessages(entry.key, {title, entry.row.wa_text, entry.row.SUB_NO}, *unread, p_.clock.monotonicMs());
        return true;
    }
    leave();
    return false;
}

/// Messages that came in while their chat was open were stored after it was left.
void InboxReader::saveMissedMedia() {
    for (QString title; !mustGiveWay() && !(title = p_.media.waitingChat()).isEmpty();) {
        (void)reopen(title);
        p_.media.save(title);  // tried once
        leave();
    }
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
