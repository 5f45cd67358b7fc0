#include "engine/outbox_queue.h"

#include <algorithm>
#include <limits>
#include <set>

#include "base/log.h"
#include "store/transaction.h"

namespace kibo {
namespace queue_sql {

Selection selection(bool scheduled, bool multi, const QString& profile, const QString& now, int mostRows) {
    const QString columns = QStringLiteral("select wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, id from ");
    const QString limit = mostRows > 0 ? QStringLiteral(" LIMIT %1 ").arg(mostRows) : QString();
    if (!scheduled && !multi) {
        return {columns + QStringLiteral("outbox where wa_mode <> '3'") + QStringLiteral("order by id ") + limit,
                QStringLiteral("select count(1) as cnt from outbox where wa_mode <> '3'"),
                {}};
    }
    if (!scheduled) {
        return {columns + QStringLiteral("multi where wa_mode <> '3' and tipe = 'O' and profil = ?") +
                    QStringLiteral(" order by id ") + limit,
                QStringLiteral("select count(1) as cnt from multi where wa_mode <> '3' and tipe = 'O' and profil = ? "),
                {profile}};
    }
    if (!multi) {
        return {columns + QStringLiteral("outbox where wa_mode <> '3' and wa_time <= ?") +
                    QStringLiteral(" order by id ") + limit,
                QStringLiteral("select count(1) as cnt from outbox where wa_mode <> '3' and wa_time <= ?  "),
                {now}};
    }
    return {columns + QStringLiteral("multi where wa_mode <> '3' and tipe = 'O' and profil = ? and wa_time <= ?") +
                QStringLiteral(" order by id ") + limit,
            QStringLiteral("select count(1) as cnt from multi where wa_mode <> '3' and tipe = 'O' and profil = ? and "
                           "wa_time <= ? "),
            {profile, now}};
}

}  // namespace queue_sql

namespace {

// The missing blank before SELECT and the two before WHERE belong to the statements' fixed text.
const QString kCopyToSent = QStringLiteral(
    "INSERT INTO sent (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time)"
    "SELECT id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time FROM outbox  WHERE id = ?");
const QString kDeleteFromOutbox = QStringLiteral("DELETE FROM outbox WHERE id = ?");
const QString kCopyInMulti = QStringLiteral(
    "INSERT INTO multi (tipe, profil, id_outbox, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time)"
    "SELECT 'S', ?, id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time FROM multi  WHERE id = ?");
const QString kDeleteFromMulti = QStringLiteral("DELETE FROM multi WHERE tipe = 'O' and profil = ? and id = ?");
// The order of the queue's grid.
const QString kRowOfOutbox =
    QStringLiteral("select wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, id from outbox where id = ?");
const QString kRowOfMulti = QStringLiteral(
    "select wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, id from multi "
    "where tipe = 'O' and profil = ? and id = ?");
// What a server's transaction reads is of its beginning; only a lock shows and keeps the row of now.
const QString kLocked = QStringLiteral(" for update");
const QString kTextOfOutbox = QStringLiteral("select wa_text from outbox where id = ?");
const QString kTextOfMulti = QStringLiteral("select wa_text from multi where id = ?");
const QString kNextInOutbox = QStringLiteral("select min(wa_time) from outbox where wa_mode <> '3' and wa_time > ?");
const QString kNextInMulti =
    QStringLiteral("select min(wa_time) from multi where wa_mode <> '3' and tipe = 'O' and profil = ? and wa_time > ?");
const QString kFailInSent = QStringLiteral("update sent set status = 'fail' where id = ?");
const QString kFailInMulti = QStringLiteral("update multi set status = 'fail' where id_outbox = ?");
const QString kIsInOutbox = QStringLiteral("select count(1) as cnt from outbox where id = ?");
const QString kIsInSent = QStringLiteral("select count(1) as cnt from sent where id = ?");
const QString kIsInMulti =
    QStringLiteral("select count(1) as cnt from multi where tipe = 'O' and profil = ? and id = ?");
const QString kIsCopiedInMulti =
    QStringLiteral("select count(1) as cnt from multi where tipe = 'S' and profil = ? and id_outbox = ?");
const QString kSaysTheSame = QStringLiteral(
    " and (wa_no = ? or wa_no is null) and (wa_text = ? or wa_text is null) and (wa_time = ? or wa_time is null)");
const QString kRemoveFromSent = QStringLiteral("delete from sent where id = ?") + kSaysTheSame;
const QString kRemoveCopyInMulti =
    QStringLiteral("delete from multi where tipe = 'S' and profil = ? and id_outbox = ?") + kSaysTheSame;
const QString kHoldInOutbox = QStringLiteral("update outbox set wa_mode = 3 where id = ?");
const QString kHoldInMulti = QStringLiteral("update multi set wa_mode = 3 where tipe = 'O' and profil = ? and id = ?");
const QString kBackToOutbox = QStringLiteral(
    "insert into outbox (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) values (?, ?, ?, ?, ?, ?, ?)");
const QString kBackToMulti = QStringLiteral(
    "insert into multi (tipe, profil, id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time) "
    "values ('O', ?, ?, ?, ?, ?, ?, ?, ?)");
const QString kAddCopyToSent = QStringLiteral(
    "insert into sent (id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, status) "
    "values (?, ?, ?, ?, ?, ?, ?, ?)");
const QString kAddCopyToMulti = QStringLiteral(
    "insert into multi (tipe, profil, id_outbox, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, status) "
    "values ('S', ?, ?, ?, ?, ?, ?, ?, ?, ?)");

/// A row without a time has none, and a server takes no empty text for one.
QVariant timeOf(const QueuedRow& row) {
    return row.time.isEmpty() ? QVariant() : QVariant::fromValue(StoredTime{row.time});
}

/// The columns that every table of messages has, in the statements' order.
Database::Values columns(const QueuedRow& row) {
    return {row.id.toLongLong(), row.mode.toInt(), row.number, row.text, row.media, row.file, timeOf(row)};
}

constexpr qint64 kAskNextDueEveryMs = 10'000;
// A count that takes longer is made less often.
constexpr qint64 kCountEveryMs = 1'000, kCountPause = 2'000, kLongestCountPauseMs = 60'000;
const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

/// The queue's rows as the grid shows them: a line of the grid is tab-separated, so a text's tabs become blanks.
class QueueRows : public RowSource {
 public:
    explicit QueueRows(std::shared_ptr<const RowSource> rows) : rows_(std::move(rows)) {}

