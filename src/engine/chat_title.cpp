#include "engine/chat_title.h"

namespace kibo {

QString trimmedTitle(const QString& title) {
    const auto unseen = [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Format; };
    qsizetype begin = 0, end = title.size();
    while (begin < end && unseen(title[begin])) ++begin;
    while (end > begin && unseen(title[end - 1])) --end;
    return title.mid(begin, end - begin).replace(QChar::Nbsp, QLatin1Char(' '));
}

bool sameTitle(const QString& one, const QString& other) {
    return trimmedTitle(one).compare(trimmedTitle(other), Qt::CaseInsensitive) == 0;
}

}  // namespace kibo
