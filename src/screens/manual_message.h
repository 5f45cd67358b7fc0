#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "platform/result.h"
#include "store/database.h"

namespace kibo {

/// A message as an operator types it.
struct MessageDraft {
    QString mode = QStringLiteral("0");
    QString number, text;
    QString media = {}, file = {};
    std::optional<QString> time = {};  ///< nothing: there is no field for it
    bool timeTyped = false;            ///< it isn't the one that was proposed
    QString profile = {};              ///< counts where instances share a table

    bool operator==(const MessageDraft&) const = default;
};

enum class DraftField { Number, Profile, Text, Media, File, Time };
/// In the order in which they are looked at before a message is queued.
inline constexpr DraftField kDraftFields[] = {DraftField::Time, DraftField::Number, DraftField::Profile,
                                              DraftField::Text, DraftField::Media,  DraftField::File};

/// What there is to say about a field, as a sentence for the operator.
struct Remark {
    enum class Weight {
        Note,     ///< good to know
        Doubt,    ///< may not be meant: asked about before the message is queued
        Missing,  ///< can't be queued without, but nobody has to be told before trying to
        Error     ///< can't be queued
    };
    Weight weight = Weight::Note;
    QString text = {};  ///< empty: nothing to say

    bool forbids() const { return weight >= Weight::Missing && !text.isEmpty(); }
};

/// Messages queued by hand: what is wrong with one, how it will read, and its way into the queue.
class ManualMessage {
 public:
    /// All must outlive it.
    ManualMessage(Database& database, const Settings& settings, const Clock& clock)
        : database_(database), settings_(settings), clock_(clock) {}

    /// Looks at the draft's files, so not for every key.
    Remark remark(DraftField field, const MessageDraft& draft) const;
    /// The send time as typed; invalid when it is none.
    static QDateTime timeOf(const QString& typed);
    static QString written(const QDateTime& time);

    /// How the text may read when it is sent: three times, so that alternatives show. The same text reads the same.
    QStringList preview(const QString& text) const;

    /// Queues the draft, which no field's remark forbids, and gives the id of its row. A draft whose failure left open
    /// whether it was queued is looked for first when it comes again.
    Result<qint64> queue(const MessageDraft& draft);

 private:
    struct Unsettled {
        MessageDraft draft;
        qint64 id;
    };

    Remark ofNumber(const MessageDraft& draft) const;
    Remark ofText(const MessageDraft& draft) const;
    Remark ofFile(DraftField field, const QString& path) const;
    Remark ofTime(const MessageDraft& draft) const;
    bool multi() const { return isYes(settings_.Multi); }
    Result<qint64> nextId();
    Result<bool> wasQueued(const Unsettled& last);

    Database& database_;
    const Settings& settings_;
    const Clock& clock_;
    std::optional<Unsettled> unsettled_;
};

}  // namespace kibo
