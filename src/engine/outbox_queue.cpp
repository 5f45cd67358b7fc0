#include "engine/outbox_queue.h"

#include <algorithm>
#include <limits>
#include <set>

#include "base/log.h"

namespace kibo {
namespace queue_sql {

Selection selection(bool scheduled, bool multi, const QString& profile, const QString& now, bool limited) {
    const QString columns = QStringLiteral("select wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, id from ");
    const QString limit = limited ? QStringLiteral(" LIMIT 10 ") : QString();
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

/// The columns that every table of messages has, in the statements' order.
Database::Values columns(const QueuedRow& row) {
    // A row without a time has none, and a server takes no empty text for one.
    const QVariant time = row.time.isEmpty() ? QVariant() : QVariant::fromValue(StoredTime{row.time});
    return {row.id.toLongLong(), row.mode.toInt(), row.number, row.text, row.media, row.file, time};
}

constexpr qint64 kAskNextDueEveryMs = 10'000;
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

 private:
    std::shared_ptr<const RowSource> rows_;
};

}  // namespace

OutboxQueue::OutboxQueue(GatewayState& state, Settings& settings, Database& database, Clock& clock)
    : state_(state), settings_(settings), database_(database), clock_(clock), refused_(clock) {}

void OutboxQueue::cmd_OutboxRefresh_Click() {
    const QString now = clock_.now().toString(kTimeFormat);
    const bool localStore = isYes(settings_.UseMDB);
    if (localStore) settings_.Scheduled = QStringLiteral("N");
    const auto selection = queue_sql::selection(isYes(settings_.Scheduled), multi(), profile(), now,
                                                isYes(settings_.LimitSelect) && !localStore);
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
        state_.dboff = {true, database_.problem()};
        return;
    }
    state_.dboff.visible = false;
    state_.ms_out.setRows(std::make_shared<QueueRows>(std::move(rows).value()));
    const Recordset count = database_.OpenRecordset(selection.count, values);
    if (count.eof()) return;
    state_.Outbox_Cnt.caption = count.field(0);
    dueCount_ = count.field(0).toLongLong();
    loadedMark_ = mark;
}

std::optional<QDateTime> OutboxQueue::nextDue() {
    if (!isYes(settings_.Scheduled)) return std::nullopt;
    const QDateTime now = clock_.now();
    const qint64 nowMs = clock_.monotonicMs();
    if (nowMs < askNextDueMs_ && !(nextDue_ && *nextDue_ <= now)) return nextDue_;
    askNextDueMs_ = nowMs + kAskNextDueEveryMs;
    const auto after = QVariant::fromValue(StoredTime{now.toString(kTimeFormat)});
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

OutboxQueue::Taken OutboxQueue::take(const QString& id) {
    const qint64 key = id.toLongLong();
    const auto unknown = [&](const char* what) {
        log::error("engine", QStringLiteral("message %1 could not be %2").arg(id, QLatin1String(what)));
        return Taken::Unknown;
    };
    auto transaction = Transaction::begin(database_);
    if (!transaction) return notTaken(id, {}, transaction.failure());
    const QString copy = multi() ? kCopyInMulti : kCopyToSent;
    const Database::Values whose = multi() ? Database::Values{profile(), key} : Database::Values{key};
    const auto copied = database_.attempt(copy, whose);
    if (!copied) return notTaken(id, copy, copied.failure());
    if (copied.value() == 0) return Taken::No;
    if (copied.value() != 1) return unknown("copied to the sent log");
    const QString remove = multi() ? kDeleteFromMulti : kDeleteFromOutbox;
    const auto deleted = database_.attempt(remove, whose);
    if (!deleted) return notTaken(id, remove, deleted.failure());
    if (deleted.value() != 1) return unknown("taken out of the queue");
    const auto committed = transaction.value().commit();
    if (!committed) return notTaken(id, {}, committed.failure());
    refused_.dropIf([key](qint64 refused) { return refused == key; });
    showRefused();
    return Taken::Yes;
}

/// `sql`: the statement that failed; empty for a transaction's begin and end, which never went to the error policy.
OutboxQueue::Taken OutboxQueue::notTaken(const QString& id, const QString& sql, const Failure& failure) {
    const QString why = QString::fromStdString(failure.text);
    state_.dboff.caption = why;
    const bool refused = failure.kind == FailureKind::RowRefused;
    if (refused) {
        refused_.add(id.toLongLong(), why);
        showRefused();
    }
    log::warning("engine", QStringLiteral("message %1 can't be moved to the sent log: %2").arg(id, why));
    if (!sql.isEmpty()) database_.report(sql, failure);
    return refused ? Taken::Refused : Taken::Unknown;
}

void OutboxQueue::showRefused() {
    const int others = refused_.count() - 1;
    state_.refusedOut = others < 0 ? QString()
                                   : QStringLiteral("Message %1%2 can't be moved to the sent log: %3")
                                         .arg(refused_.firstKey())
                                         .arg(others > 0 ? QStringLiteral(" and %1 more").arg(others) : QString(),
                                              refused_.firstReason());
}

bool OutboxQueue::markFailed(const QString& id) {
    const auto marked = database_.execute(multi() ? kFailInMulti : kFailInSent, {id.toLongLong()});
    if (marked == 0) log::error("engine", QStringLiteral("message %1 has no copy to be marked as failed").arg(id));
    return marked.has_value();
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

bool OutboxQueue::removeCopy(const QueuedRow& row) {
    return deleteCopy(row).has_value();
}

bool OutboxQueue::putBack(const QueuedRow& row) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return false;
    const auto queued = multi() ? database_.execute(kBackToMulti, Database::Values{profile()} + columns(row))
                                : database_.execute(kBackToOutbox, columns(row));
    return queued == 1 && deleteCopy(row) == 1 && transaction.value().commit();
}

std::optional<int> OutboxQueue::deleteCopy(const QueuedRow& row) {
    // An id may have been given twice over the years, so an older message of the same id is told by what it says.
    const Database::Values message{row.id.toLongLong(), row.number, row.text,
                                   QVariant::fromValue(StoredTime{row.time})};
    return multi() ? database_.execute(kRemoveCopyInMulti, Database::Values{profile()} + message)
                   : database_.execute(kRemoveFromSent, message);
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
