#include "engine/chat_search.h"

#include <algorithm>

#include "engine/chat_title.h"

namespace kibo {
namespace {

constexpr int kTypedMs = 2000;
// A chat that comes up just then takes the focus and the keys.
constexpr int kEmptyingTries = 3;
constexpr int kEmptiedMs = 300;
constexpr int kLookMs = 100;
constexpr qint64 kLongestSearchMs = 30'000;
// A list in which every title holds the name is a result, and more of it may only be on its way. Any other one may be
// the list as it was before, and an empty one may not be filled yet.
constexpr qint64 kResultRestMs = 1500;
constexpr qint64 kOtherRestMs = 3000;

Failure failed(const QString& why) {
    return {FailureKind::NotFound, why.toStdString()};
}

bool isResultOf(const QStringList& titles, const QString& name) {
    return !titles.isEmpty() && std::all_of(titles.begin(), titles.end(), [&](const QString& title) {
        return title.contains(name, Qt::CaseInsensitive);
    });
}

Result<QString> theOneCalled(const QString& name, const SearchLook& results) {
    const QStringList& titles = results.titles;
    const auto called = [&](const QString& title) { return sameTitle(title, name); };
    const auto count = std::count_if(titles.begin(), titles.end(), called);
    if (count > 1) return failed(QStringLiteral("ambiguous: %1 chats have this name").arg(count));
    if (!results.complete) return failed(QStringLiteral("ambiguous: too many chats are similar to this name"));
    if (count == 0) return failed(QStringLiteral("no chat has this name"));
    return *std::find_if(titles.begin(), titles.end(), called);
}

}  // namespace

ChatSearch::ChatSearch(ChatPage& page, Clock& clock, Pacing& pacing) : page_(page), clock_(clock), pacing_(pacing) {}

Result<QString> ChatSearch::find(const QString& name) {
    const QString wanted = trimmedTitle(name);
    if (wanted.contains(QLatin1Char('\n')) || wanted.contains(QLatin1Char('\r')))
        return failed(QStringLiteral("the name holds a line break"));
    if (!page_.clearBox(Box::Search) || !page_.typeText(wanted))
        return failed(QStringLiteral("the page's search box can't be used"));
    const auto typed = page_.awaitBoxText(Box::Search, wanted, kTypedMs);
    if (!typed || !typed->asExpected) return failed(QStringLiteral("the page's search box did not take the name"));

    const qint64 begin = clock_.monotonicMs();
    qint64 restingSince = begin;
    SearchLook results;
    while (clock_.monotonicMs() - begin < kLongestSearchMs) {
        pacing_.WA_WAIT(kLookMs);
        if (clock_.waitingStopped()) return failed(QStringLiteral("stopped by the operator"));
        const auto look = page_.lookAtSearch();
        if (!look) continue;
        if (look->text.trimmed() != wanted) return failed(QStringLiteral("the page's search box was changed"));
        if (look->titles != results.titles || look->complete != results.complete) restingSince = clock_.monotonicMs();
        results = *look;
        const qint64 rest = isResultOf(results.titles, wanted) ? kResultRestMs : kOtherRestMs;
        if (clock_.monotonicMs() - restingSince >= rest) return theOneCalled(wanted, results);
    }
    return failed(QStringLiteral("the page's search did not come to rest"));
}

void ChatSearch::leave() {
    for (int tries = 0; tries < kEmptyingTries; ++tries) {
        if (!page_.clearBox(Box::Search)) continue;
        const auto box = page_.awaitBoxText(Box::Search, {}, kEmptiedMs);
        if (box && box->asExpected) return;
    }
}

}  // namespace kibo
