#include "store/sql_text.h"

#include <QDateTime>
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

/// NULL and numbers as they are written everywhere, a text as `textLiteral` writes it.
QString literal(const QVariant& value, QString (*textLiteral)(const QString&)) {
    if (!value.isValid()) return QStringLiteral("NULL");
    switch (value.typeId()) {
        case QMetaType::Bool:
            return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
            return value.toString();
        case QMetaType::QDateTime:
            return value.toDateTime().toString(QStringLiteral("'#'yyyy-MM-dd HH:mm:ss'#'"));
        default:
            return textLiteral(value.toString());
    }
}

QString mySqlText(const QString& text) {
    return QStringLiteral("_utf8mb4 X'%1'").arg(QString::fromLatin1(text.toUtf8().toHex()));
}

/// Access knows no escape but the doubled quote, and ends a statement at a zero.
QString accessText(const QString& value) {
    QString text = value;
    return u'\'' + text.remove(QChar(u'\0')).replace(u'\'', QStringLiteral("''")) + u'\'';
}

/// `escapes`: whether a backslash inside quotes takes away the next character's meaning.
QString withValues(const QString& sql, const QList<QVariant>& values, QString (*textLiteral)(const QString&),
                   bool escapes) {
    QString result;
    QChar quote;
    auto value = values.begin();
    for (qsizetype at = 0; at < sql.size(); ++at) {
        const QChar c = sql[at];
        if (!quote.isNull()) {
            if (escapes && c == u'\\' && quote != u'`' && at + 1 < sql.size()) {
                result += c;
                result += sql[++at];
                continue;
            }
            if (c == quote) quote = QChar();
        } else if (c == u'\'' || c == u'"' || c == u'`') {
            quote = c;
        } else if (c == u'?' && value != values.end()) {
            result += literal(*value++, textLiteral);
            continue;
        }
        result += c;
    }
    return result;
}

}  // namespace

QVariant storedTime(const QDateTime& time) {
    if (!time.isValid()) return {};
    return QVariant::fromValue(StoredTime{time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))});
}

QString tableOf(const QString& sql) {
    static const QRegularExpression kTable(QStringLiteral("\\b(?:from|into|update)\\s+[`\"\\[]?(\\w+)"),
                                           QRegularExpression::CaseInsensitiveOption);
    return kTable.match(sql).captured(1);
}

QString statementName(const QString& sql) {
    static const QRegularExpression kVerb(QStringLiteral("^\\s*([a-zA-Z]+)"));
    const QString verb = kVerb.match(sql).captured(1).toLower();
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

QString withMySqlValues(const QString& sql, const QList<QVariant>& values) {
    return withValues(sql, values, mySqlText, true);
}

QString withAccessValues(const QString& sql, const QList<QVariant>& values) {
    return withValues(sql, values, accessText, false);
}

}  // namespace kibo
