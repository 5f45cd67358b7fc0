#include "inbox/inbox_journal.h"

#include <QJsonDocument>
#include <algorithm>

#include "base/log.h"

namespace kibo {
namespace {

// A line is a row with its key, or the key of one that is settled. The last line of a key counts; a line that was cut
// off by a crash is no JSON and counts for nothing.
const QString kKey = QStringLiteral("key");
const QString kRow = QStringLiteral("row");

QJsonObject toJson(const IncomingRow& row) {
    return {{QStringLiteral("multi"), row.multi},   {QStringLiteral("profil"), row.PROFIL},
            {QStringLiteral("title"), row.title},   {QStringLiteral("no"), row.wa_no},
            {QStringLiteral("sub"), row.SUB_NO},    {QStringLiteral("text"), row.wa_text},
            {QStringLiteral("time"), row.wa_time},  {QStringLiteral("id"), row.messageId},
            {QStringLiteral("chat"), row.chatId},   {QStringLiteral("unread"), row.unread},
            {QStringLiteral("group"), row.inGroup}, {QStringLiteral("own_time"), row.messageTime},
            {QStringLiteral("kind"), row.kind}};
}

IncomingRow rowFrom(const QJsonObject& json) {
    const auto text = [&](const QString& key) { return json[key].toString(); };
    return {json[QStringLiteral("multi")].toBool(),
            text(QStringLiteral("profil")),
            text(QStringLiteral("title")),
            text(QStringLiteral("no")),
            text(QStringLiteral("sub")),
            text(QStringLiteral("text")),
            text(QStringLiteral("time")),
            text(QStringLiteral("id")),
            text(QStringLiteral("chat")),
            json[QStringLiteral("group")].toBool(),
            text(QStringLiteral("own_time")),
            text(QStringLiteral("kind")),
            json[QStringLiteral("unread")].toInt()};
}

}  // namespace

Result<void> InboxJournal::open() {
    const QString path = path_();
    return file_ && openPath_ == path ? Result<void>() : noted(read(path));
}

Result<void> InboxJournal::read(const QString& path) {
    file_.reset();
    entries_.clear();
    auto file = platform::DurableFile::open(path.toStdString());
    if (!file) return file.failure();
    const Result<std::string> content = file.value()->read();
    if (!content) return content.failure();
    const QList<QByteArray> lines = QByteArray::fromStdString(content.value()).split('\n');
    for (const QByteArray& line : lines) {
        const QJsonObject json = QJsonDocument::fromJson(line).object();
        if (!json.contains(kKey)) continue;
        const auto key = static_cast<quint64>(json[kKey].toInteger());
        lastKey_ = std::max(lastKey_, key);
        std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; });
        if (json.contains(kRow)) entries_.push_back({key, rowFrom(json[kRow].toObject()), true, true});
    }
    file_ = std::move(file).value();
    openPath_ = path;
    if (!entries_.empty())
        log::info("inbox",
                  QStringLiteral("%1 received messages were under way when the last run ended").arg(entries_.size()));
    return {};
}

Result<quint64> InboxJournal::add(const IncomingRow& row) {
    if (const Result<void> opened = open(); !opened) return opened.failure();
    const quint64 key = ++lastKey_;
    const Result<void> written = write({{kKey, static_cast<qint64>(key)}, {kRow, toJson(row)}});
    if (!written) return written.failure();
    entries_.push_back({key, row, false, false});
    return key;
}

void InboxJournal::change(quint64 key, const IncomingRow& row) {
    Entry* entry = find(key);
    if (!entry) return;
    entry->row = row;
    // What can't be written is in the file as it was known before.
    (void)write({{kKey, static_cast<qint64>(key)}, {kRow, toJson(row)}});
}

bool InboxJournal::holds(const QString& messageId) const {
    return !messageId.isEmpty() && std::any_of(entries_.begin(), entries_.end(),
                                               [&](const Entry& entry) { return entry.row.messageId == messageId; });
}

void InboxJournal::setDoubtful(quint64 key, bool doubtful) {
    if (Entry* entry = find(key)) entry->doubtful = doubtful;
}

void InboxJournal::setMaybeStored(quint64 key) {
    if (Entry* entry = find(key)) entry->maybeStored = true;
}

void InboxJournal::settle(quint64 key) {
    std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; });
    if (!file_) return;
    // A row that is still in the file is found in the database at the next start, and left alone.
    if (entries_.empty())
        (void)noted(file_->replace({}));
    else
        (void)write({{kKey, static_cast<qint64>(key)}});
}

InboxJournal::Entry* InboxJournal::find(quint64 key) {
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [key](const Entry& entry) { return entry.key == key; });
    return found == entries_.end() ? nullptr : &*found;
}

Result<void> InboxJournal::write(const QJsonObject& line) {
    return noted(file_->append(QJsonDocument(line).toJson(QJsonDocument::Compact).append('\n').toStdString()));
}

/// Tried again and again, the same trouble is told once.
Result<void> InboxJournal::noted(Result<void> done) {
    const QString problem = done ? QString() : QString::fromStdString(done.failure().text);
    if (problem != problem_ && !problem.isEmpty()) log::error("inbox", QStringLiteral("journal: ") + problem);
    if (problem.isEmpty() && !problem_.isEmpty()) log::info("inbox", QStringLiteral("the journal can be used again"));
    problem_ = problem;
    return done;
}

}  // namespace kibo
