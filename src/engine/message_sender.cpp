#include "engine/message_sender.h"

#include <utility>

#include "base/log.h"
#include "engine/phone_number.h"
#include "engine/text_expansion.h"

namespace kibo {
namespace {

constexpr int kSmallWaitMs = 100;
constexpr int kLinkPreviewMs = 3000;
constexpr int kEmptiedMs = 1000;
constexpr int kConfirmTries = 6;
constexpr int kTitleLooks = 20;
/// Code of the failure.
const std::string kUnconfirmed = "unconfirmed";

Failure failed(const char* why) {
    return {FailureKind::NotFound, why};
}

}  // namespace

MessageSender::MessageSender(Parts parts) : p_(std::move(parts)) {}

bool MessageSender::KIRIM_MODE1() {
    return send([this] { return p_.target.openNumber(p_.state.txtNo.text); });
}

bool MessageSender::KIRIM_MODE2() {
    return send([this] { return p_.target.openName(p_.state.txtNo.text); });
}

bool MessageSender::send(const std::function<Result<ChatLook>()>& openChat) {
    GatewayState& s = p_.state;
    leftToRecovery_.clear();
    unconfirmed_.clear();
    newestId_.clear();
    const qint64 start = p_.clock.monotonicMs();
    const auto files = p_.files.prepare(s.txtMedia.text, s.txtFile.text);
    if (!files) {
        recordFailure(QString::fromStdString(files.failure().text));
        return false;
    }

    s.step = QStringLiteral("Opening the chat for message %1").arg(s.txtid.text);
    ESC();
    p_.pacing.WA_WAIT(kSmallWaitMs);
    const Result<ChatLook> chat = openChat();
    const qint64 opened = p_.clock.monotonicMs();
    const Result<void> sent = chat ? deliver(chat.value(), files.value()) : Result<void>(chat.failure());
    if (!sent) {
        if (s.standby.visible) {
            leaveToOther();
            ESC();
        } else if (sent.failure().code == kInDoubt) {
            leaveInDoubt(sent.failure());
        } else if (sent.failure().code == kUnconfirmed || p_.clock.waitingStopped() ||
                   p_.page.look().presence == PageLook::Presence::Gone) {
            if (sent.failure().code == kUnconfirmed) unconfirmed_ = s.txtid.text;
            brokenOff(sent.failure());
        } else {
            SEND_FAIL(QString::fromStdString(sent.failure().text));
        }
        return false;
    }
    ++s.sentCount;
    noteSent(chat.value().chat.title);
    QString line = QStringLiteral("message %1 to %2 sent: chat open after %3 ms, sent after %4 ms")
                       .arg(s.txtid.text, destination())
                       .arg(opened - start)
                       .arg(p_.clock.monotonicMs() - start);
    for (const Attachment& file : files.value()) line += QStringLiteral(", file of %1 bytes").arg(file.size);
    log::info("engine", line);
    return true;
}

Result<void> MessageSender::deliver(const ChatLook& chat, const std::vector<Attachment>& files) {
    const QString text = typableText(textFor(chat.chat));
    if (text.size() > kLongestText)
        return Failure{FailureKind::InvalidArgument,
                       QStringLiteral("the text has %1 characters, and a message at most %2")
                           .arg(text.size())
                           .arg(kLongestText)
                           .toStdString()};
    // A draft would become part of the message.
    if (!chat.boxText.trimmed().isEmpty()) p_.page.clearBox(Box::Message);
    return files.empty() ? sendText(chat, text) : sendFiles(chat, files, text);
}

QString MessageSender::textFor(const OpenChat& opened) {
    const QString text = p_.state.txtMsg2.text;
    return expandsTexts(p_.settings) && asksForName(text) ? insertContactName(text, contactName(opened)) : text;
}

/// A chat may be known by its number before its title is drawn. One that stays without has no name that can be read.
QString MessageSender::contactName(const OpenChat& opened) {
    QString title = opened.title;
    for (int looks = 0; title.isEmpty() && looks < kTitleLooks && !p_.clock.waitingStopped(); ++looks) {
        p_.pacing.WA_WAIT(kSmallWaitMs);
        const auto look = p_.page.lookAtChat(false);
        if (look && look->chat.serial == opened.serial) title = look->chat.title;
    }
    return title;
}

Result<void> MessageSender::sendFiles(const ChatLook& chat, const std::vector<Attachment>& files,
                                      const QString& caption) {
    for (size_t i = 0; i < files.size(); ++i) {
        p_.state.step = QStringLiteral("Sending file %1 of message %2").arg(i + 1).arg(p_.state.txtid.text);
        const QString text = i == 0 ? caption : QString();
        const auto beforeSending = [&](const QString& newest) { return noteInJournal(chat, text, newest); };
        const Result<QString> sent = p_.attachments.send(files[i], text, chat.chat.serial, beforeSending);
        if (sent) {
            newestId_ = sent.value();
            lastText_ = text;
            continue;
        }
        Failure failure = sent.failure();
        if (i > 0) failure.text += " (of two files; the media file has arrived)";
        return failure;
    }
    return {};
}

Result<void> MessageSender::sendText(const ChatLook& chat, const QString& text) {
    p_.state.step = QStringLiteral("Typing message %1").arg(p_.state.txtid.text);
    const Result<QString> typed = typeText(chat, text);
    Result<void> done = typed ? noteInJournal(chat, text, typed.value()) : Result<void>(typed.failure());
    if (done && !pressEnterAndConfirm(chat.chat.serial))
        done = Failure{FailureKind::NotFound,
                       "in doubt: Enter was pressed, but the message did not leave the message box", kInDoubt};
    lastText_ = text;
    if (!done) {
        // What stands in another chat's box is the operator's own draft.
        const auto look = p_.page.lookAtChat(false);
        if (look && look->chat.serial == chat.chat.serial && !look->boxText.isEmpty()) p_.page.clearBox(Box::Message);
    }
    return done;
}

Result<QString> MessageSender::typeText(const ChatLook& chat, const QString& text) {
    Result<QString> typed = p_.typer.type(Box::Message, text, chat.chat.serial);
    if (typed && text.contains(QStringLiteral("HTTP"), Qt::CaseInsensitive)) {
        p_.pacing.WA_WAIT(kLinkPreviewMs);  // the page builds its link preview
        typed = p_.typer.check(Box::Message, text, chat.chat.serial);
    }
    if (typed && p_.clock.waitingStopped()) return failed("stopped by the operator");
    return typed;
}

/// The last thing before something is sent. Typing may have taken half a minute: what was written to this chat
/// meanwhile, up to `newest`, is not this message.
Result<void> MessageSender::noteInJournal(const ChatLook& chat, const QString& text, const QString& newest) {
    const QString& before = newest.isEmpty() ? chat.chat.lastMessageId : newest;
    // First of all: what stands in the database from here on tells whoever takes over that it may have been sent.
    const QString& id = p_.state.txtid.text;
    if (p_.confirmHold && p_.confirmHold(id, p_.records.begunAttempt(id)) != Hold::Ours)
        return Failure{FailureKind::NotFound, "the database doesn't confirm that this instance has the profile",
                       kUnconfirmed};
    if (p_.journal.typed(p_.state.txtid.text, p_.state.txtNo.text, text, before)) {
        p_.records.typed(p_.state.txtid.text);
        newestBefore_ = before;
        return {};
    }
    return failed("the journal can't be written, so the message was not sent");
}

/// The one place where a text is sent.
bool MessageSender::pressEnterAndConfirm(int chatSerial) {
    p_.page.pressEnter();
    // Asked again, the page may only have been slow. Enter is not repeated: whether the first one is still on
    // its way can't be known.
    for (int tries = 0; tries < kConfirmTries; ++tries) {
        const QString next = p_.opener.addressAfterMessage();
        const auto box = p_.page.awaitSent(next, kEmptiedMs);
        if (box && box->linkPointed) p_.opener.linkPointed(next);
        if (box && box->chatSerial != chatSerial) return false;
        if (box && box->asExpected) {
            newestId_ = box->lastMessageId;
            return true;
        }
    }
    return false;
}

/// A page that draws the message late still shows the one before it as its newest.
void MessageSender::noteSent(const QString& chatTitle) {
    const QString& id = p_.state.txtid.text;
    const QString pageId = newestId_ == newestBefore_ ? QString() : newestId_;
    p_.records.sent(id, pageId);
    p_.ticks.sent({id, pageId, chatTitle, lastText_});
    if (p_.records.ended(id, {MessageRecords::kSent}))
        p_.journal.ended(id);
    else
        p_.journal.sent(id);
}

/// The journal keeps it open: its chat is looked into before anything else is sent.
void MessageSender::leaveInDoubt(const Failure& failure) {
    log::warning("engine", QStringLiteral("message %1: %2; its chat will tell")
                               .arg(p_.state.txtid.text, QString::fromStdString(failure.text)));
    ESC();
}

/// The instance that has taken over settles it, and the journal keeps it until that can be seen.
void MessageSender::leaveToOther() {
    log::warning("engine",
                 QStringLiteral("message %1 is left to the instance that has taken over").arg(p_.state.txtid.text));
    leftToRecovery_ = p_.state.txtid.text;
}

void MessageSender::brokenOff(const Failure& failure) {
    const QString id = p_.state.txtid.text;
    const SendJournal::Entry* entry = p_.journal.entry(id);
    if (entry && entry->stage == SendJournal::Stage::Taken)
        leftToRecovery_ = id;
    else
        recordFailure(QString::fromStdString(failure.text));
}

void MessageSender::SEND_FAIL(const QString& reason) {
    recordFailure(reason);
    ESC();
}

void MessageSender::recordFailure(const QString& reason) {
    GatewayState& s = p_.state;
    // Marked late, it could be the other one's attempt that is marked.
    if (p_.confirmHold && p_.confirmHold({}, {}) == Hold::Lost) {
        leaveToOther();
        return;
    }
    ++s.failedCount;
    p_.unsent.add(s.txtNo.text, s.txtMsg2.text, reason, s.txtid.text);
    log::warning("engine", QStringLiteral("message %1 to %2 failed: %3").arg(s.txtid.text, destination(), reason));
    p_.journal.failed(s.txtid.text, reason);
    if (p_.queue.markFailed(s.txtid.text, reason))
        p_.journal.ended(s.txtid.text);
    else
        log::error("engine",
                   QStringLiteral("message %1 is not marked as failed yet: the database refuses").arg(s.txtid.text));
}

/// Where the message goes, as it may stand in the log.
QString MessageSender::destination() const {
    const QString number = cleanedNumber(p_.state.txtNo.text);
    return isPositiveNumber(number) ? log::maskedNumber(number) : QStringLiteral("a chat by name");
}

void MessageSender::ESC() {
    p_.page.pressEscapeTwice(kBetweenEscapesMs);
}

}  // namespace kibo
