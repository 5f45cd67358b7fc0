#pragma once

#include <QByteArray>
#include <QString>

namespace kibo {

/// A text as it stands in an address's query, in Windows code page 1252: letters and digits as they are, a blank as
/// "+", every other character as "%" and two upper-case hexadecimal digits of its code. A character that the code page
/// hasn't got counts as "?".
QByteArray urlEncoded(const QString& text);

}  // namespace kibo
