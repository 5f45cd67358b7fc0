#include "store/queue_writer.h"

#include "store/transaction.h"

#include <QStringList>

namespace kibo {
namespace {

// One statement takes many rows, but a server refuses one that is longer than its packet (16 MB unless it was made
// smaller), and texts double in length as hexadecimal literals.
constexpr qsizetype kRowsOfStatement = 500;
constexpr qsizetype kCharactersOfStatement = 250'000;

/// Rows of one statement name the same columns.
bool haveSameColumns(const NewMessage& a, const NewMessage& b) {
    return a.time.isValid() == b.time.isValid() && (a.id != 0) == (b.id != 0);
}

qsizetype length(const NewMessage& message) {
    return message.number.size() + message.text.size() + message.media.size() + message.file.size();
}

/// An empty field is an empty text, not a NULL.
QString written(const QString& text) {
    return text.isNull() ? QStringLiteral("") : text;
}

}  // namespace

Result<void> QueueWriter::append(const std::vector<NewMessage>& messages) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    const qsizetype mostRows = database_.takesManyRowsAtOnce() ? kRowsOfStatement : 1;
    const NewMessage* const end = messages.data() + messages.size();
    for (const NewMessage* first = messages.data(); first != end;) {
        const NewMessage* last = first;
        for (qsizetype characters = 0; last != end && last - first < mostRows && haveSameColumns(*first, *last);
             ++last) {
            characters += length(*last);
            if (characters > kCharactersOfStatement && last != first) break;
        }
        if (const Result<void> inserted = insert(first, last); !inserted) return inserted;
        first = last;
    }
    return transaction.value().commit();
}

Result<void> QueueWriter::insert(const NewMessage* first, const NewMessage* end) {
    QStringList columns;
    if (profile_) columns << QStringLiteral("tipe") << QStringLiteral("profil");
    if (first->id != 0) columns << QStringLiteral("id");
    columns << QStringLiteral("wa_mode") << QStringLiteral("wa_no") << QStringLiteral("wa_text")
            << QStringLiteral("wa_media") << QStringLiteral("wa_file");
    if (first->time.isValid()) columns << QStringLiteral("wa_time");

    const QString row = u'(' + QStringList(columns.size(), QStringLiteral("?")).join(QStringLiteral(", ")) + u')';
    const QString sql = QStringLiteral("INSERT INTO %1 (%2) VALUES %3")
                            .arg(profile_ ? QStringLiteral("multi") : QStringLiteral("outbox"),
                                 columns.join(QStringLiteral(", ")), QStringList(end - first, row).join(u','));
    Database::Values values;
    for (const NewMessage* message = first; message != end; ++message) {
        if (profile_) values << QStringLiteral("O") << (message->profile.isEmpty() ? *profile_ : message->profile);
        if (message->id != 0) values << message->id;
        values << message->mode << written(message->number) << written(message->text) << written(message->media)
               << written(message->file);
        if (message->time.isValid()) values << message->time;
    }
    const Result<qint64> inserted = database_.attempt(sql, values);
    return inserted ? Result<void>() : Result<void>(inserted.failure());
}

}  // namespace kibo
