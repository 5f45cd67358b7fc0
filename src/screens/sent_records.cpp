#include "screens/sent_records.h"

#include <algorithm>
#include <array>

#include "base/log.h"
#include "store/row_reader.h"

namespace kibo {
namespace {

// A message that was taken several times has several rows, of which the last one tells. Sorting them takes the store
// longer than finding them.
const QString kSelect = QStringLiteral(
    "select outbox_id, profil, ended, ticks, ticks_time, reason, id from kibo_message where source = '%1' and "
    "outbox_id %2");
const QString kBetween = QStringLiteral("between ? and ?");
const QString kAmong = QStringLiteral("in (%1)");
const QString kSmallCache = QStringLiteral("PRAGMA cache_size=-2000");

/// Ids that lie so close together are read in one go, with those between them.
constexpr qint64 kSpread = 8;
constexpr size_t kIdsOfStatement = 500;

QByteArrayView ticksInWords(QByteArrayView ticks) {
    static constexpr std::array<const char*, 4> kWords{"waiting", "sent", "delivered", "read"};
    const size_t number = ticks.size() == 1 ? static_cast<size_t>(ticks.front() - '0') : kWords.size();
    return number < kWords.size() ? QByteArrayView(kWords.at(number)) : QByteArrayView();
}

}  // namespace

SentRecords::Record* SentRecords::of(qint64 id) {
    const auto at = std::lower_bound(ids_.begin(), ids_.end(), id);
    return at != ids_.end() && *at == id ? &found_[static_cast<size_t>(at - ids_.begin())] : nullptr;
}

void SentRecords::complete(std::vector<Line>& lines) {
    ids_.clear();
    for (const Line& line : lines)
        if (line.id > 0) ids_.push_back(line.id);
    std::sort(ids_.begin(), ids_.end());
    ids_.erase(std::unique(ids_.begin(), ids_.end()), ids_.end());
    for (Record& record : found_) record.id = 0;
    found_.resize(std::max(found_.size(), ids_.size()));
    if (!ids_.empty() && open()) read();
    for (Line& line : lines) {
        const Record* record = of(line.id);
        if (record && record->id > 0 && record->profile == line.profile) line.cells.append(record->cells);
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

void SentRecords::read() {
    if (ids_.back() - ids_.front() < kSpread * static_cast<qint64>(ids_.size())) {
        areKept_ = readWhere(kBetween, {ids_.front(), ids_.back()});
        return;
    }
    for (size_t first = 0; first < ids_.size() && areKept_; first += kIdsOfStatement) {
        const size_t last = std::min(first + kIdsOfStatement, ids_.size());
        Database::Values values;
        for (size_t i = first; i < last; ++i) values.append(ids_[i]);
        const QString places = QStringList(values.size(), QStringLiteral("?")).join(QStringLiteral(", "));
        areKept_ = readWhere(kAmong.arg(places), values);
    }
}

bool SentRecords::readWhere(const QString& condition, const Database::Values& values) {
    const QString sql = kSelect.arg(multi_ ? QStringLiteral("multi") : QStringLiteral("outbox"), condition);
    const Result<void> done = database_->readThrough(sql, values, [this](const RowReader& row) {
        Record* const record = of(row.number(0));
        const qint64 id = row.number(6);
        if (!record || id < record->id) return true;
        record->id = id;
        if (multi_) record->profile = row.cell(1).toByteArray();
        record->cells.clear();
        for (const QByteArrayView cell : {row.cell(2), ticksInWords(row.cell(3)), row.cell(4), row.cell(5)})
            record->cells.append(cell);
        return true;
    });
    if (!done)
        log::info("screens", QStringLiteral("the sent log tells nothing of kibo_message: ") +
                                 QString::fromStdString(done.failure().text));
    return done.ok();
}

}  // namespace kibo
