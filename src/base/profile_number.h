#pragma once

#include <QString>

namespace kibo {

/// A profile number as it stands in shared keys and file names: six digits with leading zeros, 3 as "000003". A
/// profile that is no number stays as it is.
inline QString profile6(const QString& profile) {
    bool isNumber = false;
    const int number = profile.toInt(&isNumber);
    return isNumber ? QStringLiteral("%1").arg(number, 6, 10, QLatin1Char('0')) : profile;
}

}  // namespace kibo
