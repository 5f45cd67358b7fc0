#include "inbox/opened_chats.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

#include "base/log.h"

namespace kibo {
namespace {

/// Of each kind.
constexpr qsizetype kMostChats = 20;
/// Beyond it the file starts anew.
constexpr qsizetype kLongestFile = 100'000;

// The last whole line of the file counts.
QJsonArray toJson(const QList<LostChat>& chats) {
    QJsonArray json;
    for (const LostChat& chat : chats) json.append(QJsonArray{chat.title, chat.takenId, chat.openedAtMs});
    return json;
}

QList<LostChat> fromLast(const QByteArray& lines) {
    QList<LostChat> chats;
    const qsizetype end = lines.lastIndexOf('\n');
    const qsizetype begin = end > 0 ? lines.lastIndexOf('\n', end - 1) + 1 : 0;
    const QJsonArray json = QJsonDocument::fromJson(lines.mid(begin, std::max<qsizetype>(end - begin, 0))).array();
    for (const QJsonValue& chat : json) chats.append({chat[0].toString(), chat[1].toString(), chat[2].toInteger()});
    return chats;
}

}  // namespace

void OpenedChats::open() {
    const QString path = path_();
    if (file_ && path == openPath_) return;
    opened_.clear();
    lost_.clear();
    auto file = platform::DurableFile::open(path.toStdString());
    auto content = file ? file.value()->read() : Result<std::string>(file.failure());
    if (!content) {  // without it only what a crash loses is lost
        if (path != openPath_)
            log::error("inbox", QStringLiteral("opened chats: ") + QString::fromStdString(content.failure().text));
        file_.reset();
    } else {
        file_ = std::move(file).value();
        lost_ = fromLast(QByteArray::fromStdString(content.value()));
        written_ = kLongestFile;
    }
    openPath_ = path;
}

void OpenedChats::see(const OpenChat& chat) {
    if (!chat.open || chat.title.isEmpty()) return;
    open();
    const QString takenId = chat.untaken ? chat.takenId : chat.lastMessageId;
    if (!opened_.isEmpty() && opened_.back().title == chat.title) {
        if (takenId.isEmpty() || opened_.back().takenId == takenId) return;
        opened_.back().takenId = takenId;
    } else {
        // A pass over the list opens one chat after the other, and mostly the page has nothing to tell of them.
        if (!chat.othersUntaken) opened_.clear();
        opened_.append({chat.title, takenId, clock_.now().toMSecsSinceEpoch()});
        if (opened_.size() > kMostChats) opened_.removeFirst();
    }
    write();
}

void OpenedChats::allTaken() {
    if (opened_.size() < 2) return;
    opened_ = {opened_.back()};
    write();
}

const QList<LostChat>& OpenedChats::pageIsNew() {
    open();
    for (const LostChat& chat : std::as_const(opened_)) {
        lookedInto(chat.title);
        lost_.append(chat);
    }
    opened_.clear();
    while (lost_.size() > kMostChats) lost_.removeFirst();
    return lost_;
}

void OpenedChats::lookedInto(const QString& title) {
    lost_.removeIf([&title](const LostChat& chat) { return chat.title == title; });
}

void OpenedChats::write() {
    if (!file_) return;
    const QByteArray line = QJsonDocument(toJson(lost_ + opened_)).toJson(QJsonDocument::Compact).append('\n');
    const bool anew = written_ + line.size() > kLongestFile;
    const Result<void> done = anew ? file_->replace(line.toStdString()) : file_->append(line.toStdString());
    written_ = anew ? line.size() : written_ + line.size();
    if (!done) log::error("inbox", QStringLiteral("opened chats: ") + QString::fromStdString(done.failure().text));
}

}  // namespace kibo
