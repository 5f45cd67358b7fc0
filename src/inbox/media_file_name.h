#pragma once

#include <QString>

namespace kibo {

/// The part of `address` behind its last "/", without query and fragment. Empty for an address that ends in "/".
QString lastPartOf(const QString& address);

/// A name under which the file at `address` can be stored on any system, inside whatever folder it is put: the last
/// part of the address, percent-decoded, without separators, control characters and what Windows refuses; never a name
/// that Windows keeps for a device, and short enough for a suffix. "download" when nothing remains.
QString mediaFileName(const QString& address);

/// The same of a name as it is.
QString storableName(const QString& wanted);

/// "photo.jpg", "photo (2).jpg", "photo (3).jpg" …
QString numberedName(const QString& name, int number);

/// What a received file's name may end in, of what somebody else says: letters and digits, in small letters, and
/// nothing that a double click would run; else "file".
QString storableSuffix(const QString& wanted);

}  // namespace kibo
