#include "screens/manual_message.h"

#include <QLocale>

#include "base/log.h"
#include "browser/launch.h"
#include "engine/attachment.h"
#include "engine/chat_target.h"
#include "engine/phone_number.h"
#include "engine/text_expansion.h"
#include "engine/text_typer.h"
#include "store/queue_writer.h"

namespace kibo {
namespace {

const QString kNewestOfQueue =
    QStringLiteral("SELECT max(id) id FROM (SELECT max(id) id FROM sent UNION SELECT max(id) id FROM outbox) X ");
const QString kNewestOfMulti = QStringLiteral("SELECT max(id) id FROM (SELECT max(id) id FROM multi) X ");

/// Error number of MySQL and MariaDB for a key that is there already.
constexpr const char* kDuplicateKey = "1062";
constexpr int kMostDraws = 5;
constexpr qsizetype kFewestDigits = 7;
constexpr int kPreviews = 3;
const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

using Weight = Remark::Weight;

Remark note(const QString& text) {
    return {Weight::Note, text};
}

Remark doubt(const QString& text) {
    return {Weight::Doubt, text};
}

Remark missing(const QString& text) {
    return {Weight::Missing, text};
}

Remark error(const QString& text) {
    return {Weight::Error, text};
}

QString sentence(QString text) {
    if (!text.isEmpty()) text[0] = text[0].toUpper();
    return text;
}

/// A "[" that a later "[" follows before any "]": the group of alternatives reaches too far, or never ends.
bool hasUnclosedGroup(const QString& text) {
    qsizetype open = -1;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u']') open = -1;
        if (text[i] != u'[') continue;
        if (open >= 0) return true;
        open = i;
    }
    return open >= 0;
}

}  // namespace

Remark ManualMessage::remark(DraftField field, const MessageDraft& draft) const {
    switch (field) {
        case DraftField::Number:
            return ofNumber(draft);
        case DraftField::Profile:
            if (!multi()) return {};
            if (draft.profile.trimmed().isEmpty()) return missing(QStringLiteral("Say whose profile sends it."));
            return {};
        case DraftField::Text:
            return ofText(draft);
        case DraftField::Media:
            return ofFile(field, draft.media.trimmed());
        case DraftField::File:
            return ofFile(field, draft.file.trimmed());
        case DraftField::Time:
            return ofTime(draft);
    }
    return {};
}

Remark ManualMessage::ofNumber(const MessageDraft& draft) const {
    const QString typed = draft.number.trimmed();
    if (typed.isEmpty()) return missing(QStringLiteral("Say to which number it goes."));
    const QString number = destinationNumber(typed, settings_.Prefix, settings_.CountryCode);
    if (draft.mode == QStringLiteral("2")) return {};
    if (!isPositiveNumber(number)) {
        if (draft.mode == QStringLiteral("1"))
            return error(QStringLiteral("A stranger's number has digits only; (2) and (0) also take a chat's name."));
        return note(QStringLiteral("Not a plain number, so the chat with exactly this name is looked for."));
    }
    if (number.size() < kFewestDigits)
        return error(QStringLiteral("Too short: a number has its country code and at least 7 digits."));
    if (number.startsWith(u'0'))
        return note(QStringLiteral("Begins with 0: most chats open only with the country code."));
    if (number != cleanedNumber(typed)) return note(QStringLiteral("Goes to %1.").arg(number));
    return {};
}

Remark ManualMessage::ofText(const MessageDraft& draft) const {
    if (draft.text.trimmed().isEmpty()) {
        if (!draft.media.trimmed().isEmpty() || !draft.file.trimmed().isEmpty()) return {};
        return missing(draft.time ? QStringLiteral("Write a text, or choose a file.")
                                  : QStringLiteral("Write a text."));
    }
    if (draft.text.size() > kLongestText)
        return error(QStringLiteral("Too long: WhatsApp takes %1 characters, this has %2.")
                         .arg(QLocale().toString(kLongestText), QLocale().toString(draft.text.size())));
    QString problem;
    const QString expanded = expandMessageText(
        draft.text, clock_.now(), [] { return 0.0; }, &problem);
    if (!expandsTexts(settings_)) {
        const bool means = expanded != draft.text || !problem.isEmpty() || asksForName(draft.text);
        return means ? note(QStringLiteral("Sent as it stands: texts are not expanded (ExpandText=N).")) : Remark();
    }
    if (!problem.isEmpty()) return doubt(QStringLiteral("The brackets are sent as they stand: %1.").arg(problem));
    if (hasUnclosedGroup(draft.text))
        return error(QStringLiteral("A \"[\" has no \"]\": a part of the text would be left out."));
    if (asksForName(draft.text)) return note(QStringLiteral("%name% becomes the contact's name when it is sent."));
    return {};
}

