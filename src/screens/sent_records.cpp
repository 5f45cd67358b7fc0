#include "screens/sent_records.h"

#include <algorithm>

#include "base/log.h"
#include "screens/sent_log.h"
#include "store/query_rows.h"

namespace kibo {
namespace {

// A message that was taken several times has several rows, of which the last one tells.
const QString kSelect = QStringLiteral(
    "select outbox_id, profil, ended, ticks, ticks_time, reason from kibo_message where source = '%1' and "
    "outbox_id %2 order by id");
// A server's driver takes longer for a cell than the server for a row, so all stands in one.
const QString kSelectInOne = QStringLiteral(
    "select concat_ws('\t', outbox_id, profil, coalesce(ended, ''), coalesce(ticks, ''), coalesce(ticks_time, ''), "
    "coalesce(reason, '')) from kibo_message where source = '%1' and outbox_id %2 order by id");
constexpr int kSelected = 6;
const QString kBetween = QStringLiteral("between ? and ?");
const QString kAmong = QStringLiteral("in (%1)");
const QString kSmallCache = QStringLiteral("PRAGMA cache_size=-2000");

constexpr int kRecordCells = kSentColumns - static_cast<int>(SentColumn::Ended);
/// Ids that lie so close together are read in one go, with those between them.
constexpr qint64 kSpread = 8;
constexpr size_t kIdsOfStatement = 500;

QString ticksInWords(const QString& ticks) {
    static const QStringList kWords{QStringLiteral("waiting"), QStringLiteral("sent"), QStringLiteral("delivered"),
                                    QStringLiteral("read")};
    return ticks.isEmpty() ? QString() : kWords.value(ticks.toInt());
}

}  // namespace

SentRecords::Record* SentRecords::Records::of(qint64 id) {
    const auto at = std::lower_bound(ids.begin(), ids.end(), id);
    return at != ids.end() && *at == id ? &found[static_cast<size_t>(at - ids.begin())] : nullptr;
}

void SentRecords::complete(std::vector<Line>& lines) {
    const auto idOf = [](const Line& line) { return line.cells[static_cast<int>(SentColumn::Id)].toLongLong(); };
    Records records;
    for (const Line& line : lines)
        if (const qint64 id = idOf(line); id > 0) records.ids.push_back(id);
    std::sort(records.ids.begin(), records.ids.end());
    records.ids.erase(std::unique(records.ids.begin(), records.ids.end()), records.ids.end());
    records.found.resize(records.ids.size());
    if (!records.ids.empty() && open()) read(records);
    static const QStringList kNothing(kRecordCells, QString());
    for (Line& line : lines) {
        const Record* record = records.of(idOf(line));
        const bool known = record && !record->cells.isEmpty() && record->profile == line.profile;
        line.cells += known ? record->cells : kNothing;
    }
}

bool SentRecords::open() {
    if (opened_) return areKept_;
    opened_ = true;
    database_.emplace(clock_, policy_);
    const Result<void> opened = database_->openToRead(store_);
    areKept_ = opened.ok();
    if (!opened) log::warning("screens", QString::fromStdString(opened.failure().text));
    // Single rows are looked up in passing here; nothing is sorted.
    if (opened && store_.sqlite) (void)database_->attempt(kSmallCache);
    return areKept_;
}

void SentRecords::read(Records& records) {
    const std::vector<qint64>& ids = records.ids;
    if (ids.back() - ids.front() < kSpread * static_cast<qint64>(ids.size())) {
        areKept_ = readWhere(kBetween, {ids.front(), ids.back()}, records);
        return;
    }
    for (size_t first = 0; first < ids.size() && areKept_; first += kIdsOfStatement) {
        const size_t last = std::min(first + kIdsOfStatement, ids.size());
        Database::Values values;
        for (size_t i = first; i < last; ++i) values.append(ids[i]);
        const QString places = QStringList(values.size(), QStringLiteral("?")).join(QStringLiteral(", "));
        areKept_ = readWhere(kAmong.arg(places), values, records);
    }
}

bool SentRecords::readWhere(const QString& condition, const Database::Values& values, Records& records) {
    const bool inOne = database_->kind() == DatabaseKind::MySql;
    const QString sql =
        (inOne ? kSelectInOne : kSelect).arg(multi_ ? QStringLiteral("multi") : QStringLiteral("outbox"), condition);
    const Result<void> done = database_->readThrough(sql, values, [&](const CurrentRow& row) {
        const QStringList parts = inOne ? row.text(0).split(u'\t') : QStringList();
        if (inOne && parts.size() < kSelected) return true;
        const auto cell = [&](int column) { return inOne ? parts[column] : row.text(column); };
        if (Record* record = records.of(cell(0).toLongLong()))
            *record = {multi_ ? cell(1) : QString(), {cell(2), ticksInWords(cell(3)), cell(4), cell(5)}};
        return true;
    });
    if (!done)
        log::info("screens", QStringLiteral("the sent log tells nothing of kibo_message: ") +
                                 QString::fromStdString(done.failure().text));
    return done.ok();
}

}  // namespace kibo
