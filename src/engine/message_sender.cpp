#include "engine/message_sender.h"

#include "app/log.h"
#include "engine/phone_number.h"
#include "engine/text_expansion.h"

namespace kibo {
namespace {

constexpr int kSmallWaitMs = 100;
constexpr int kLinkPreviewMs = 3000;
// The editor applies what was typed asynchronously; long texts take longer.
constexpr int kReadBackMs = 2000;
constexpr int kCharactersPerReadBack = 10'000;
// A person would have given up typing by then; so would the page.
constexpr qint64 kLongestTypingMs = 30'000;
constexpr int kLinesAtATime = 25;
constexpr int kEmptiedMs = 1000;
constexpr int kConfirmTries = 6;
const QString kStopped = QStringLiteral("stopped by the operator");

}  // namespace

QString typableText(const QString& text) {
    QString typable;
    typable.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            typable += c;
            typable += text[++i];
        } else if (c == QLatin1Char('\n') || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) {
            typable += QLatin1Char('\n');
        } else if (c == QLatin1Char('\r')) {
            if (i + 1 >= text.size() || text[i + 1] != QLatin1Char('\n')) typable += QLatin1Char('\n');
        } else if (c == QLatin1Char('\t') || c == QChar::Nbsp) {
            typable += QLatin1Char(' ');
        } else if (!c.isSurrogate() && c.category() != QChar::Other_Control) {
            typable += c;
        }
    }
    return typable;
}

MessageSender::MessageSender(GatewayState& state, ChatPage& page, const ElementTable& elements, Clock& clock,
                             Pacing& pacing, ChatOpener& opener, OutboxQueue& queue, SendJournal& journal,
                             LocatorCheck& locators)
    : state_(state),
      page_(page),
      elements_(elements),
      clock_(clock),
      pacing_(pacing),
      opener_(opener),
      queue_(queue),
      journal_(journal),
      locators_(locators) {}

bool MessageSender::KIRIM_MODE1() {
    const qint64 start = clock_.monotonicMs();
    number_ = cleanedNumber(state_.txtNo.text);
    state_.step = QStringLiteral("Opening the chat for message %1").arg(state_.txtid.text);
    page_.pressEscape();
    pacing_.WA_WAIT(kSmallWaitMs);
    page_.pressEscape();
    pacing_.WA_WAIT(kSmallWaitMs);

    if (!openChat()) return false;
    const qint64 opened = clock_.monotonicMs();
    if (!typeAndSend(typableText(insertContactName(state_.txtMsg2.text, chat_.chat.title)))) return false;

    ++state_.sentCount;
    journal_.ended(state_.txtid.text);
    log::info("engine", QStringLiteral("message %1 to %2 sent: chat open after %3 ms, sent after %4 ms")
                            .arg(state_.txtid.text, log::maskedNumber(number_))
                            .arg(opened - start)
                            .arg(clock_.monotonicMs() - start));
    return true;
}

bool MessageSender::openChat() {
    if (!opener_.GOTONOMOR(state_.txtNo.text)) {
        opener_.enableTimers();
        SEND_FAIL(isPositiveNumber(number_) ? QStringLiteral("the number is too short")
                                            : QStringLiteral("the number holds more than digits"));
        return false;
    }
    pacing_.WA_WAIT(pacing_.dwell());
    if (!awaitChat()) return false;
    if (chat_.linkText != opener_.chatAddress(number_)) {
        SEND_FAIL(QStringLiteral("the page holds another chat's link"));
        return false;
    }
    return true;
}

bool MessageSender::awaitChat() {
    for (int tries = 1;; ++tries) {
        pacing_.WA_WAIT(kSmallWaitMs);
        if (clock_.waitingStopped()) {
            SEND_FAIL(kStopped);
            return false;
        }
        const auto look = page_.lookAtChat(true);
        if (look) opener_.observe(look->chat, look->linkPlanted);
        if (look && look->hasNotice && matchesNotice(elements_[QStringLiteral("XXInfo3")], look->notice)) {
            page_.pressEscape();
            pacing_.WA_WAIT(kSmallWaitMs);
            if (opener_.refusedBy(look->notice) == number_) {
                SEND_FAIL(QStringLiteral("the number is not on WhatsApp"));
                return false;
            }
        }
        if (tries > ChatOpener::kTryLimit) {
            const bool recognised = opener_.isOpen(number_);
            const QString missing = look ? LocatorCheck::missingIn(look->chat, look->hasBox) : QString();
            if (!missing.isEmpty() && (recognised || missing != QStringLiteral("XX_ChatBox"))) {
                locators_.missed(missing);
                SEND_FAIL(QStringLiteral("Page changed: ") + missing);
                return false;
            }
            opener_.notRecognised(number_);
            SEND_FAIL(QStringLiteral("the chat did not open in time"));
            return false;
        }
        if (look && CEK_FAIL(*look)) {
            chat_ = *look;
            return true;
        }
        // A link that the page did not take has opened a tab, and a page behind another tab is slowed down.
        if (tries % 5 == 1) page_.closeStrayTabs();
    }
}

