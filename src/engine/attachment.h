#pragma once

#include <QString>
#include <functional>

#include "base/settings.h"
#include "browser/chat_page.h"
#include "platform/result.h"

namespace kibo {

/// A file on this computer that goes out with a message.
struct Attachment {
    FileInput input = FileInput::Document;
    QString path;  ///< absolute, in the system's own spelling
    qint64 size = 0;
};

/// Fetches the file at `address` to this computer and returns its path. May take long: it lets events run meanwhile.
using FetchMedia = std::function<Result<QString>(const QString& address)>;
/// Ends the need of a file that was fetched; another one may take its name.
using ReleaseMedia = std::function<void(const QString& path)>;

/// The two columns of a queued message that name files.
enum class FileColumn { Media, Document };

/// What the column is called towards the operator.
QString nameOf(FileColumn column);

/// Whether a column holds an address rather than a path: it begins with "HTTP", in any case.
bool isAddress(const QString& entry);

/// The largest file that is sent.
qint64 mostFileBytes(const Settings& settings);

/// The file at `path`, when the page can take it: there, readable, neither empty nor larger than `mostBytes`. Pictures
/// and videos of the media column go where the page shows them as such; what the page can't show goes as a document.
Result<Attachment> checkedAttachment(FileColumn column, const QString& path, qint64 mostBytes);

}  // namespace kibo
