#include "inbox/inbox_media.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>
#include <algorithm>
#include <utility>

#include "base/log.h"
#include "browser/launch.h"
#include "inbox/media_file_name.h"

namespace kibo {
namespace {

constexpr const char* kLog = "inbox";
constexpr int kLookMs = 50;
constexpr qint64 kAskAgainMs = 250;
/// What was asked for and doesn't begin by then is not waited for with the chat open.
constexpr qint64 kBeginsMs = 8'000;
const QString kUnfinished = QStringLiteral(".crdownload");

bool hasMedia(const QString& kind) {
    static const QStringList kinds{QStringLiteral("photo"), QStringLiteral("video"), QStringLiteral("voice"),
                                   QStringLiteral("document")};
    return kinds.contains(kind);
}

/// What the file is tells how it is called; of a document its own name does, since many kinds look alike inside.
QString suffixOf(const QString& file, const QString& kind, const QString& shown) {
    if (kind == QStringLiteral("document") && !shown.isEmpty()) return storableSuffix(shown);
    const QMimeType type = QMimeDatabase().mimeTypeForFile(file, QMimeDatabase::MatchContent);
    return storableSuffix(type.preferredSuffix());
}

}  // namespace

void InboxMedia::add(const IncomingRow& row, const InboxTable::Stored& stored) {
    if (!isYes(p_.settings.InboxMedia) || stored.record == 0 || row.messageId.isEmpty() || !hasMedia(row.kind)) return;
    const QString name = QStringLiteral("%1_%2_%3").arg(row.PROFIL, row.wa_time.left(10)).arg(stored.id);
    items_.push_back({stored.record, row.title, row.messageId, row.kind, name});
}

void InboxMedia::save(const QString& title) {
    if (!isYes(p_.settings.InboxMedia)) p_.state.mediaNotice.clear();
    const qint64 began = p_.clock.monotonicMs();
    for (const Item& item : takeItems(title)) {
        lookAfter();
        p_.state.mediaNotice = isDriverElsewhere(p_.settings.ChromeDriver)
                                   ? QStringLiteral("the browser runs on another computer")
                                   : p_.folder.problem();
        const bool oneIsDue = std::any_of(running_.begin(), running_.end(), [](const auto& one) { return !one.begun; });
        if (!p_.state.mediaNotice.isEmpty())
            leave(item, p_.state.mediaNotice);
        else if (oneIsDue)
            leave(item, QStringLiteral("another one is still asked for"));
        else if (isTimeOver(began))
            leave(item, QStringLiteral("there was no time"));
        else
            await({item, std::make_unique<QTemporaryDir>(p_.folder.downloadFolders() + QStringLiteral("XXXXXX"))},
                  began);
    }
    lookAfter();
}

std::vector<InboxMedia::Item> InboxMedia::takeItems(const QString& title) {
    const auto others =
        std::stable_partition(items_.begin(), items_.end(), [&](const Item& item) { return item.title == title; });
    std::vector<Item> taken(items_.begin(), others);
    items_.erase(items_.begin(), others);
    return taken;
}

bool InboxMedia::isTimeOver(qint64 beganMs) const {
    const bool othersWait = p_.state.ms_out.rowCount() > 1;
    return p_.clock.waitingStopped() ||
           p_.clock.monotonicMs() - beganMs > (othersWait ? kLongestWhileOthersWaitMs : kLongestMs);
}

/// False: it is not to be had.
bool InboxMedia::ask(Download& download, bool begins) {
    if (begins) {
        folderIsOurs_ = download.folder->isValid() && p_.page.downloadInto(download.folder->path());
        if (!folderIsOurs_) return false;
    }
    const auto asked = p_.page.saveMedia(download.item.messageId, download.item.kind, begins);
    if (asked) download.suffix = asked->suffix;
    return asked && asked->state == MediaStep::State::Asked;
}

/// Asks for it and waits until it is there, or has to go on without anybody waiting.
void InboxMedia::await(Download download, qint64 beganMs) {
    download.askedAtMs = p_.clock.monotonicMs();
    qint64 askAgainMs = download.askedAtMs;
    for (bool begins = true;; begins = false) {
        const qint64 now = p_.clock.monotonicMs();
        if (!download.begun && now >= askAgainMs) {
            if (!ask(download, begins)) {
                // What an earlier call has asked for may still come.
                if (!begins) break;
                return leave(download.item, QStringLiteral("the page offers no download"));
            }
            askAgainMs = now + kAskAgainMs;
        }
        if (isOver(download)) return;
        if (isTimeOver(beganMs) || (!download.begun && now > download.askedAtMs + kBeginsMs)) break;
        p_.clock.wait(kLookMs);
    }
    running_.push_back(std::move(download));
}

void InboxMedia::lookAfter() {
    std::vector<Download> running = std::exchange(running_, {});
    for (Download& download : running)
        if (!isOver(download)) running_.push_back(std::move(download));
    const bool oneIsDue = std::any_of(running_.begin(), running_.end(), [](const auto& one) { return !one.begun; });
    if (folderIsOurs_ && !oneIsDue && !p_.state.pageIsTaken()) {
        folderIsOurs_ = false;
        p_.page.downloadInto({});
    }
}

/// Whether nothing more is to be done for it. What is there is taken; what takes too long or too much room is given up.
bool InboxMedia::isOver(Download& download) {
    const QFileInfoList files = QDir(download.folder->path()).entryInfoList(QDir::Files | QDir::Hidden);
    const qint64 age = p_.clock.monotonicMs() - download.askedAtMs;
    if (files.isEmpty()) {
        if (!download.begun && age <= kMayBeginMs) return false;
        leave(download.item, download.begun ? QStringLiteral("the browser has given the download up")
                                            : QStringLiteral("the download did not begin"));
        return true;
    }
    download.begun = true;
    // The end of a download may show it under both of its names.
    const auto unfinished = std::find_if(files.begin(), files.end(),
                                         [](const QFileInfo& file) { return file.fileName().endsWith(kUnfinished); });
    const bool isRunning = unfinished != files.end();
    const QFileInfo& file = isRunning ? *unfinished : files.front();
    QString why;
    if (file.size() > p_.folder.limits().fileBytes) why = QStringLiteral("it is too large");
    if (files.size() > (isRunning ? 2 : 1)) why = QStringLiteral("the browser downloads more than one file");
    if (isRunning && age > kMayEndMs) why = QStringLiteral("the download did not end");
    if (!why.isEmpty()) {
        if (isRunning) p_.page.cancelDownload(file.fileName().chopped(kUnfinished.size()));
        leave(download.item, why);
        return true;
    }
    if (!isRunning) finish(download, file.filePath());
    return !isRunning;
}

void InboxMedia::finish(const Download& download, const QString& file) {
    const Item& item = download.item;
    const qint64 bytes = QFileInfo(file).size();
    const QString name = storableName(item.name + u'.' + suffixOf(file, item.kind, download.suffix));
    const Result<QString> saved = p_.folder.take(file, name);
    if (!saved) {
        leave(item, QString::fromStdString(saved.failure().text));
        return;
    }
    p_.records.setFile(item.record, saved.value());
    log::info(kLog, QStringLiteral("the %1 of message record %2 was saved: %3 bytes after %4 ms")
                        .arg(item.kind)
                        .arg(item.record)
                        .arg(bytes)
                        .arg(p_.clock.monotonicMs() - download.askedAtMs));
}

void InboxMedia::leave(const Item& item, const QString& why) const {
    log::warning(
        kLog, QStringLiteral("the %1 of message record %2 is not saved: %3").arg(item.kind).arg(item.record).arg(why));
}

}  // namespace kibo
