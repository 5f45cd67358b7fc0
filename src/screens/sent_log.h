#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <stop_token>
#include <vector>

#include "store/database.h"
#include "store/found_rows.h"

namespace kibo {

/// Columns of a line of the sent log.
enum class SentColumn { Id, Time, Mode, Number, Text, Status, Ended, Ticks, TicksTime, Reason };
inline constexpr int kSentColumns = 10;
/// Those before what became of the message.
inline constexpr int kLoggedColumns = 6;

/// Which rows are looked for.
struct SentQuery {
    QString key;  ///< part of number or text; the wildcards of LIKE count in it; empty: all
    QDate first, last;
    bool access = false;  ///< the statements' form: `UseMDB`
    bool multi = false;

    QString sql() const;
    Database::Values values() const;
};

/// The sent messages as an operator handles them: found, deleted, queued once more. For the thread that opened the
/// database, with a connection of its own, since all of it may take long.
class SentLog {
 public:
    /// What was done to the chosen lines; all of them or, after a failure, none.
    struct Outcome {
        int done = 0;
        int gone = 0;          ///< lines whose row has been deleted or changed since it was found
        bool stopped = false;  ///< on demand: nothing was done
        /// Of failed messages of this profile that were queued once more.
        std::vector<qint64> failed = {};
    };
    /// A long work's manners: it looks whether it shall stop, and tells how far it is.
    struct Course {
        std::stop_token stop;
        std::atomic<int>& lines;
    };

    /// `profile`: of this instance, for rows of `multi` that name none.
    SentLog(Database& database, bool multi, QString profile)
        : database_(database), multi_(multi), profile_(std::move(profile)) {}

    /// Gives the lines that `query` finds to `rows`, from the first on as they come; stopped, those so far. False: the
    /// store doesn't tell what became of messages, and the last columns are empty.
    Result<bool> search(const SentQuery& query, FoundRows& rows, const std::stop_token& stop);
    /// Deletes the rows with the ids of `lines`, which count in `rows`.
    Result<Outcome> remove(const FoundRows& rows, const std::vector<int>& lines, const Course& course);
    /// Queues the messages of `lines` as they were queued before, with their files and texts before expansion; in
    /// `multi` back to the profile that they were of.
    Result<Outcome> sendAgain(const FoundRows& rows, const std::vector<int>& lines, const Course& course);

 private:
    class Lines;
    struct Stored;

    Result<std::vector<Stored>> storedRows(const QStringList& ids);

    Database& database_;
    const bool multi_;
    const QString profile_;
};

/// Runs `step` with a sent log over a connection that lives as long as the call.
template <class T>
Result<T> overOwnConnection(const StoreAddress& address, bool onlyRead, bool multi, const QString& profile,
                            const std::function<Result<T>(SentLog& log)>& step) {
    const SystemClock clock;
    const ErrorPolicy policy;
    Database database(clock, policy);
    const Result<void> opened = onlyRead ? database.openToRead(address) : database.openSame(address);
    if (!opened) return opened.failure();
    SentLog log(database, multi, profile);
    return step(log);
}

/// Writes `rows` to a CSV file in the order of `lines`, which are all or none, then as they were found; as many columns
/// as `header` names. All of them or, stopped or after a failure, none.
Result<void> exportLines(const FoundRows& rows, const std::vector<int>& lines, const QStringList& header,
                         const QString& path, const SentLog::Course& course);

}  // namespace kibo
