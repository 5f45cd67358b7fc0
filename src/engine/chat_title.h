#pragma once

#include <QString>

namespace kibo {

/// A chat's title without what surrounds it unseen: blanks, no-break blanks, direction marks.
QString trimmedTitle(const QString& title);

/// Whether two titles are the same to a person: case and what `trimmedTitle` takes away don't count.
bool sameTitle(const QString& one, const QString& other);

}  // namespace kibo
