#include <QString>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"

namespace kibo::bench {
namespace {

constexpr int kSamples = 25;
constexpr double kLimitMs = 150;
constexpr int kCharacters = 1000;
constexpr int kLineBreaks = 5;

/// A thousand characters as people count them, every tenth an emoji, in six lines.
QString longText() {
    QString text;
    for (int i = 0; i < kCharacters; ++i) {
        if (i > 0 && i % (kCharacters / (kLineBreaks + 1)) == 0 && text.count(u'\n') < kLineBreaks) {
            text += u'\n';
        } else if (i % 10 == 9) {
            text += QStringLiteral("\U0001F600");
        } else {
            text += i % 6 == 5 ? QChar(u' ') : QChar(u'a' + i % 26);
        }
    }
    return text;
}

}  // namespace

void measureComposer(Table& table) {
    SystemClock clock;
    BrowserPage chat(clock);
    chat.openChat(QStringLiteral("6281234567890"));
    const QString text = longText();
    const auto look = chat.page.lookAtChat(true);
    require(look.has_value(), "the chat can't be looked at");
    const int chatSerial = look->chat.serial;
    std::vector<double> times;
    const quint64 before = chat.browser.client().commandsSent();
    quint64 clearing = 0;
    for (int i = 0; i < kSamples; ++i) {
        times.push_back(millisecondsOf([&] {
            const auto box = chat.page.pasteText(Box::Message, text, chatSerial, 2000);
            require(box && box->asExpected, "the message box did not take the text");
        }));
        const quint64 typed = chat.browser.client().commandsSent();
        require(chat.page.clearBox(Box::Message) && chat.page.awaitBoxText(Box::Message, {}, 2000),
                "the message box can't be emptied");
        clearing += chat.browser.client().commandsSent() - typed;
    }
    table.add({"1,000 characters, emoji, 5 line breaks: into the box", "ms", median(times), kLimitMs, 1, kSamples});
    const auto commands = (chat.browser.client().commandsSent() - before - clearing) / kSamples;
    table.note("  the long text is typed and read back by " + std::to_string(commands) + " commands");
}

}  // namespace kibo::bench
