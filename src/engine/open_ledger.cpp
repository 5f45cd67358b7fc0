#include "engine/open_ledger.h"

#include <algorithm>

#include "engine/chat_title.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

/// A notice with fewer digits names no number.
constexpr int kShortestNamed = 5;

/// So many names of contacts are remembered.
constexpr qsizetype kMostNames = 2000;

/// No number begins like this.
constexpr QLatin1Char kEntryMark('"');

bool isEntry(const QString& number) {
    return number.startsWith(kEntryMark);
}

/// Whether the conversation itself names this number, or has this entry's title.
bool isNamed(const OpenChat& chat, const QString& number) {
    if (isEntry(number)) return !chat.title.isEmpty() && OpenLedger::entryKey(chat.title) == number;
    if (!chat.number.isEmpty()) return sameSubscriber(chat.number, number);
    return looksLikeNumber(chat.title) && sameSubscriber(chat.title, number);
}

}  // namespace

QString OpenLedger::entryKey(const QString& title) {
    return kEntryMark + trimmedTitle(title).toCaseFolded();
}

void OpenLedger::clicked(const QString& number, const OpenChat& before, qint64 nowMs) {
    observe(before, nowMs);
    // Asked for the chat that is open already, the page may change nothing: there is nothing to wait for.
    const bool openAlready = before.open && (current_ == number || (!isEntry(number) && isNamed(before, number)));
    clickedBlindly(number, nowMs);
    waiting_.back().clicksBefore = -1;
    clicks_ = before.clicks + (isEntry(number) ? 0 : 1);
    personClicks_ = before.personClicks;
    if (!openAlready) return;
    settle(number);
    current_ = number;
}

void OpenLedger::clickedBlindly(const QString& number, qint64 nowMs) {
    settle(number);
    // The page's record tells of links only.
    waiting_.push_back({number, nowMs, isEntry(number) ? -1 : clicks_});
    lastClicked_ = number;
    current_.clear();
    cameUpSinceClick_ = false;
}

void OpenLedger::clickedName(const QString& title, const OpenChat& before, qint64 nowMs) {
    observe(before, nowMs);
    clickedNameBlindly(title, nowMs);
    if (before.open && before.title == title) settleName(title);  // nothing comes up
}

void OpenLedger::clickedNameBlindly(const QString& title, qint64 nowMs) {
    settleName(title);
    waiting_.push_back({{}, nowMs, -1, title});
    lastClicked_.clear();
    current_.clear();
    cameUpSinceClick_ = false;
}

void OpenLedger::observe(const OpenChat& chat, qint64 nowMs) {
    std::erase_if(waiting_, [&](const Click& click) {
        if (nowMs - click.atMs > kGiveUpMs && click.name.isEmpty()) names_.remove(click.number);
        return nowMs - click.atMs > kForgetMs;
    });
    if (chat.serial < serial_) {  // the page was loaded anew: nothing clicked before can come up any more
        waiting_.clear();
        current_.clear();
        serial_ = 0;
    }
    std::erase_if(waiting_, [&](const Click& click) { return neverHappened(click, chat); });
    clicks_ = chat.clicks;
    const int firstTitled = chat.serial - static_cast<int>(chat.titles.size()) + 1;
    for (int serial = std::max(serial_ + 1, firstTitled); serial <= chat.serial; ++serial) {
        current_.clear();
        cameUpSinceClick_ = true;
        if (serial == chat.serial && chat.open) break;  // the one on the page is judged by all that it shows
        OpenChat passed;
        passed.title = chat.titles.value(serial - firstTitled);
        passed.personClicks = chat.personClicks;
        recognise(passed);
    }
    serial_ = chat.serial;
    if (!chat.open) {
        current_.clear();
        cameUpSinceClick_ = false;
        return;
    }
    if (!current_.isEmpty() && contradicts(chat, current_)) current_.clear();
    if (current_.isEmpty() && cameUpSinceClick_) recognise(chat);
}