/// Repairs a lost chat link; true when the chat asked for is there, its message box ready for typing.
bool MessageSender::CEK_FAIL(const ChatLook& look) {
    if (!look.linkPlanted) {
        opener_.plantLink(number_);
        return false;
    }
    return look.hasBox && look.boxFocused && opener_.isOpen(number_);
}

bool MessageSender::typeAndSend(QString text) {
    state_.step = QStringLiteral("Typing message %1").arg(state_.txtid.text);
    const QString wanted = text;
    const auto giveUp = [&](const QString& reason) {
        // What stands in another chat's box is the operator's own draft.
        const auto look = page_.lookAtChat(false);
        if (look && look->chat.serial == chat_.chat.serial && !look->boxText.isEmpty()) page_.clearBox();
        SEND_FAIL(reason);
        return false;
    };
    if (!chat_.boxText.trimmed().isEmpty()) page_.clearBox();  // a draft would become part of the message
    KETIK(text);

    auto box = page_.awaitBoxText(wanted, kReadBackMs);
    for (qsizetype more = wanted.size() / kCharactersPerReadBack; more > 0 && !(box && box->asExpected); --more)
        box = page_.awaitBoxText(wanted, kReadBackMs);
    if (!box || !box->asExpected) return giveUp(QStringLiteral("the message box did not take the text"));
    if (wanted.contains(QStringLiteral("HTTP"), Qt::CaseInsensitive)) {
        pacing_.WA_WAIT(kLinkPreviewMs);  // the page builds its link preview
        box = page_.awaitBoxText(wanted, 0);
        if (!box || !box->asExpected) return giveUp(QStringLiteral("the message box changed before Enter"));
    }
    if (box->chatSerial != chat_.chat.serial) return giveUp(QStringLiteral("another chat came up before Enter"));
    if (clock_.waitingStopped()) return giveUp(kStopped);
    if (!journal_.typed(state_.txtid.text, wanted, chat_.chat.lastMessageId))
        return giveUp(QStringLiteral("the journal can't be written, so the message was not sent"));
    if (!pressEnterAndConfirm())
        return giveUp(QStringLiteral("in doubt: Enter was pressed, but the message did not leave the message box"));
    return true;
}

void MessageSender::KETIK(QString& text) {
    const QStringList lines = text.split(QLatin1Char('\n'));
    const qint64 latest = clock_.monotonicMs() + kLongestTypingMs;
    for (qsizetype i = 0; i < lines.size(); i += kLinesAtATime) {
        if (i > 0) clock_.runPendingEvents();  // many lines take seconds, and the window stays alive
        if (clock_.waitingStopped() || clock_.monotonicMs() > latest) break;
        const QString some = lines.mid(i, kLinesAtATime).join(QLatin1Char('\n'));
        if (!page_.typeText(i > 0 ? QLatin1Char('\n') + some : some)) break;
    }
    text.replace(QLatin1Char('\n'), QChar(11));
    state_.txtMsg2.text = text;
}

bool MessageSender::pressEnterAndConfirm() {
    page_.pressEnter();
    // Asked again, the page may only have been slow. Enter is not repeated: whether the first one is still on
    // its way can't be known.
    for (int tries = 0; tries < kConfirmTries; ++tries) {
        const auto box = page_.awaitBoxText(QString(), kEmptiedMs);
        if (box && box->chatSerial != chat_.chat.serial) return false;
        if (box && box->asExpected) return true;
    }
    return false;
}

void MessageSender::SEND_FAIL(const QString& reason) {
    recordFailure(reason);
    ESC();
}

void MessageSender::recordFailure(const QString& reason) {
    ++state_.failedCount;
    if (state_.ms2.rows != unsent_) {  // the operator has emptied the grid
        unsent_ = std::make_shared<ListRows>();
    }
    unsent_->append(
        {state_.txtNo.text, state_.txtMsg2.text, clock_.now().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), reason});
    state_.ms2.setRows(unsent_);
    log::warning("engine", QStringLiteral("message %1 to %2 failed: %3")
                               .arg(state_.txtid.text, log::maskedNumber(cleanedNumber(state_.txtNo.text)), reason));
    journal_.failed(state_.txtid.text, reason);
    if (queue_.markFailed(state_.txtid.text))
        journal_.ended(state_.txtid.text);
    else
        log::error(
            "engine",
            QStringLiteral("message %1 is not marked as failed yet: the database refuses").arg(state_.txtid.text));
}

void MessageSender::ESC() {
    page_.pressEscape();
    pacing_.WA_WAIT(kSmallWaitMs);
    page_.pressEscape();
}

}  // namespace kibo