    int rowCount() const override { return rows_->rowCount(); }
    QString text(int row, int column) const override {
        QString text = rows_->text(row, column);
        return column == OutboxQueue::Text ? text.replace(QLatin1Char('\t'), QLatin1Char(' ')) : text;
    }
    QStringList cells(int row, int columns) const override {
        QStringList cells = rows_->cells(row, columns);
        if (cells.value(OutboxQueue::Text).contains(QLatin1Char('\t')))
            cells[OutboxQueue::Text].replace(QLatin1Char('\t'), QLatin1Char(' '));
        return cells;
    }
    bool hasEnded() const override { return rows_->hasEnded(); }

 private:
    std::shared_ptr<const RowSource> rows_;
};

}  // namespace

OutboxQueue::OutboxQueue(GatewayState& state, Settings& settings, Database& database, Clock& clock,
                         MessageRecords& records)
    : state_(state), settings_(settings), database_(database), clock_(clock), records_(records), refused_(clock) {}

void OutboxQueue::cmd_OutboxRefresh_Click() {
    const QString now = clock_.now().toString(kTimeFormat);
    const bool localStore = isYes(settings_.UseMDB);
    if (localStore) settings_.Scheduled = QStringLiteral("N");
    // Rows that are left alone take no place of those behind them.
    const bool limited = isYes(settings_.LimitSelect) && !localStore;
    const int mostRows = limited ? queue_sql::kLimit + refused_.count() : 0;
    const auto selection = queue_sql::selection(isYes(settings_.Scheduled), multi(), profile(), now, mostRows);
    Database::Values values;
    for (const QString& value : selection.values)
        values.append(value == now ? QVariant::fromValue(StoredTime{value}) : QVariant(value));

    // Only the local store can tell, and it has no schedule: the same data are the same rows.
    const QString store = localStore ? database_.changeMark() : QString();
    const QString mark = store.isEmpty() ? store : store + u' ' + selection.rows + selection.values.join(u' ');
    if (!mark.isEmpty() && mark == loadedMark_) {
        state_.dboff.visible = false;
        state_.Outbox_Cnt.caption = QString::number(dueCount_);
        return;
    }
    loadedMark_.clear();

    auto rows = database_.openRows(selection.rows, values);
    if (!rows) {
        state_.ms_out.setRows(std::make_shared<ListRows>());
        state_.Outbox_Cnt.caption = QStringLiteral("0");
        dueCount_ = 0;
        counted_.clear();
        state_.dboff = {true, database_.problem()};
        return;
    }
    state_.dboff.visible = false;
    state_.ms_out.setRows(std::make_shared<QueueRows>(std::move(rows).value()));
    showCount(selection.count, values, mostRows);
    if (!counted_.isEmpty()) loadedMark_ = mark;
}

/// Counting costs a look at every due row, so under a limit it is left out where it can be.
void OutboxQueue::showCount(const QString& sql, const Database::Values& values, int mostRows) {
    const QString counted = sql + profile();
    const int loaded = state_.ms_out.rowCount() - 1;
    if (loaded < mostRows) {  // these are all
        dueCount_ = loaded;
        counted_.clear();
    } else if (mostRows == 0 || counted != counted_ || clock_.monotonicMs() >= countAgainMs_) {
        counted_.clear();
        const qint64 begin = clock_.monotonicMs();
        const Recordset count = database_.OpenRecordset(sql, values);
        if (count.eof()) return;
        dueCount_ = count.field(0).toLongLong();
        counted_ = counted;
        const qint64 end = clock_.monotonicMs();
        countAgainMs_ = end + std::clamp((end - begin) * kCountPause, kCountEveryMs, kLongestCountPauseMs);
    }
    state_.Outbox_Cnt.caption = QString::number(dueCount_);
}

std::optional<QDateTime> OutboxQueue::nextDue() {
    if (!isYes(settings_.Scheduled)) return std::nullopt;
    const QDateTime now = clock_.now();
    const qint64 nowMs = clock_.monotonicMs();
    if (nowMs < askNextDueMs_ && !(nextDue_ && *nextDue_ <= now)) return nextDue_;
    askNextDueMs_ = nowMs + kAskNextDueEveryMs;
    const auto after = storedTime(now);
    const Recordset next = multi() ? database_.OpenRecordset(kNextInMulti, {profile(), after})
                                   : database_.OpenRecordset(kNextInOutbox, {after});
    const QString time = next.field(0).left(kTimeFormat.size()).replace(u'T', u' ');
    const QDateTime due = QDateTime::fromString(time, kTimeFormat);
    nextDue_ = due.isValid() ? std::optional(due) : std::nullopt;
    return nextDue_;
}

/// The grid's row of the next message, counted from its header; 0 when there is none. Before it stand only rows that
/// are left alone, in the order of their ids.
int OutboxQueue::nextIndex() {
    const auto idOf = [this](int row) { return state_.ms_out.text(row, Id).toLongLong(); };
    const int last = std::min(state_.ms_out.rowCount() - 1, refused_.count() + 1);
    std::set<qint64> before;
    int next = 1;
    for (; next <= last && refused_.holds(idOf(next)); ++next) before.insert(idOf(next));
    const bool found = next <= last;
    // Those that should stand before the next one and don't have been taken back.
    if (refused_.count() > 0) {
        const qint64 end = found ? idOf(next) : std::numeric_limits<qint64>::max();
        refused_.dropIf([&](qint64 id) { return id < end && !before.contains(id); });
        showRefused();
    }
    return found ? next : 0;
}

std::optional<QueuedRow> OutboxQueue::nextRow() {
    const int index = nextIndex();
    if (index == 0) return std::nullopt;
    const auto column = [this, index](Column c) { return state_.ms_out.text(index, c); };
    QueuedRow row{column(Id), column(Mode), column(Number), {}, column(Media), column(File), column(Time)};
    const Recordset text = database_.OpenRecordset(multi() ? kTextOfMulti : kTextOfOutbox, {row.id.toLongLong()});
    if (text.eof()) return std::nullopt;
    row.text = text.field(0);
    return row;
}

OutboxQueue::Taken OutboxQueue::take(const QueuedRow& loaded) {
    const std::optional<Taken> recorded = records_.areKept() ? take(loaded, true) : std::nullopt;
    return recorded ? *recorded : *take(loaded, false);
}

/// Nothing when the record alone was refused: then nothing at all was done, and the message is taken without one.
std::optional<OutboxQueue::Taken> OutboxQueue::take(const QueuedRow& loaded, bool recorded) {
    const QString& id = loaded.id;
    const qint64 key = id.toLongLong();
    unknownTake_ = id;
    auto transaction = Transaction::begin(database_);
    if (!transaction) return notTaken(id, {}, transaction.failure());
    const auto row = lockedRow(key);
    if (!row) return Taken::Unknown;
    if (*row != loaded) {
        log::info("engine", QStringLiteral("message %1 was changed or withdrawn before it was taken").arg(id));
        loadedMark_.clear();
        unknownTake_.clear();
        return Taken::No;
    }
    if (recorded) {
        if (const Result<void> begun = records_.taken(id); !begun) {
            if (begun.failure().kind == FailureKind::ConnectionLost) return notTaken(id, {}, begun.failure());
            return std::nullopt;
        }
    }
    const QString copy = multi() ? kCopyInMulti : kCopyToSent;
    const Database::Values whose = multi() ? Database::Values{profile(), key} : Database::Values{key};
    const auto copied = database_.attempt(copy, whose);
    if (!copied) return notTaken(id, copy, copied.failure());
    const QString remove = multi() ? kDeleteFromMulti : kDeleteFromOutbox;
    const auto deleted = database_.attempt(remove, whose);
    if (!deleted) return notTaken(id, remove, deleted.failure());
    if (copied.value() == 0 || deleted.value() == 0) {
        // Another program was faster where the store has no locks: the message isn't ours, and the copy is undone.
        unknownTake_.clear();
        return Taken::No;
    }
    const auto committed = transaction.value().commit();
    if (!committed) return notTaken(id, {}, committed.failure());
    unknownTake_.clear();
    dueCount_ = std::max<qint64>(dueCount_ - 1, 0);  // shown before the next count too
    refused_.dropIf([key](qint64 refused) { return refused == key; });
    showRefused();
    return Taken::Yes;
}

/// The row as it stands in the queue now, and stays until the transaction ends; without an id when it isn't there.
/// Nothing when the store can't tell.
std::optional<QueuedRow> OutboxQueue::lockedRow(qint64 id) {
    const QString lock = database_.kind() == DatabaseKind::MySql ? kLocked : QString();
    const Recordset found = multi() ? database_.OpenRecordset(kRowOfMulti + lock, {profile(), id})
                                    : database_.OpenRecordset(kRowOfOutbox + lock, {id});
    if (found.state() == Recordset::State::Closed) return std::nullopt;
    if (found.eof()) return QueuedRow{};
    return QueuedRow{found.field(Id),    found.field(Mode), found.field(Number), found.field(Text),
                     found.field(Media), found.field(File), found.field(Time)};
}

/// `sql`: the statement that failed; empty for a transaction's begin and end, which never went to the error policy.
OutboxQueue::Taken OutboxQueue::notTaken(const QString& id, const QString& sql, const Failure& failure) {
    const QString why = QString::fromStdString(failure.text);
    state_.dboff.caption = why;
    const bool refused = failure.kind == FailureKind::RowRefused;
    if (refused) {
        unknownTake_.clear();
        refused_.add(id.toLongLong(), why);
        showRefused();
    }
    log::warning("engine", QStringLiteral("message %1 can't be moved to the sent log: %2").arg(id, why));
    if (!sql.isEmpty()) database_.report(sql, failure);
    return refused ? Taken::Refused : Taken::Unknown;
}

QString OutboxQueue::whyRefused(qint64 id) const {
    const QString why = refused_.reasonOf(id);
    return why.isEmpty() ? why
                         : QStringLiteral("The sent log refuses it, so it is left out for five minutes: %1.").arg(why);
}

void OutboxQueue::showRefused() {
    const int others = refused_.count() - 1;
    state_.refusedOut = others < 0 ? QString()
                                   : QStringLiteral("Message %1%2 can't be moved to the sent log: %3")
                                         .arg(refused_.firstKey())
                                         .arg(others > 0 ? QStringLiteral(" and %1 more").arg(others) : QString(),
                                              refused_.firstReason());
}

bool OutboxQueue::markFailed(const QString& id, const QString& reason) {
    // By the row's id alone the statement would mark the copy of another profile that was given the row.
    const auto place = multi() ? find(id) : std::optional(Place{.copied = true});
    if (!place) return false;
    const auto marked = !place->copied ? std::optional<qint64>(0)
                                       : database_.execute(multi() ? kFailInMulti : kFailInSent, {id.toLongLong()});
    if (marked == 0) log::error("engine", QStringLiteral("message %1 has no copy to be marked as failed").arg(id));
    if (!marked) return false;
    const QString code = reasonCode(reason);
    const bool inDoubt = code == QStringLiteral("in_doubt");
    return records_.ended(id, {inDoubt ? MessageRecords::kInDoubt : MessageRecords::kFail, code, reason});
}

std::optional<OutboxQueue::Place> OutboxQueue::find(const QString& id) {
    const qint64 key = id.toLongLong();
    const Recordset queued =
        multi() ? database_.OpenRecordset(kIsInMulti, {profile(), key}) : database_.OpenRecordset(kIsInOutbox, {key});
    const Recordset copied = multi() ? database_.OpenRecordset(kIsCopiedInMulti, {profile(), key})
                                     : database_.OpenRecordset(kIsInSent, {key});
    if (queued.eof() || copied.eof()) return std::nullopt;
    return Place{queued.field(0).toInt() > 0, copied.field(0).toInt() > 0};
}

bool OutboxQueue::hold(const QString& id) {
    const qint64 key = id.toLongLong();
    return (multi() ? database_.execute(kHoldInMulti, {profile(), key}) : database_.execute(kHoldInOutbox, {key}))
        .has_value();
}

bool OutboxQueue::removeCopy(const QueuedRow& row) {
    const auto removed = deleteCopy(row);
    if (removed) return true;
    log::error("engine", QStringLiteral("the sent log keeps its copy of message %1: %2")
                             .arg(row.id, QString::fromStdString(removed.failure().text)));
    return removed.failure().kind == FailureKind::RowRefused;
}

bool OutboxQueue::putBack(const QueuedRow& row) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return false;
    const Result<bool> ours = records_.claimBack(row.id);
    if (!ours || !ours.value()) return false;
    const auto queued = multi() ? database_.execute(kBackToMulti, Database::Values{profile()} + columns(row))
                                : database_.execute(kBackToOutbox, columns(row));
    if (queued != 1) return false;
    const auto removed = deleteCopy(row);
    if (!removed)
        log::error("engine", QStringLiteral("message %1 can't go back into the queue: %2")
                                 .arg(row.id, QString::fromStdString(removed.failure().text)));
    if (!removed || removed.value() != 1 || !transaction.value().commit()) return false;
    countAgainMs_ = 0;
    return true;
}

Result<qint64> OutboxQueue::deleteCopy(const QueuedRow& row) {
    // An id may have been given twice over the years, so an older message of the same id is told by what it says.
    const Database::Values message{row.id.toLongLong(), row.number, row.text, timeOf(row)};
    return multi() ? database_.attempt(kRemoveCopyInMulti, Database::Values{profile()} + message)
                   : database_.attempt(kRemoveFromSent, message);
}

bool OutboxQueue::addCopy(const QueuedRow& row, const QString& status) {
    const Database::Values message = columns(row) + Database::Values{status};
    const QString sql = multi() ? kAddCopyToMulti : kAddCopyToSent;
    const auto added = database_.attempt(sql, multi() ? Database::Values{profile()} + message : message);
    if (added) return true;
    log::error("engine", QStringLiteral("message %1 can't be written into the sent log: %2")
                             .arg(row.id, QString::fromStdString(added.failure().text)));
    // Nothing is left to try then, so it counts as done.
    if (added.failure().kind == FailureKind::RowRefused) return true;
    database_.report(sql, added.failure());
    return false;
}

QString OutboxQueue::storeIdentity() const {
    return database_.identity() + (multi() ? QStringLiteral(" multi") : QStringLiteral(" outbox"));
}

}  // namespace kibo
