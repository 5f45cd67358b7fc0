#include "engine/message_files.h"

#include <QFile>

#include "base/log.h"
#include "browser/launch.h"

namespace kibo {
namespace {

constexpr qint64 kUsualMegabytes = 64;  // what the page takes of a photo or video

}  // namespace

MessageFiles::MessageFiles(const Settings& settings, FetchMedia fetch, ReleaseMedia release)
    : settings_(settings), fetch_(std::move(fetch)), release_(std::move(release)) {}

Result<std::vector<Attachment>> MessageFiles::prepare(const QString& media, const QString& document) {
    std::vector<Attachment> files;
    for (const auto& [column, entry] : {std::pair(FileColumn::Media, media), {FileColumn::Document, document}}) {
        if (entry.trimmed().isEmpty()) continue;
        const Result<Attachment> file = prepareOne(column, entry.trimmed());
        if (!file) return file.failure();
        files.push_back(file.value());
    }
    return files;
}

Result<Attachment> MessageFiles::prepareOne(FileColumn column, const QString& entry) {
    // The browser reads the file where it runs itself.
    if (isDriverElsewhere(settings_.ChromeDriver))
        return Failure{FailureKind::NotSupported,
                       "the browser runs on another computer, which can't read files of this one"};
    if (!isAddress(entry)) return checkedAttachment(column, entry, mostBytes());
    if (!fetch_) return Failure{FailureKind::NotSupported, "files by address can't be fetched here"};
    const Result<QString> path = fetch_(entry);
    if (!path)
        return Failure{path.failure().kind,
                       nameOf(column).toStdString() + " could not be fetched: " + path.failure().text};
    fetched_.append(path.value());
    return checkedAttachment(column, path.value(), mostBytes());
}

qint64 MessageFiles::mostBytes() const {
    const qint64 megabytes = settings_.MaxFileMB.toLongLong();
    return (megabytes > 0 ? megabytes : kUsualMegabytes) * 1024 * 1024;
}

void MessageFiles::removeFetched() {
    fetched_.removeDuplicates();
    for (const QString& path : std::as_const(fetched_)) {
        if (isYes(settings_.ClearTmp) && !QFile::remove(path))
            log::warning("engine", QStringLiteral("a fetched file could not be removed"));
        if (release_) release_(path);
    }
    fetched_.clear();
}

}  // namespace kibo
