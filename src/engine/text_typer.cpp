#include "engine/text_typer.h"

#include <algorithm>

#include "base/log.h"

namespace kibo {
namespace {

// The editor applies what was typed asynchronously; long texts take longer.
constexpr int kReadBackMs = 2000;
constexpr int kCharactersPerReadBack = 10'000;
// A person would have given up typing by then; so would the page.
constexpr qint64 kLongestTypingMs = 30'000;
constexpr int kLinesAtATime = 25;
// Stands for a line feed in a text that was typed, which may come back in a failed message that is queued again.
constexpr char16_t kTypedLineBreak = 11;
constexpr int kKeysAtATime = 500;
// Other programs are told of a new clipboard in their own time.
constexpr int kLongText = 1000;
constexpr int kLongClipboardMs = 3000;
constexpr int kClipboardMs = 1000;

/// Gives the clipboard back however the typing ends.
class Loan {
 public:
    explicit Loan(Clipboard* clipboard) : clipboard_(clipboard) {}
    ~Loan() {
        if (clipboard_) clipboard_->giveBack();
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;

 private:
    Clipboard* clipboard_;
};

QString nameOf(Box box) {
    return box == Box::Caption ? QStringLiteral("the caption box") : QStringLiteral("the message box");
}

}  // namespace

QString typableText(const QString& text) {
    QString typable;
    typable.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            typable += c;
            typable += text[++i];
        } else if (c == QLatin1Char('\n') || c == QChar(kTypedLineBreak) || c == QChar::LineSeparator ||
                   c == QChar::ParagraphSeparator) {
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

TextTyper::TextTyper(GatewayState& state, Settings& settings, ChatPage& page, Clock& clock, Pacing& pacing,
                     Clipboard* clipboard)
    : state_(state), settings_(settings), page_(page), clock_(clock), pacing_(pacing), clipboard_(clipboard) {}

Result<QString> TextTyper::type(Box box, const QString& text, int chatSerial) {
    // The page may ask for the clipboard's text until it has it.
    const Loan loan(usesClipboard() ? clipboard_ : nullptr);
    QString typed = text;
    const auto ketik = [&] {
        KETIK(typed);
        return readBack(box, text, chatSerial);
    };
    const bool pasting = takesPastes_ && !usesClipboard();
    Result<QString> done = text.isEmpty() ? readBack(box, text, chatSerial)
                           : pasting      ? paste(box, text, chatSerial)
                                          : ketik();
    const auto shallTryAgain = [&] {
        return !done && done.failure().kind == FailureKind::Protocol && !clock_.waitingStopped() && page_.clearBox(box);
    };
    if (text.isEmpty()) return shallTryAgain() ? readBack(box, text, chatSerial) : done;
    if (pasting && shallTryAgain()) {
        done = ketik();
        if (done) takesPastes_ = false;
    }
    if (shallTryAgain()) {
        log::info("engine", QStringLiteral("message %1 is typed once more, by keys").arg(state_.txtid.text));
        typeKeys(text);
        done = readBack(box, text, chatSerial);
    }
    state_.txtMsg2.text = QString(text).replace(QLatin1Char('\n'), QChar(kTypedLineBreak));
    return done;
}

bool TextTyper::usesClipboard() {
    if (isYes(settings_.Headless)) settings_.SendUsingClipboard = QStringLiteral("N");
    return clipboard_ && isYes(settings_.SendUsingClipboard);
}

Result<QString> TextTyper::check(Box box, const QString& text, int chatSerial) {
    const auto look = page_.awaitBoxText(box, text, 0);
    if (!look || !look->asExpected)
        return Failure{FailureKind::Protocol, (nameOf(box) + QStringLiteral(" changed before Enter")).toStdString()};
    if (look->chatSerial != chatSerial) return Failure{FailureKind::NotFound, "another chat came up before Enter"};
    return look->lastMessageId;
}

void TextTyper::KETIK(QString& text) {
    if (usesClipboard()) {
        clipboard_->lend(text);
        pacing_.WA_WAIT(text.size() >= kLongText ? kLongClipboardMs : kClipboardMs);
        page_.pressPaste();
    } else {
        typeLines(text);
    }
    text.replace(QLatin1Char('\n'), QChar(kTypedLineBreak));
}

Result<QString> TextTyper::paste(Box box, const QString& text, int chatSerial) {
    const Result<QString> pasted = judge(box, page_.pasteText(box, text, chatSerial, kReadBackMs), chatSerial);
    if (pasted || text.size() < kCharactersPerReadBack) return pasted;
    return readBack(box, text, chatSerial);
}

void TextTyper::typeLines(const QString& text) {
    const QStringList lines = text.split(QLatin1Char('\n'));
    const qint64 latest = clock_.monotonicMs() + kLongestTypingMs;
    for (qsizetype i = 0; i < lines.size(); i += kLinesAtATime) {
        if (i > 0) clock_.runPendingEvents();  // many lines take seconds, and the window stays alive
        if (clock_.waitingStopped() || clock_.monotonicMs() > latest) return;
        const QString some = lines.mid(i, kLinesAtATime).join(QLatin1Char('\n'));
        if (!page_.typeText(i > 0 ? QLatin1Char('\n') + some : some)) return;
    }
}

void TextTyper::typeKeys(const QString& text) {
    const qint64 latest = clock_.monotonicMs() + kLongestTypingMs;
    for (qsizetype i = 0; i < text.size();) {
        if (i > 0) clock_.runPendingEvents();
        if (clock_.waitingStopped() || clock_.monotonicMs() > latest) return;
        qsizetype count = std::min<qsizetype>(kKeysAtATime, text.size() - i);
        if (text[i + count - 1].isHighSurrogate()) ++count;  // its other half belongs to it
        if (!page_.typeKeys(text.mid(i, count))) return;
        i += count;
    }
}

Result<QString> TextTyper::readBack(Box box, const QString& text, int chatSerial) {
    auto look = page_.awaitBoxText(box, text, kReadBackMs);
    for (qsizetype more = text.size() / kCharactersPerReadBack; more > 0 && !(look && look->asExpected); --more)
        look = page_.awaitBoxText(box, text, kReadBackMs);
    return judge(box, look, chatSerial);
}

Result<QString> TextTyper::judge(Box box, const std::optional<BoxLook>& look, int chatSerial) {
    if (look && look->chatSerial != chatSerial)
        return Failure{FailureKind::NotFound, "another chat came up before Enter"};
    if (!look || !look->asExpected)
        return Failure{look ? FailureKind::Protocol : FailureKind::Transport,
                       (nameOf(box) + QStringLiteral(" did not take the text")).toStdString()};
    return look->lastMessageId;
}

}  // namespace kibo