Remark ManualMessage::ofFile(DraftField field, const QString& path) const {
    if (path.isEmpty()) return {};
    if (isDriverElsewhere(settings_.ChromeDriver))
        return error(QStringLiteral("The browser runs on another computer, which can't read files of this one."));
    if (isAddress(path)) return note(QStringLiteral("An address: fetched when the message's turn comes."));
    const FileColumn column = field == DraftField::Media ? FileColumn::Media : FileColumn::Document;
    const Result<Attachment> file = checkedAttachment(column, path, mostFileBytes(settings_));
    if (!file) return error(sentence(QString::fromStdString(file.failure().text)) + u'.');
    const QString size = QLocale().formattedDataSize(file.value().size, 1, QLocale::DataSizeSIFormat);
    if (column == FileColumn::Media && file.value().input == FileInput::Document)
        return note(
            QStringLiteral("%1. Not a picture or video that the page shows, so it goes as a document.").arg(size));
    return note(size);
}

Remark ManualMessage::ofTime(const MessageDraft& draft) const {
    if (!draft.time) return {};
    const QDateTime time = timeOf(*draft.time);
    if (!time.isValid()) return error(QStringLiteral("Not a time: write it like %1.").arg(written(clock_.now())));
    if (time > clock_.now()) {
        if (isYes(settings_.UseMDB))
            return doubt(QStringLiteral("A local database (UseMDB) heeds no send times: it leaves at once."));
        if (!isYes(settings_.Scheduled))
            return doubt(QStringLiteral("Send times aren't heeded (Scheduled=N): it leaves at once."));
        return {};
    }
    return draft.timeTyped ? note(QStringLiteral("Past: it leaves at once.")) : Remark();
}

QDateTime ManualMessage::timeOf(const QString& typed) {
    const QString text = typed.simplified();
    for (const QString& format : {QStringLiteral("yyyy-M-d H:m:s"), QStringLiteral("yyyy-M-d H:m")}) {
        const QDateTime time = QDateTime::fromString(text, format);
        // What every kind of store can hold.
        if (time.isValid() && time.date().year() >= 1000) return time;
    }
    return {};
}

QString ManualMessage::written(const QDateTime& time) {
    return time.toString(kTimeFormat);
}

QStringList ManualMessage::preview(const QString& text) const {
    if (!expandsTexts(settings_)) return QStringList(kPreviews, text);
    QStringList previews;
    for (int i = 0; i < kPreviews; ++i) {
        // Each takes another third of every group, and neighbouring groups aren't in step.
        int group = i;
        const auto choice = [&group] { return (group++ % kPreviews + 0.5) / kPreviews; };
        previews.append(expandMessageText(text, clock_.now(), choice, nullptr));
    }
    return previews;
}

Result<qint64> ManualMessage::queue(const MessageDraft& draft) {
    if (unsettled_ && unsettled_->draft == draft) {
        const Result<bool> queued = wasQueued(*unsettled_);
        if (!queued) return queued.failure();
        if (queued.value()) return std::exchange(unsettled_, std::nullopt)->id;
    }
    unsettled_.reset();
    NewMessage message{.mode = draft.mode.toInt(),
                       .number = draft.number.trimmed(),
                       .text = draft.text,
                       .media = draft.media.trimmed(),
                       .file = draft.file.trimmed(),
                       .time = draft.time ? timeOf(*draft.time) : QDateTime()};
    QueueWriter writer(database_, multi() ? std::optional(draft.profile.trimmed()) : std::nullopt);
    for (int draw = 1;; ++draw) {
        if (!isYes(settings_.UseMDB)) {
            const Result<qint64> id = nextId();
            if (!id) return id.failure();
            message.id = id.value();
        }
        const Result<void> written = writer.append({message});
        if (written) break;
        const Failure& failure = written.failure();
        if (failure.kind == FailureKind::ConnectionLost && message.id != 0) unsettled_ = {draft, message.id};
        const bool taken = failure.kind == FailureKind::RowRefused && failure.code == kDuplicateKey && message.id != 0;
        if (taken && draw < kMostDraws) continue;
        log::warning("screens",
                     QStringLiteral("a message typed by hand was not queued: ") + QString::fromStdString(failure.text));
        return failure;
    }
    const qint64 id = message.id != 0 ? message.id : database_.lastInsertId();
    log::info("screens", QStringLiteral("message %1 queued by hand, %2 characters").arg(id).arg(draft.text.size()));
    return id;
}

Result<qint64> ManualMessage::nextId() {
    const Recordset newest = database_.OpenRecordset(multi() ? kNewestOfMulti : kNewestOfQueue);
    if (newest.state() == Recordset::State::Closed)
        return Failure{FailureKind::Database, database_.problem().toStdString()};
    return newest.field(0).toLongLong() + 1;
}

/// The connection may have gone between the row and the word that it is there.
Result<bool> ManualMessage::wasQueued(const Unsettled& last) {
    static const QString kSingle = QStringLiteral(
        "select wa_no, wa_text from outbox where id = ? union all select wa_no, wa_text from sent where id = ?");
    static const QString kMulti = QStringLiteral(
        "select wa_no, wa_text from multi where tipe = 'O' and id = ? union all "
        "select wa_no, wa_text from multi where tipe = 'S' and id_outbox = ?");
    Recordset rows = database_.OpenRecordset(multi() ? kMulti : kSingle, {last.id, last.id});
    if (rows.state() == Recordset::State::Closed)
        return Failure{FailureKind::Database, database_.problem().toStdString()};
    for (; !rows.eof(); rows.moveNext())
        if (rows.field(0) == last.draft.number.trimmed() && rows.field(1) == last.draft.text) return true;
    return false;
}

}  // namespace kibo
