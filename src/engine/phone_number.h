#pragma once

#include <QString>

namespace kibo {

/// Removes what people write between the digits of a number: "-", "+", blanks, "(" and ")".
QString cleanedNumber(const QString& number);

/// The number as it is sent to: cleaned, and `trunkPrefix` at its start replaced by `countryCode` when both are set.
QString destinationNumber(const QString& number, const QString& trunkPrefix, const QString& countryCode);

/// Digits only, and greater than 0.
bool isPositiveNumber(const QString& cleaned);

/// The digits of a text, of any script, as ASCII ones, joined.
QString digitsIn(const QString& text);

/// The number that the address of a contact's picture names between "&u=" and "%40"; empty when it names none.
QString numberInPicture(const QString& address);

/// Whether a chat title is a phone number rather than a name.
bool looksLikeNumber(const QString& title);

/// Whether two spellings can be the same subscriber: equal digits, or one is the other written nationally (shorter,
/// with leading zeros, but still at least 7 digits long).
bool sameSubscriber(const QString& one, const QString& other);

}  // namespace kibo
