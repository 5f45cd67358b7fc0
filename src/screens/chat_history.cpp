#include "screens/chat_history.h"

#include <algorithm>

#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr int kLines = 10;
/// No index of the sent log leads to a number, and a window must not wait for a million rows.
constexpr qint64 kSentLookedThrough = 20'000;

// In an order that no index has: one that had it would be read from its end, past all other chats, instead of the
// chat's own rows.
const QString kInbox =
    QStringLiteral("select wa_time, wa_text from inbox where wa_no in (?, ?, ?) order by wa_time desc, wa_no");
const QString kSent =
    QStringLiteral("select wa_time, wa_text, status from sent where wa_no in (?, ?, ?) and id > ? order by id desc");
const QString kNewestSent = QStringLiteral("select max(id) as newest from sent");
const QString kMulti = QStringLiteral(
    "select wa_time, wa_text, status from multi where wa_no in (?, ?, ?) and tipe = ? and profil = ? "
    "order by id + 0 desc");

/// The first rows of `sql`, newest first.
Result<void> append(QList<ChatLine>& lines, bool ours, Database& database, const QString& sql,
                    const Database::Values& values) {
    // Of a local store only the rows that are asked for are read.
    const QString limit = database.kind() == DatabaseKind::MySql ? QStringLiteral(" LIMIT %1").arg(kLines) : QString();
    const auto rows = database.openRows(sql + limit, values);
    if (!rows) return rows.failure();
    for (int i = 0; i < std::min(kLines, rows.value()->rowCount()); ++i) {
        const auto text = [&](int column) { return rows.value()->text(i, column); };
        lines.append({ours, text(0), text(1), ours ? text(2) : QString()});
    }
    return {};
}

}  // namespace

Result<QList<ChatLine>> lastLinesOfChat(Database& database, const Settings& settings, const QString& number,
                                        const QString& profile) {
    const QString typed = number.trimmed();
    QList<ChatLine> lines;
    if (typed.isEmpty()) return lines;
    // As the page's title says it, as programs write it, as it is dialled.
    const Database::Values spellings{typed, cleanedNumber(typed),
                                     destinationNumber(typed, settings.Prefix, settings.CountryCode)};
    for (const bool ours : {true, false}) {
        Database::Values values = spellings;
        QString sql = ours ? kSent : kInbox;
        if (isYes(settings.Multi)) {
            sql = kMulti;
            values << (ours ? QStringLiteral("S") : QStringLiteral("I")) << profile;
        } else if (ours) {
            values << database.OpenRecordset(kNewestSent).field(0).toLongLong() - kSentLookedThrough;
        }
        if (const Result<void> read = append(lines, ours, database, sql, values); !read) return read.failure();
    }
    std::reverse(lines.begin(), lines.end());  // in one second an answer comes last
    std::stable_sort(lines.begin(), lines.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
    return lines.mid(std::max<qsizetype>(0, lines.size() - kLines));
}

}  // namespace kibo