QString OpenLedger::refusedBy(const QString& notice) {
    QStringList numbers;
    for (const Click& click : waiting_)
        if (!isEntry(click.number)) numbers.append(click.number);
    QString number = numbers.size() == 1 ? numbers.first() : isEntry(lastClicked_) ? QString() : lastClicked_;
    const QString named = digitsIn(notice);
    if (named.size() >= kShortestNamed) {
        const auto meant = std::find_if(numbers.begin(), numbers.end(),
                                        [&](const QString& asked) { return sameSubscriber(named, asked); });
        number = meant != numbers.end() ? *meant : named;
    }
    settle(number);
    return number;
}

bool OpenLedger::settled(qint64 nowMs) const {
    return std::none_of(waiting_.begin(), waiting_.end(),
                        [&](const Click& click) { return nowMs - click.atMs <= kGiveUpMs; });
}

/// Finds the click that this conversation answers: the one that it is seen to be, else the only one that it can be.
void OpenLedger::recognise(const OpenChat& chat) {
    if (chat.title.isEmpty() && chat.number.isEmpty()) return;
    // A number that was seen to have no name can hardly have got one by now, so it comes last.
    QStringList seen, possible, unlikely;
    const auto consider = [&](const QString& number) {
        if (contradicts(chat, number)) return;
        const QString name = names_.value(number);
        QStringList& numbers = isNamed(chat, number) || (!name.isEmpty() && name == chat.title) ? seen
                               : name.isEmpty()                                                 ? possible
                                                                                                : unlikely;
        if (!numbers.contains(number)) numbers.append(number);
    };
    const bool clickedInList = settleName(chat.title);
    for (const Click& click : waiting_)
        if (click.name.isEmpty()) consider(click.number);
    // A page that draws the same chat anew has come up again without a click.
    if (names_.contains(lastClicked_)) consider(lastClicked_);
    if (seen.isEmpty() && clickedInList) return;
    if (seen.isEmpty() && chat.personClicks != personClicks_) return;  // a person may have opened it
    const QStringList& candidates = !seen.isEmpty() ? seen : !possible.isEmpty() ? possible : unlikely;
    if (candidates.size() != 1) return;
    current_ = candidates.first();
    settle(current_);
    if (chat.title.isEmpty() || isEntry(current_)) return;
    if (names_.size() >= kMostNames) {
        // A number whose name is forgotten is like one that was never seen; one that is still waited for is not.
        const auto idle = std::find_if(names_.keyBegin(), names_.keyEnd(), [this](const QString& number) {
            return std::none_of(waiting_.begin(), waiting_.end(),
                                [&](const Click& click) { return click.number == number; });
        });
        if (idle != names_.keyEnd()) names_.erase(idle.base());
    }
    names_.insert(current_, chat.title);
}

/// A page that answers again has done what it was told before, or lost it; its own record tells which.
bool OpenLedger::neverHappened(const Click& click, const OpenChat& chat) const {
    if (click.clicksBefore < 0) return false;
    const int since = std::max(chat.clicks - click.clicksBefore, 0);
    const QStringList newest = chat.clicked.mid(std::max<qsizetype>(chat.clicked.size() - since, 0));
    return std::none_of(newest.begin(), newest.end(),
                        [&](const QString& address) { return address.endsWith(click.number); });
}

bool OpenLedger::contradicts(const OpenChat& chat, const QString& number) const {
    if (isEntry(number)) return !isNamed(chat, number);
    if (!chat.number.isEmpty()) return !sameSubscriber(chat.number, number);
    if (looksLikeNumber(chat.title)) return !sameSubscriber(chat.title, number);
    const QString seen = names_.value(number);
    return !seen.isEmpty() && !looksLikeNumber(seen) && seen != chat.title;
}

void OpenLedger::settle(const QString& number) {
    std::erase_if(waiting_, [&](const Click& click) { return click.name.isEmpty() && click.number == number; });
}

bool OpenLedger::settleName(const QString& title) {
    return !title.isEmpty() && std::erase_if(waiting_, [&](const Click& click) { return click.name == title; }) > 0;
}

}  // namespace kibo
