#include "screens/sent_log.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QMultiHash>
#include <QSaveFile>
#include <QSet>
#include <algorithm>
#include <array>

#include "base/table_text.h"
#include "screens/sent_records.h"
#include "store/queue_writer.h"
#include "store/row_reader.h"
#include "store/transaction.h"

namespace kibo {
namespace {

// The blanks are part of the statements' fixed text. The range leaves out the day's first minute and last seconds.
const QString kFound = QStringLiteral("(wa_no like ? or wa_text like ?) and ");
const QString kOrder = QStringLiteral(" ORDER BY status desc , id");
const QString kDelete = QStringLiteral("delete from sent where id = ?");
const QString kDeleteInMulti = QStringLiteral("delete from multi where tipe = 'S' and id_outbox  = ?");
const QString kRows =
    QStringLiteral("select id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time from sent where id in (%1)");
const QString kRowsInMulti = QStringLiteral(
    "select id_outbox, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, profil from multi "
    "where tipe = 'S' and id_outbox in (%1)");

// The first lines are wanted at once, the others in larger pieces.
constexpr size_t kFirstLines = 50;
constexpr qsizetype kPieceBytes = 256 * 1024, kOtherBytes = 50;
constexpr size_t kUsualBytes = 256;  // of a line
constexpr qint64 kPieceMs = 100;
constexpr int kStopLooks = 64;  // lines between two looks
constexpr int kRowsOfStatement = 500;
constexpr int kRowsOfPiece = 150'000;
constexpr int kExportedAtOnce = 256;

QString field(const PackedRow& line, SentColumn column) {
    return line.text(static_cast<int>(column));
}

/// "yyyy-MM-dd HH:mm:ss", also where another program has written a time in another of the usual forms.
QString lineTime(const QString& stored) {
    if (stored.size() == 19 && stored[10] == u' ') return stored;
    const QDateTime time = QDateTime::fromString(stored, Qt::ISODate);
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : stored;
}

void appendTime(PackedRow& row, QByteArrayView stored) {
    const bool usual = stored.isNull() || (stored.size() == 19 && stored[10] == ' ');
    row.append(usual ? stored : lineTime(QString::fromUtf8(stored)).toUtf8());
}

/// Ids are numbers, and Access compares no number with a text.
QVariant idValue(const QString& id) {
    bool isNumber = false;
    const qint64 number = id.toLongLong(&isNumber);
    return isNumber ? QVariant(number) : QVariant(id);
}

}  // namespace

QString SentQuery::sql() const {
    const QString mark = access ? QStringLiteral("#") : QStringLiteral("'");
    const auto day = [](QDate date) { return date.toString(QStringLiteral("yyyy-MM-dd")); };
    return (multi ? QStringLiteral("select * from multi where ") : QStringLiteral("select * from sent where ")) +
           (access ? QString() : QStringLiteral(" ")) + kFound +
           (multi ? QStringLiteral("tipe = 'S' and ") : QString()) + QStringLiteral("wa_time between ") + mark +
           day(first) + QStringLiteral("  00:01") + mark + QStringLiteral(" and ") + mark + day(last) +
           QStringLiteral("  23:59") + mark + kOrder;
}

Database::Values SentQuery::values() const {
    const QString pattern = u'%' + key + u'%';
    return {pattern, pattern};
}

/// Takes rows over into `rows`, as lines, and says whether to go on.
class SentLog::Lines {
 public:
    Lines(const Database& database, bool multi, FoundRows& rows, const std::stop_token& stop)
        : multi_(multi), rows_(rows), stop_(stop), records_(database.address(), multi) {
        piece_.start();
    }

    bool take(const RowReader& row) {
        if (++taken_ % kStopLooks == 0 && stop_.stop_requested()) return false;
        if (taken_ == 1) findColumns(row);
        SentRecords::Line line;
        line.cells.reserve(kUsualBytes);
        for (size_t i = 0; i < columns_.size(); ++i) {
            const QByteArrayView cell = columns_[i] < 0 ? QByteArrayView() : row.cell(columns_[i]);
            switch (static_cast<SentColumn>(i)) {
                case SentColumn::Id:
                    line.id = cell.isNull() ? 0 : row.number(columns_[i]);
                    line.cells.append(cell);
                    break;
                case SentColumn::Time:
                    appendTime(line.cells, cell);
                    break;
                case SentColumn::Text:
                    pieceBytes_ += cell.size();
                    [[fallthrough]];
                default:
                    line.cells.append(cell);
            }
        }
        if (multi_) line.profile = row.cell(profileColumn_).toByteArray();
        pieceBytes_ += kOtherBytes;
        lines_.push_back(std::move(line));
        const bool first = rows_.rowCount() == 0 && lines_.size() >= kFirstLines;
        if (first || pieceBytes_ >= kPieceBytes || piece_.elapsed() >= kPieceMs) flush();
        return kept_.ok();
    }
    int taken() const { return taken_; }
    /// The last rows are kept, too. Whether the store tells what became of messages.
    Result<bool> end() {
        if (kept_) flush();
        return kept_ ? Result<bool>(records_.areKept()) : kept_.failure();
    }

