#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

#include "base/settings.h"
#include "platform/result.h"

namespace kibo {

/// Gives the next value of a random generator, in [0, 1).
using RandomSource = std::function<double()>;

/// Whether texts are expanded at all; otherwise every one of them is sent as it stands in its row.
bool expandsTexts(const Settings& settings);

/// A whole number between `lower` and `upper`, both included: Int((upper − lower + 1) × r + lower).
int randomInteger(int lower, int upper, const RandomSource& random);

/// A member may name other groups ("{2}"), whose members name others again: a short text could fill the memory.
inline constexpr qsizetype kLongestExpansion = 16 * 1024 * 1024;

/// Replaces every group of alternatives "[a|b|c]" by one of its members, chosen at random. Brackets are paired by
/// position only: the first "[" with the first "]". Takes time in proportion to the text. Fails for more than 9 groups,
/// for a "]" that stands before the first "[", and for a text that would grow beyond `kLongestExpansion`.
Result<QString> expandAlternatives(const QString& text, const RandomSource& random);

/// What happens to a queued text before its chat is opened: alternatives, line breaks ("~r" and backslash-n), tabs,
/// "%time%". A text whose alternatives can't be expanded keeps its brackets; `problem` then says why.
QString expandMessageText(const QString& text, const QDateTime& now, const RandomSource& random, QString* problem);

/// Whether `insertContactName` has anything to replace.
bool asksForName(const QString& text);

/// Replaces "%name%" by the contact's name and "%NAME%" by the name in upper case.
QString insertContactName(const QString& text, const QString& name);

}  // namespace kibo
