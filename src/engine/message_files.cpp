#include "engine/message_files.h"

#include <QFile>

#include "base/log.h"
#include "browser/launch.h"

namespace kibo {
MessageFiles::MessageFiles(const Settings& settings, FetchMedia fetch, ReleaseMedia release)
    : settings_(settings), fetch_(std::move(fetch)), release_(std::move(release)) {}

bool MessageFiles::needFetching(const QString& media, const QString& document) const {
    return !unfetched(media, document).isEmpty();
}

void MessageFiles::fetch(const QString& media, const QString& document) {
    for (const QString& address : unfetched(media, document)) fetched_.emplace(address, fetch_(address));
}

QStringList MessageFiles::unfetched(const QString& media, const QString& document) const {
    QStringList addresses;
    if (!fetch_ || isDriverElsewhere(settings_.ChromeDriver)) return addresses;
    for (const QString& entry : {media.trimmed(), document.trimmed()})
        if (isAddress(entry) && !fetched_.contains(entry)) addresses.append(entry);
    addresses.removeDuplicates();
    return addresses;
}

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

Result<Attachment> MessageFiles::prepareOne(FileColumn column, const QString& entry) const {
    // The browser reads the file where it runs itself.
    if (isDriverElsewhere(settings_.ChromeDriver))
        return Failure{FailureKind::NotSupported,
                       "the browser runs on another computer, which can't read files of this one"};
    if (!isAddress(entry)) return checkedAttachment(column, entry, mostFileBytes(settings_));
    const auto fetched = fetched_.find(entry);
    if (fetched == fetched_.end()) return Failure{FailureKind::NotSupported, "files by address can't be fetched here"};
    const Result<QString>& path = fetched->second;
    if (!path)
        return Failure{path.failure().kind,
                       nameOf(column).toStdString() + " could not be fetched: " + path.failure().text};
    return checkedAttachment(column, path.value(), mostFileBytes(settings_));
}

void MessageFiles::removeFetched() {
    for (const auto& [address, path] : fetched_) {
        if (!path) continue;
        if (isYes(settings_.ClearTmp) && !QFile::remove(path.value()))
            log::warning("engine", QStringLiteral("a fetched file could not be removed"));
        if (release_) release_(path.value());
    }
    fetched_.clear();
}

}  // namespace kibo
