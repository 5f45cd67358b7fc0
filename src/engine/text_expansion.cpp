#include "engine/text_expansion.h"

#include <QLocale>
#include <QStringList>
#include <cmath>
#include <vector>

namespace kibo {
namespace {

constexpr int kGroupSlots = 10;  // the appended empty group takes one, so a text may carry 9 of its own

QString marker(int group) {
    return QStringLiteral("{%1}").arg(group);
}

/// The system's short date and its time with seconds.
QString generalDate(const QDateTime& now) {
    const QLocale locale;
    QString timeFormat = locale.timeFormat(QLocale::ShortFormat);
    if (!timeFormat.contains(QStringLiteral("ss"))) timeFormat.replace(QStringLiteral("mm"), QStringLiteral("mm:ss"));
    return locale.toString(now.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(now.time(), timeFormat);
}

}  // namespace

bool expandsTexts(const Settings& settings) {
    return settings.ExpandText != QStringLiteral("N");
}

int randomInteger(int lower, int upper, const RandomSource& random) {
    return static_cast<int>(std::floor((upper - lower + 1) * random() + lower));
}

Result<QString> expandAlternatives(const QString& text, const RandomSource& random) {
    QString rest = text + QStringLiteral("[|]");  // so that there is always at least one group
    std::vector<QStringList> groups;
    // Only the first brackets of the whole text count, and each round removes one of each, so the text is read
    // once from left to right: what stands before the first bracket is finished.
    QString expanded;
    qsizetype position = 0;
    for (;;) {
        const qsizetype open = rest.indexOf(QLatin1Char('['), position);
        const qsizetype close = rest.indexOf(QLatin1Char(']'), position);
        if (open < 0 || close < 0) break;
        if (close < open) return Failure{FailureKind::InvalidArgument, "a \"]\" stands before its \"[\""};
        if (groups.size() == kGroupSlots)
            return Failure{FailureKind::InvalidArgument, "more than 9 groups of alternatives"};
        groups.push_back(rest.mid(open + 1, close - open - 1).split(QLatin1Char('|')));
        expanded += rest.mid(position, open - position) + marker(static_cast<int>(groups.size()));
        position = close + 1;
    }
    expanded += rest.mid(position);
    for (size_t i = 0; i < groups.size(); ++i) {
        const QString& chosen = groups[i][randomInteger(0, static_cast<int>(groups[i].size()) - 1, random)];
        const QString place = marker(static_cast<int>(i) + 1);
        if (expanded.size() + expanded.count(place) * chosen.size() > kLongestExpansion)
            return Failure{FailureKind::InvalidArgument, "the alternatives make the text too long"};
        expanded.replace(place, chosen);
    }
    return expanded;
}

QString expandMessageText(const QString& text, const QDateTime& now, const RandomSource& random, QString* problem) {
    QString expanded = text;
    if (auto result = expandAlternatives(text, random)) {
        expanded = std::move(result).value();
    } else if (problem) {
        *problem = QString::fromStdString(result.failure().text);
    }
    const QString lineBreak = QStringLiteral("\r\n");
    expanded.replace(QStringLiteral("~r"), lineBreak);
    expanded.replace(QStringLiteral("\\n"), lineBreak);
    expanded.replace(QLatin1Char('\t'), QLatin1Char(' '));
    expanded.replace(QStringLiteral("%time%"), generalDate(now));
    return expanded;
}

bool asksForName(const QString& text) {
    return text.contains(QStringLiteral("%name%")) || text.contains(QStringLiteral("%NAME%"));
}

QString insertContactName(const QString& text, const QString& name) {
    QString filled = text;
    filled.replace(QStringLiteral("%name%"), name);
    filled.replace(QStringLiteral("%NAME%"), name.toUpper());
    return filled;
}

}  // namespace kibo