 private:
    void flush() {
        records_.complete(lines_);
        for (const SentRecords::Line& line : lines_) rows_.append(line.cells);
        kept_ = rows_.flush();
        lines_.clear();
        pieceBytes_ = 0;
        piece_.restart();
    }

    void findColumns(const RowReader& row) {
        const QString id = multi_ ? QStringLiteral("id_outbox") : QStringLiteral("id");
        const QStringList names{id,
                                QStringLiteral("wa_time"),
                                QStringLiteral("wa_mode"),
                                QStringLiteral("wa_no"),
                                QStringLiteral("wa_text"),
                                QStringLiteral("status")};
        std::transform(names.begin(), names.end(), columns_.begin(),
                       [&row](const QString& name) { return row.columnOf(name); });
        profileColumn_ = row.columnOf(QStringLiteral("profil"));
    }

    const bool multi_;
    FoundRows& rows_;
    const std::stop_token& stop_;
    std::array<int, kLoggedColumns> columns_{};
    int profileColumn_ = 0;
    int taken_ = 0;
    SentRecords records_;
    std::vector<SentRecords::Line> lines_;  // not given on yet
    qsizetype pieceBytes_ = 0;
    QElapsedTimer piece_;
    Result<void> kept_;
};

Result<bool> SentLog::search(const SentQuery& query, FoundRows& rows, const std::stop_token& stop) {
    Lines lines(database_, multi_, rows, stop);
    const auto take = [&lines](const RowReader& row) { return lines.take(row); };
    // Not every driver hands on a server's rows as they come: some hold all of a statement's. So they are asked for in
    // pieces, which one transaction keeps to one state of the table; but not where a text narrows them down, since a
    // server that is told a limit goes through the index of the days, which takes three times as long for all of them.
    if (database_.kind() != DatabaseKind::MySql || !query.key.isEmpty()) {
        const Result<void> read = database_.readThrough(query.sql(), query.values(), take);
        const Result<bool> kept = lines.end();
        return read ? kept : read.failure();
    }
    const auto transaction = Transaction::begin(database_);
    Result<void> read = transaction ? Result<void>() : transaction.failure();
    for (int before = 0; read; before = lines.taken()) {
        read = database_.readThrough(query.sql() + QStringLiteral(" limit %1 offset %2").arg(kRowsOfPiece).arg(before),
                                     query.values(), take);
        if (lines.taken() - before < kRowsOfPiece || stop.stop_requested()) break;
    }
    const Result<bool> kept = lines.end();
    return read ? kept : read.failure();
}

Result<SentLog::Outcome> SentLog::remove(const FoundRows& rows, const std::vector<int>& lines, const Course& course) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    Outcome outcome;
    QSet<QString> deleted;
    for (const int line : lines) {
        if (course.stop.stop_requested()) return Outcome{.stopped = true};
        const QString id = rows.text(line, static_cast<int>(SentColumn::Id));
        ++course.lines;
        if (id.isEmpty()) {
            ++outcome.gone;
        } else if (deleted.contains(id)) {
            ++outcome.done;
        } else {
            const Result<qint64> done = database_.attempt(multi_ ? kDeleteInMulti : kDelete, {idValue(id)});
            if (!done) return done.failure();
            if (done.value() != 0) deleted.insert(id);
            ++(done.value() != 0 ? outcome.done : outcome.gone);
        }
    }
    if (const Result<void> committed = transaction.value().commit(); !committed) return committed.failure();
    return outcome;
}

/// A row of the sent log: what shows that it is still a line's, and the message.
struct SentLog::Stored {
    QString id, time;
    NewMessage message;
    bool used = false;

    bool isOf(const PackedRow& line) const {
        return !used && time == field(line, SentColumn::Time) && message.number == field(line, SentColumn::Number) &&
               message.text == field(line, SentColumn::Text) && message.mode == field(line, SentColumn::Mode).toInt();
    }
};

