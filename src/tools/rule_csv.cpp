#include "tools/rule_csv.h"

#include <QSet>
#include <QStringList>

#include "base/table_text.h"
#include "tools/rule_table.h"

namespace kibo {
namespace {

const QStringList& columns() {
    static const QStringList names{QStringLiteral("rowid"),    QStringLiteral("PROFIL"),  QStringLiteral("keyword"),
                                   QStringLiteral("previd"),   QStringLiteral("logic"),   QStringLiteral("answer"),
                                   QStringLiteral("wa_media"), QStringLiteral("wa_file"), QStringLiteral("run_exe"),
                                   QStringLiteral("exec_php"), QStringLiteral("respon"),  QStringLiteral("neednext"),
                                   QStringLiteral("tipe")};
    return names;
}

QStringList cellsOf(const Rule& rule) {
    return {QString::number(rule.id),
            rule.profile,
            rule.keyword,
            rule.previous,
            rule.logic,
            rule.answer,
            rule.media,
            rule.file,
            rule.program,
            rule.script,
            QString::number(int{rule.answersByScript}),
            QString::number(int{rule.expectsNext}),
            QString::number(static_cast<int>(rule.kind))};
}

Failure wrong(const QString& words) {
    return {FailureKind::InvalidArgument, words.toStdString()};
}

/// A cell that holds a small whole number; empty: 0.
std::optional<int> numberIn(const QString& cell, int most) {
    if (cell.trimmed().isEmpty()) return 0;
    bool isNumber = false;
    const int number = cell.trimmed().toInt(&isNumber);
    return isNumber && number >= 0 && number <= most ? std::optional(number) : std::nullopt;
}

}  // namespace

QByteArray rulesToCsv(const std::vector<Rule>& rules) {
    std::string file = kCsvStart;
    const auto append = [&file](const QStringList& cells) {
        for (qsizetype i = 0; i < cells.size(); ++i) {
            if (i > 0) file += ',';
            appendCsvCell(file, cells[i].toUtf8());
        }
        file += kCsvLineEnd;
    };
    append(columns());
    for (const Rule& rule : rules) append(cellsOf(rule));
    return QByteArray::fromStdString(file);
}

Result<std::vector<Rule>> rulesFromCsv(const QByteArray& file) {
    const Result<std::vector<QStringList>> read = csvRows(file);
    if (!read) return read.failure();
    const std::vector<QStringList>& rows = read.value();
    if (rows.empty()) return wrong(QStringLiteral("the file is empty"));
    const auto placeOf = [&rows](const char* name) {
        for (qsizetype i = 0; i < rows[0].size(); ++i)
            if (rows[0][i].trimmed().compare(QLatin1String(name), Qt::CaseInsensitive) == 0) return i;
        return qsizetype{-1};
    };
    for (const char* needed : {"keyword", "answer"})
        if (placeOf(needed) < 0)
            return wrong(QStringLiteral("the first row names no column %1").arg(QLatin1String(needed)));

    std::vector<Rule> rules;
    QSet<qint64> ids;
    for (size_t i = 1; i < rows.size(); ++i) {
        const auto cell = [&](const char* name) { return rows[i].value(placeOf(name)); };
        const auto inRow = [i](const QString& words) {
            return wrong(QStringLiteral("row %1: %2").arg(i + 1).arg(words));
        };
        Rule rule{.id = cell("rowid").trimmed().toLongLong(),
                  .profile = cell("PROFIL"),
                  .keyword = storableRuleText(cell("keyword")),
                  .previous = cell("previd").trimmed(),
                  .answer = storableRuleText(cell("answer")),
                  .media = cell("wa_media"),
                  .file = cell("wa_file"),
                  .program = cell("run_exe"),
                  .script = cell("exec_php")};
        const QString logic = cell("logic").trimmed();
        if (!logic.isEmpty() && logic != kExactLogic) rule.logic = kContainsLogic;
        if (rule.keyword.trimmed().isEmpty()) return inRow(QStringLiteral("the keyword is empty"));
        if (rule.id > 0 && ids.contains(rule.id))
            return inRow(QStringLiteral("another row has the same rowid, %1").arg(rule.id));
        ids.insert(rule.id);
        const auto kind = numberIn(cell("tipe"), 4), respon = numberIn(cell("respon"), 1),
                   neednext = numberIn(cell("neednext"), 1);
        if (!kind) return inRow(QStringLiteral("tipe must be a number from 0 to 4"));
        if (!respon || !neednext) return inRow(QStringLiteral("respon and neednext must be 0 or 1"));
        rule.kind = static_cast<RuleKind>(*kind);
        rule.answersByScript = *respon == 1;
        rule.expectsNext = *neednext == 1;
        rules.push_back(rule);
    }
    return rules;
}

}  // namespace kibo
