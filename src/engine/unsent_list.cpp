#include "engine/unsent_list.h"

#include <algorithm>
#include <memory>
#include <set>

#include "base/log.h"
#include "store/row_reader.h"

namespace kibo {
namespace {

const QString kNewest = QStringLiteral("select max(id) as newest from kibo_message");
// Newest first, in the order of UnsentColumn.
const QString kFailedInSent = QStringLiteral(
    "select s.wa_no, s.wa_text, k.ended, k.reason, k.outbox_id from kibo_message k, sent s "
    "where s.id = k.outbox_id and s.status = 'fail' and k.source = 'outbox' and k.id > ? and k.ended > ? "
    "and k.handled is null and (k.result = 'fail' or k.result = 'in doubt') order by k.id desc");
const QString kFailedInMulti = QStringLiteral(
    "select s.wa_no, s.wa_text, k.ended, k.reason, k.outbox_id from kibo_message k, multi s "
    "where s.id_outbox = k.outbox_id and s.status = 'fail' and s.tipe = 'S' and s.profil = ? and k.source = 'multi' "
    "and k.profil = ? and k.id > ? and k.ended > ? "
    "and k.handled is null and (k.result = 'fail' or k.result = 'in doubt') order by k.id desc");
const QString kHandled = QStringLiteral("update kibo_message set handled = ? where source = ? and outbox_id in (%1)");
const QString kOfProfile = QStringLiteral(" and profil = ?");

/// So many records at most are looked through, however many the last days have.
constexpr qint64 kRecords = 100'000;
constexpr int kTextCharacters = 1000;
constexpr qint64 kFillAgainMs = 60'000;
const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

}  // namespace

void UnsentList::add(const QString& number, const QString& text, const QString& reason, const QString& id) {
    std::erase_if(lines_, [&](const QStringList& line) { return line[UnsentColumn::Id] == id; });
    if (std::ssize(lines_) >= kMostLines) lines_.erase(lines_.begin());
    lines_.push_back({number, text.left(kTextCharacters), clock_.now().toString(kTimeFormat), reason, id});
    show();
}

void UnsentList::fill() {
    if (filledFor_ == whose() || !database_.isOpen() || clock_.monotonicMs() < fillAgainMs_) return;
    fillAgainMs_ = clock_.monotonicMs() + kFillAgainMs;
    // Lines of another profile can't be queued again from here.
    if (filledFor_) lines_.clear();
    std::set<QString> ids;
    for (const QStringList& line : lines_) ids.insert(line[UnsentColumn::Id]);
    std::vector<QStringList> earlier;
    const auto take = [&](const RowReader& row) {
        QStringList line;
        for (int column = UnsentColumn::Number; column <= UnsentColumn::Id; ++column) line.append(row.text(column));
        line[UnsentColumn::Text].truncate(kTextCharacters);
        line[UnsentColumn::Time] = line[UnsentColumn::Time].left(kTimeFormat.size()).replace(u'T', u' ');
        if (ids.insert(line[UnsentColumn::Id]).second) earlier.push_back(std::move(line));
        return std::ssize(lines_) + std::ssize(earlier) < kMostLines;
    };
    qint64 newest = 0;
    Result<void> read = database_.readThrough(kNewest, {}, [&newest](const RowReader& row) {
        newest = row.text(0).toLongLong();
        return false;
    });
    Database::Values values{newest - kRecords, storedTime(clock_.now().addDays(-kDays))};
    if (multi()) values = Database::Values{state_.cb_Profil.text, state_.cb_Profil.text} + values;
    if (read) read = database_.readThrough(multi() ? kFailedInMulti : kFailedInSent, values, take);
    if (!read) {
        if (read.failure().kind != FailureKind::ConnectionLost) filledFor_ = whose();  // it would fail again
        log::warning("engine", QStringLiteral("what failed before this start is not known: %1")
                                   .arg(QString::fromStdString(read.failure().text)));
        return;
    }
    filledFor_ = whose();
    lines_.insert(lines_.begin(), std::make_move_iterator(earlier.rbegin()), std::make_move_iterator(earlier.rend()));
    show();
}

void UnsentList::handled(const Ids& ids) {
    if (ids.empty()) return;
    Database::Values values{storedTime(clock_.now()), multi() ? QStringLiteral("multi") : QStringLiteral("outbox")};
    for (const qint64 id : ids) values.append(id);
    const QString places = QStringList(std::ssize(ids), QStringLiteral("?")).join(QStringLiteral(", "));
    if (multi()) values.append(state_.cb_Profil.text);
    const auto noted = database_.attempt(kHandled.arg(places) + (multi() ? kOfProfile : QString()), values);
    if (!noted)
        log::warning("engine", QStringLiteral("messages that were dealt with come back into the list of failed ones "
                                              "with the next start: %1")
                                   .arg(QString::fromStdString(noted.failure().text)));
    std::set<QString> gone;
    for (const qint64 id : ids) gone.insert(QString::number(id));
    std::erase_if(lines_, [&gone](const QStringList& line) { return gone.contains(line[UnsentColumn::Id]); });
    show();
}

void UnsentList::queuedAgain(const Ids& ids) {
    const std::set<qint64> again(ids.begin(), ids.end());
    Ids listed;
    for (const QStringList& line : lines_)
        if (const qint64 id = line[UnsentColumn::Id].toLongLong(); again.contains(id)) listed.push_back(id);
    handled(listed);
}

void UnsentList::allHandled() {
    Ids ids;
    for (const QStringList& line : lines_) ids.push_back(line[UnsentColumn::Id].toLongLong());
    handled(ids);
}

void UnsentList::show() {
    auto rows = std::make_shared<ListRows>();
    for (const QStringList& line : lines_) rows->append(line);
    state_.ms2.setRows(std::move(rows));
}

}  // namespace kibo
