#include "engine/send_journal.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <algorithm>

#include "base/log.h"

namespace kibo {
namespace {

const QString kDo = QStringLiteral("do"), kId = QStringLiteral("id"), kText = QStringLiteral("text"),
              kTo = QStringLiteral("to"), kLast = QStringLiteral("last"), kReason = QStringLiteral("reason"),
              kRow = QStringLiteral("row"), kBy = QStringLiteral("by");
const QString kTaken = QStringLiteral("taken"), kTyped = QStringLiteral("typed"), kFailed = QStringLiteral("failed"),
              kSent = QStringLiteral("sent"), kEnded = QStringLiteral("ended"), kBack = QStringLiteral("back"),
              kLookLost = QStringLiteral("look lost");

std::string lineOf(const QJsonObject& record) {
    return QJsonDocument(record).toJson(QJsonDocument::Compact).toStdString() + '\n';
}

struct Column {
    QString name;
    QString QueuedRow::*field;
};
const Column kColumns[] = {
    {QStringLiteral("wa_mode"), &QueuedRow::mode}, {QStringLiteral("wa_no"), &QueuedRow::number},
    {QStringLiteral("wa_text"), &QueuedRow::text}, {QStringLiteral("wa_media"), &QueuedRow::media},
    {QStringLiteral("wa_file"), &QueuedRow::file}, {QStringLiteral("wa_time"), &QueuedRow::time}};

}  // namespace

QString SendJournal::fileName(const QString& profile, const QString& store) {
    const QByteArray hash = QCryptographicHash::hash(store.toUtf8(), QCryptographicHash::Sha1).toHex().left(8);
    return QStringLiteral("send.%1.%2.journal").arg(profile, QString::fromLatin1(hash));
}

Result<void> SendJournal::open(const QString& file) {
    if (file_ && path_ == file) return {};
    file_.reset();
    entries_.clear();
    back_.clear();
    auto opened = platform::DurableFile::open(file.toStdString());
    if (!opened) return opened.failure();
    const auto content = opened.value()->read();
    if (!content) return content.failure();
    const QByteArray text = QByteArray::fromStdString(content.value());
    for (const QByteArray& line : text.split('\n')) {
        // A crash may have cut the last record short: what it tells of had not begun.
        apply(QJsonDocument::fromJson(line).object());
    }
    file_ = std::move(opened).value();
    path_ = file;
    if (!text.isEmpty() && !text.endsWith('\n')) {
        if (const Result<void> closed = file_->append("\n"); !closed) return closed;
    }
    if (!entries_.empty())
        log::warning("engine",
                     QStringLiteral("%1 messages had not ended when the gateway last did").arg(entries_.size()));
    return {};
}

Result<void> SendJournal::taken(const QueuedRow& row, const QString& by) {
    QJsonObject columns;
    for (const Column& column : kColumns) columns[column.name] = row.*column.field;
    return write({{kDo, kTaken}, {kId, row.id}, {kRow, columns}, {kBy, by}});
}

Result<void> SendJournal::typed(const QString& id, const QString& destination, const QString& text,
                                const QString& lastMessageId) {
    return write({{kDo, kTyped}, {kId, id}, {kTo, destination}, {kText, text}, {kLast, lastMessageId}});
}

void SendJournal::failed(const QString& id, const QString& reason) {
    const QJsonObject record{{kDo, kFailed}, {kId, id}, {kReason, reason}};
    if (!write(record)) apply(record);
}

void SendJournal::sent(const QString& id) {
    const QJsonObject record{{kDo, kSent}, {kId, id}};
    if (!write(record)) apply(record);
}

void SendJournal::lookLost(const QString& id) {
    const QJsonObject record{{kDo, kLookLost}, {kId, id}};
    if (!write(record)) apply(record);
}

void SendJournal::ended(const QString& id) {
    close(id, {{kDo, kEnded}, {kId, id}});
}

void SendJournal::wentBack(const QString& id) {
    close(id, {{kDo, kBack}, {kId, id}});
}

void SendJournal::close(const QString& id, const QJsonObject& record) {
    if (find(id) == entries_.end()) return;
    if (entries_.size() > 1 && write(record)) return;
    apply(record);
    if (entries_.empty()) empty();
}

bool SendJournal::takesAgain() {
    constexpr int kBytes = 8192;
    if (!write({{kText, QString(kBytes, u' ')}})) return false;
    if (entries_.empty()) empty();
    return true;
}

/// With nothing open no text is kept.
void SendJournal::empty() {
    const Result<void> emptied = file_->replace(back_.isEmpty() ? std::string() : lineOf({{kDo, kBack}, {kId, back_}}));
    if (!emptied) log::error("engine", QStringLiteral("journal: ") + QString::fromStdString(emptied.failure().text));
}

const SendJournal::Entry* SendJournal::entry(const QString& id) const {
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.row.id == id; });
    return found == entries_.end() ? nullptr : &*found;
}

Result<void> SendJournal::write(const QJsonObject& record) {
    if (!file_) return Failure{FailureKind::Io, "the journal is not open"};
    const Result<void> written = file_->append(lineOf(record));
    if (written)
        apply(record);
    else
        log::error("engine", QStringLiteral("journal: ") + QString::fromStdString(written.failure().text));
    return written;
}

std::vector<SendJournal::Entry>::iterator SendJournal::find(const QString& id) {
    return std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.row.id == id; });
}

void SendJournal::apply(const QJsonObject& record) {
    const QString what = record[kDo].toString();
    const QString id = record[kId].toString();
    const auto entry = find(id);
    if (what == kTaken) {
        if (entry != entries_.end()) entries_.erase(entry);
        Entry begun;
        begun.row.id = id;
        begun.by = record[kBy].toString();
        begun.wentBack = back_ == id;
        if (!begun.wentBack) back_.clear();
        const QJsonObject columns = record[kRow].toObject();
        for (const Column& column : kColumns) begun.row.*column.field = columns[column.name].toString();
        entries_.push_back(begun);
    } else if (what == kBack) {
        if (entry != entries_.end()) entries_.erase(entry);
        back_ = id;
    } else if (entry == entries_.end()) {
        return;
    } else if (what == kTyped) {
        entry->stage = Stage::Typed;
        entry->text = record[kText].toString();
        entry->destination = record[kTo].toString();
        entry->lastMessageId = record[kLast].toString();
    } else if (what == kLookLost) {
        ++entry->lostLooks;
    } else if (what == kFailed) {
        entry->stage = Stage::Failed;
        entry->reason = record[kReason].toString();
    } else if (what == kSent) {
        entry->stage = Stage::Sent;
    } else if (what == kEnded) {
        entries_.erase(entry);
        if (back_ == id) back_.clear();
    }
}

}  // namespace kibo
