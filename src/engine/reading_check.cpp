#include "engine/reading_check.h"

#include "base/log.h"

namespace kibo {
namespace {

/// A list that is being loaded or filtered shows odd things for a while.
constexpr qint64 kLongMs = 60'000;
/// An account without chats has a few lines there too, and rows that are no chats.
constexpr int kLinesOfChats = 12;
constexpr int kRowsOfChats = 3;

const QString kRow = QStringLiteral("XX_ReadMessage");
const QString kTitle = QStringLiteral("XX_EntryTitle");
const QString kMark = QStringLiteral("XX_UnreadBadge");

/// The locator without which nothing can be read; empty when something can.
QString missingIn(const ListSigns& signs) {
    if (signs.titled == 0 && signs.filled >= kRowsOfChats) return kTitle;
    if (signs.titled == 0 && signs.lines >= kLinesOfChats) return kRow;
    return signs.markedElsewhere > 0 && signs.counted == 0 ? kRow : QString();
}

}  // namespace

void ReadingCheck::observe(const ListSigns& signs) {
    const QString missing = missingIn(signs);
    const bool stuck = state_.readingChanged == kMark && signs.counted > signs.marked;
    if (missing.isEmpty() && !stuck) release();
    if (missing != missing_ || missing.isEmpty()) missingSinceMs_.reset();
    missing_ = missing;
    if (missing.isEmpty()) return;
    if (!missingSinceMs_) missingSinceMs_ = clock_.monotonicMs();
    if (clock_.monotonicMs() - *missingSinceMs_ >= kLongMs) hold(missing, "nothing in the chat list can be read by it");
}

void ReadingCheck::staysUnread() {
    hold(kMark, "it finds no mark in a chat that looks unread and is not");
}

void ReadingCheck::hold(const QString& locator, const char* why) {
    if (state_.readingChanged == locator) return;
    state_.readingChanged = locator;
    log::error("engine", QStringLiteral("reading stops because of %1: %2, the page seems to have changed; correct its "
                                        "row in element.sys")
                             .arg(locator, QString::fromLatin1(why)));
}

void ReadingCheck::release() {
    if (!readingIsHeld()) return;
    state_.readingChanged.clear();
    log::info("engine", QStringLiteral("reading goes on: the chat list can be read again"));
}

}  // namespace kibo
