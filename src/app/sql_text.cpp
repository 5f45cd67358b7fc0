#include "app/sql_text.h"

#include <QRegularExpression>

namespace kibo {
namespace {

/// The SQLite literal for what stands between two number signs; empty where that is no date.
QString sqliteDate(QStringView literal) {
    static const QRegularExpression kDate(
        QStringLiteral("^\\s*(\\d{4})-(\\d{1,2})-(\\d{1,2})(?:\\s+(\\d{1,2}):(\\d{2})(?::(\\d{2}))?)?\\s*$"));
    const QRegularExpressionMatch match = kDate.match(literal.toString());
    if (!match.hasMatch()) return {};
    const auto digits = [&match](int group) { return match.captured(group).rightJustified(2, u'0'); };
    return QStringLiteral("'%1-%2-%3 %4:%5:%6'")
        .arg(match.captured(1), digits(2), digits(3), digits(4), digits(5), digits(6));
}

}  // namespace

QString tableOf(const QString& sql) {
    static const QRegularExpression kTable(QStringLiteral("\\b(?:from|into|update)\\s+[`\"\\[]?(\\w+)"),
                                           QRegularExpression::CaseInsensitiveOption);
    return kTable.match(sql).captured(1);
}

QString statementName(const QString& sql) {
    const QString verb = sql.trimmed().section(u' ', 0, 0).left(12).toLower();
    const QString table = tableOf(sql);
    return table.isEmpty() ? verb : verb + u' ' + table;
}

QString withSqliteDateLiterals(const QString& sql) {
    QString result;
    QChar quote;
    for (qsizetype at = 0; at < sql.size(); ++at) {
        const QChar c = sql[at];
        if (!quote.isNull()) {
            if (c == quote) quote = QChar();
        } else if (c == u'\'' || c == u'"') {
            quote = c;
        } else if (c == u'#') {
            const qsizetype end = sql.indexOf(u'#', at + 1);
            const QString date = end < 0 ? QString() : sqliteDate(QStringView(sql).mid(at + 1, end - at - 1));
            if (!date.isEmpty()) {
                result += date;
                at = end;
                continue;
            }
        }
        result += c;
    }
    return result;
}

}  // namespace kibo
