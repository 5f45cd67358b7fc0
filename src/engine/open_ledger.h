#pragma once

#include <QHash>
#include <QString>
#include <vector>

#include "browser/chat_page.h"

namespace kibo {

/// Which chat is it that has come up? The page opens a chat some time after the link was clicked, possibly after
/// another link has been clicked, and shows a saved contact's name rather than the number. The ledger keeps the
/// clicks whose chat has not been seen yet and decides by what can be known, never by a guess:
///
///  - what the chat itself names: a title that is a number, numbers in its messages;
///  - the name that a number was seen to have before;
///  - failing both, a chat is taken for the one asked for only when it came up after the click, no other click is
///    waiting for a chat that it could be, and nobody has clicked in the page since.
///
/// A chat can also be asked for by its entry in the chat list. Then the title is the evidence: it must be the entry's.
/// Such a click is kept under `entryKey` where the others have their number.
///
/// Times are milliseconds of the Clock's monotonic time.
class OpenLedger {
 public:
    /// A click that has not shown its chat for this long no longer holds up the next message.
    static constexpr qint64 kGiveUpMs = 20'000;
    /// And for this long it still counts when chats must be told apart.
    static constexpr qint64 kForgetMs = 120'000;

    /// What stands for the chat-list entry with this title in place of a number.
    static QString entryKey(const QString& title);

    /// The link for `number`, or an entry, was clicked while `before` was on the page.
    void clicked(const QString& number, const OpenChat& before, qint64 nowMs);
    /// The link for `number`, or an entry, may have been clicked: the page did not answer.
    void clickedBlindly(const QString& number, qint64 nowMs);
    /// The chat with this title was clicked in the chat list while `before` was on the page. It comes up like any
    /// other, some time later, and must not be taken for the chat of a number.
    void clickedName(const QString& title, const OpenChat& before, qint64 nowMs);
    /// The same, where the page did not answer.
    void clickedNameBlindly(const QString& title, qint64 nowMs);
    /// The page showed this. Call with every look.
    void observe(const OpenChat& chat, qint64 nowMs);
    /// The page says that a number can't be opened, so nothing is awaited from that click any more. Returns which:
    /// the number that the notice names, else the only one waiting, else the one clicked last.
    QString refusedBy(const QString& notice);
    /// `number` could not be recognised: its contact may have got another name since.
    void forgetName(const QString& number) { names_.remove(number); }

    /// Whether the conversation on the page is known to be the one of `number`, or of an entry.
    bool isOpen(const QString& number) const { return !number.isEmpty() && number == current_; }
    /// Whether every clicked chat has come up or was given up, so that none can appear under the next message.
    bool settled(qint64 nowMs) const;

 private:
    struct Click {
        QString number;  // or an entry's key
        qint64 atMs;
        int clicksBefore = -1;  // of a click without answer: what the page had counted when it was last seen
        QString name = {};      // of a click in the chat list, which has no number
    };

    bool neverHappened(const Click& click, const OpenChat& chat) const;

    void recognise(const OpenChat& chat);
    bool contradicts(const OpenChat& chat, const QString& number) const;
    void settle(const QString& number);
    bool settleName(const QString& title);

    std::vector<Click> waiting_;
    QString lastClicked_;
    QHash<QString, QString> names_;  // number → the contact's name, as seen
    QString current_;                // number or key of the conversation on the page, empty when not known
    bool cameUpSinceClick_ = false;  // the conversation on the page appeared after the last click
    int serial_ = 0;
    int clicks_ = 0;
    int personClicks_ = 0;  // at our last click
};

}  // namespace kibo
