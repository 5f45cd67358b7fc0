#include "session/queue_actions.h"

#include <QScopeGuard>
#include <QTimer>
#include <algorithm>
#include <memory>
#include <set>

#include "base/log.h"
#include "store/transaction.h"

namespace kibo {
namespace {

const QString kDeleteFromOutbox = QStringLiteral("delete from outbox where id = ?");
// The profile without quotes belongs to the statement's fixed text: it is a number.
const QString kDeleteFromMulti = QStringLiteral("delete from multi where tipe = 'O' and profil = ? and id = ?");
// A number that a store gave twice may stand there twice; the copy that failed is meant.
const QString kFailedInSent =
    QStringLiteral("select wa_no, wa_text, wa_media, wa_file from sent where id = ? and status = 'fail'");
const QString kFailedInMulti = QStringLiteral(
    "select wa_no, wa_text, wa_media, wa_file from multi "
    "where tipe = 'S' and profil = ? and id_outbox = ? and status = 'fail'");

QString messages(qint64 count) {
    return count == 1 ? QStringLiteral("1 message") : QStringLiteral("%L1 messages").arg(count);
}

QString words(const Failure& failure) {
    return QString::fromStdString(failure.text);
}

}  // namespace

struct QueueActions::Clearing {
    const char* question;
    const char* title;
    QString table;  ///< of one instance
    QString type;   ///< `tipe` where instances share a table
    QString held;   ///< condition of the rows that the grid does not show
};

void QueueActions::cmd_ClearOutbox_Click() {
    clear({"Are You Sure Clear All Data in Outbox ?", "Clear Outbox", QStringLiteral("outbox"), QStringLiteral("O"),
           QStringLiteral("wa_mode = '3'")},
          n_.refreshOutbox);
}

void QueueActions::cmd_ClearInbox_Click() {
    clear({"Are You Sure Clear All Data in Inbox ?", "Clear Inbox", QStringLiteral("inbox"), QStringLiteral("I"), {}},
          n_.refreshInbox);
}

void QueueActions::clear(const Clearing& what, const std::function<void()>& refresh) {
    const QString whose = multi() ? QStringLiteral(" where tipe = '%1' and profil = ?").arg(what.type) : QString();
    const QString rows = QStringLiteral(" from ") + (multi() ? QStringLiteral("multi") : what.table) + whose;
    const Database::Values values = multi() ? Database::Values{profile()} : Database::Values{};
    const auto count = [&](const QString& condition) {
        const QString joint = multi() ? QStringLiteral(" and ") : QStringLiteral(" where ");
        return n_.database.OpenRecordset(
            QStringLiteral("select count(1) as cnt") + rows + (condition.isEmpty() ? QString() : joint + condition),
            values);
    };
    const Recordset all = count({});
    if (all.eof())
        return say(QStringLiteral("Nothing was deleted: ") + n_.database.problem(), MessageBox::Icon::Critical);
    QString text = QLatin1String(what.question) + QStringLiteral("\n\n%1").arg(messages(all.field(0).toLongLong()));
    const qint64 held = what.held.isEmpty() ? 0 : count(what.held).field(0).toLongLong();
    if (held > 0) text += QStringLiteral(", %L1 of them held").arg(held);
    n_.dialogs.show(
        {QLatin1String(what.title), text, MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
        [this, sql = QStringLiteral("delete") + rows, values, refresh](bool yes) {
            if (!yes) return;
            const Result<qint64> deleted = n_.database.attempt(sql, values);
            if (!deleted)
                say(QStringLiteral("Nothing was deleted: ") + words(deleted.failure()), MessageBox::Icon::Critical);
            else
                log::info("window", QStringLiteral("cleared by the operator: %1").arg(messages(deleted.value())));
            refresh();
        });
}

void QueueActions::cmd_DelOut_Click(const Ids& ids) {
    bool isNumber = false;
    profile().toLongLong(&isNumber);
    if (multi() && !isNumber) {
        return say(QStringLiteral("Messages of the profile \"%1\" can't be deleted one by one, because its name is not "
                                  "a number. \"Clear\" deletes all that wait.")
                       .arg(profile()),
                   MessageBox::Icon::Information);
    }
    begin("Deleting", "deleted", ids, [this](const Ids& portion) { return deleteWaiting(portion); });
}

Result<qint64> QueueActions::deleteWaiting(const Ids& ids) {
    auto transaction = Transaction::begin(n_.database);
    if (!transaction) return transaction.failure();
    qint64 found = 0;
    for (const qint64 id : ids) {
        const auto deleted = multi() ? n_.database.attempt(kDeleteFromMulti, {profile().toLongLong(), id})
                                     : n_.database.attempt(kDeleteFromOutbox, {id});
        if (!deleted) return deleted;
        found += deleted.value();
    }
    const Result<void> committed = transaction.value().commit();
    return committed ? Result<qint64>(found) : Result<qint64>(committed.failure());
}

void QueueActions::cmd_MoveOutbox_Click(const Ids& ids) {
    const std::set<qint64> chosen(ids.begin(), ids.end());
    qint64 inDoubt = 0;
    for (int row = 1; row < n_.state.ms2.rowCount(); ++row) {
        if (chosen.contains(n_.state.ms2.text(row, UnsentColumn::Id).toLongLong()) &&
            n_.state.ms2.text(row, UnsentColumn::Reason).startsWith(QStringLiteral("in doubt")))
            ++inDoubt;
    }
    if (inDoubt == 0) return requeue(ids);
    n_.dialogs.show({kProgramName,
                     QStringLiteral("%1 of %2 may have arrived: Enter was pressed, and the chat did not tell. Queued "
                                    "again, what has arrived arrives twice.\n\nQueue %2 again ?")
                         .arg(inDoubt)
                         .arg(messages(qint64(ids.size()))),
                     MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
                    [this, ids](bool yes) {
                        if (yes) requeue(ids);
                    });
}

void QueueActions::requeue(const Ids& ids) {
    begin("Queueing", "queued again", ids, [this](const Ids& portion) { return queueAgain(portion); });
}

Result<qint64> QueueActions::queueAgain(const Ids& ids) {
    std::vector<NewMessage> again;
    Ids queued;
    for (const qint64 id : ids) {
        const Recordset copy = multi() ? n_.database.OpenRecordset(kFailedInMulti, {profile(), id})
                                       : n_.database.OpenRecordset(kFailedInSent, {id});
        if (copy.state() == Recordset::State::Closed)
            return Failure{FailureKind::Database, n_.database.problem().toStdString()};
        if (copy.eof()) continue;
        again.push_back(
            {.number = copy.field(0), .text = copy.field(1), .media = copy.field(2), .file = copy.field(3)});
        queued.push_back(id);
    }
    QueueWriter writer(n_.database, multi() ? std::optional(profile()) : std::nullopt);
    if (const Result<void> written = writer.append(again); !written) return written.failure();
    n_.unsent.handled(queued);
    return qint64(queued.size());
}

void QueueActions::begin(const char* doing, const char* done, const Ids& ids, Portion portion) {
    if (ids.empty()) return say(QStringLiteral("Select one or more lines first."), MessageBox::Icon::Information);
    if (!n_.state.work.isEmpty())
        return say(QStringLiteral("Please wait until the work in hand is done."), MessageBox::Icon::Information);
    doing_ = doing;
    done_ = done;
    portion_ = std::move(portion);
    left_ = ids;
    all_ = qint64(ids.size());
    found_ = worked_ = 0;
    workOn();
}

void QueueActions::workOn() {
    const auto size = std::min<std::ptrdiff_t>(kPortion, std::ssize(left_));
    const Ids portion(left_.begin(), left_.begin() + size);
    left_.erase(left_.begin(), left_.begin() + size);
    // An error that surfaces ends the work.
    auto brokenOff = qScopeGuard([this] {
        left_.clear();
        n_.state.work.clear();
    });
    const Result<qint64> found = portion_(portion);
    brokenOff.dismiss();
    if (!found) return finish(&found.failure());
    found_ += found.value();
    worked_ += size;
    if (left_.empty()) return finish();
    n_.state.work = QStringLiteral("%1 %L2 of %3").arg(QLatin1String(doing_)).arg(worked_).arg(messages(all_));
    QTimer::singleShot(0, &context_, [this] { n_.guarded([this] { left_.empty() ? finish() : workOn(); }); });
}

void QueueActions::finish(const Failure* failure) {
    left_.clear();
    n_.state.work.clear();
    n_.refreshOutbox();
    log::info("window",
              QStringLiteral("%1 by the operator: %2 of %3").arg(QLatin1String(done_)).arg(found_).arg(messages(all_)));
    if (found_ == all_) return;
    QString text = QStringLiteral("%L1 of %2 %3.").arg(found_).arg(messages(all_), QLatin1String(done_));
    if (worked_ > found_)
        text += QStringLiteral(" %1 no longer there: sent or deleted meanwhile.")
                    .arg(worked_ - found_ == 1 ? QStringLiteral("1 was")
                                               : QStringLiteral("%L1 were").arg(worked_ - found_));
    if (failure != nullptr)
        // A server that broke off may have done what it did not answer for.
        text += (failure->kind == FailureKind::ConnectionLost
                     ? QStringLiteral("\nThe connection broke: look into the outbox before you do it again. ")
                     : QStringLiteral("\nThe others stay as they are: ")) +
                words(*failure);
    say(text, failure == nullptr ? MessageBox::Icon::Information : MessageBox::Icon::Critical);
}

void QueueActions::cmd_ClearGridInbox_Click() {
    n_.state.ms.setRows(std::make_shared<ListRows>());
    n_.state.Inbox_Cnt.caption.clear();
}

}  // namespace kibo