Result<std::vector<SentLog::Stored>> SentLog::storedRows(const QStringList& ids) {
    std::vector<Stored> stored;
    if (ids.isEmpty()) return stored;
    Database::Values values;
    for (const QString& id : ids) values.append(idValue(id));
    const QString places = QStringList(ids.size(), QStringLiteral("?")).join(QStringLiteral(", "));
    const Result<void> read =
        database_.readThrough((multi_ ? kRowsInMulti : kRows).arg(places), values, [&](const RowReader& row) {
            const auto text = [&row](int column) { return row.text(column); };
            stored.push_back({text(0),
                              lineTime(text(6)),
                              {.mode = text(1).toInt(),
                               .number = text(2),
                               .text = text(3),
                               .media = text(4),
                               .file = text(5),
                               .profile = multi_ ? text(7) : QString()}});
            return true;
        });
    return read ? Result(std::move(stored)) : read.failure();
}

Result<SentLog::Outcome> SentLog::sendAgain(const FoundRows& rows, const std::vector<int>& lines,
                                            const Course& course) {
    Outcome outcome;
    std::vector<NewMessage> messages;
    for (auto first = lines.begin(); first != lines.end();) {
        if (course.stop.stop_requested()) return Outcome{.stopped = true};
        const auto last = first + std::min<std::ptrdiff_t>(kRowsOfStatement, lines.end() - first);
        std::vector<PackedRow> chosen;
        QStringList ids;
        for (; first != last; ++first) {
            chosen.push_back(rows.packed(*first));
            const QString id = field(chosen.back(), SentColumn::Id);
            if (!id.isEmpty()) ids.append(id);
        }
        ids.removeDuplicates();
        Result<std::vector<Stored>> read = storedRows(ids);
        if (!read) return read.failure();
        QMultiHash<QString, Stored*> byId;
        for (Stored& one : read.value()) byId.insert(one.id, &one);
        for (const PackedRow& line : chosen) {
            const auto [begin, end] = byId.equal_range(field(line, SentColumn::Id));
            const auto row = std::find_if(begin, end, [&line](const Stored* one) { return one->isOf(line); });
            if (row == end) {
                ++outcome.gone;
                continue;
            }
            (*row)->used = true;
            messages.push_back((*row)->message);
            const bool failed =
                field(line, SentColumn::Status).compare(QStringLiteral("fail"), Qt::CaseInsensitive) == 0;
            if (failed && (!multi_ || (*row)->message.profile == profile_))
                outcome.failed.push_back((*row)->id.toLongLong());
        }
        course.lines += static_cast<int>(chosen.size());
    }
    if (messages.empty()) return outcome;
    if (course.stop.stop_requested()) return Outcome{.stopped = true};
    QueueWriter writer(database_, multi_ ? std::optional(profile_) : std::nullopt);
    if (const Result<void> queued = writer.append(messages); !queued) return queued.failure();
    outcome.done = static_cast<int>(messages.size());
    return outcome;
}

Result<void> exportLines(const FoundRows& rows, const std::vector<int>& lines, const QStringList& header,
                         const QString& path, const SentLog::Course& course) {
    QSaveFile file(path);
    const auto refused = [&file, &path] {
        return Failure{FailureKind::Io, QStringLiteral("%1 can't be written: %2")
                                            .arg(QDir::toNativeSeparators(path), file.errorString())
                                            .toStdString()};
    };
    if (!file.open(QIODevice::WriteOnly)) return refused();
    std::string text = kCsvStart;
    const auto written = [&file, &text] {
        const auto bytes = static_cast<qint64>(text.size());
        const bool whole = file.write(text.data(), bytes) == bytes;
        text.clear();
        return whole;
    };
    for (const QString& name : header) {
        if (&name != &header.front()) text += ',';
        appendCsvCell(text, name.toUtf8());
    }
    text += kCsvLineEnd;
    if (!written()) return refused();
    const int all = lines.empty() ? rows.rowCount() : static_cast<int>(lines.size());
    for (int first = 0; first < all; first += kExportedAtOnce) {
        if (course.stop.stop_requested()) return Failure{FailureKind::InvalidArgument, "it was stopped."};
        course.lines = first;
        const std::vector<PackedRow> block =
            lines.empty() ? rows.packed(first, kExportedAtOnce) : rows.packed(lines, first, kExportedAtOnce);
        if (static_cast<int>(block.size()) < qMin(kExportedAtOnce, all - first))
            return Failure{FailureKind::Io, "The found rows can't be read any more; search once more."};
        for (const PackedRow& row : block) {
            PackedRow::Reader cells(row);
            for (qsizetype column = 0; column < header.size(); ++column) {
                if (column > 0) text += ',';
                appendCsvCell(text, cells.next());
            }
            text += kCsvLineEnd;
        }
        if (!written()) return refused();
    }
    if (!file.commit()) return refused();
    return {};
}

}  // namespace kibo
