#include "tools/exclusion_table.h"

#include "store/row_reader.h"
#include "store/transaction.h"

namespace kibo {
namespace {

constexpr int kStopLooks = 16;

}  // namespace

QString ExclusionTable::trouble(const QString& profile) {
    bool isNumber = false;
    const qint64 number = profile.toLongLong(&isNumber);
    if (isNumber && QString::number(number) == profile) return {};
    return QStringLiteral(
               "Only profiles that are numbers, such as 1 or 27, can have an exclusion list. This one is called "
               "\"%1\".")
        .arg(profile);
}

Result<QStringList> ExclusionTable::load(const QString& profile) {
    if (const QString why = trouble(profile); !why.isEmpty())
        return Failure{FailureKind::InvalidArgument, why.toStdString()};
    QStringList numbers;
    const Result<void> read =
        database_.readThrough(QStringLiteral("select * from autochat_exclude where profil = ") + profile, {},
                              [&numbers](const RowReader& row) {
                                  numbers.append(row.text(row.columnOf(QStringLiteral("wa_no"))));
                                  return true;
                              });
    return read ? Result(numbers) : read.failure();
}

Result<bool> ExclusionTable::save(const QString& profile, const QStringList& numbers, const std::stop_token& stop) {
    if (const QString why = trouble(profile); !why.isEmpty())
        return Failure{FailureKind::InvalidArgument, why.toStdString()};
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    const Result<qint64> deleted =
        database_.attempt(QStringLiteral("delete from autochat_exclude where profil = ") + profile);
    if (!deleted) return deleted.failure();
    const QString insert = QStringLiteral("Insert Into autochat_exclude values (%1, ?)").arg(profile);
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        if (i % kStopLooks == 0 && stop.stop_requested()) return false;
        const QString number = numbers[i].isNull() ? QStringLiteral("") : numbers[i];
        if (const Result<qint64> added = database_.attempt(insert, {number}); !added) return added.failure();
    }
    const Result<void> committed = transaction.value().commit();
    return committed ? Result(true) : committed.failure();
}

QStringList pastedNumbers(QString text) {
    // Some systems hand on line ends of their own.
    QStringList rows = text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).split(u'\n');
    for (QString& row : rows) row = row.section(u'\t', 0, 0);
    return rows;
}

}  // namespace kibo
