// Linked into a test program, this holds every statement that goes to a local store against what Access' SQL knows:
// SQLite understands far more, so nothing else would tell.
#include <gtest/gtest.h>

#include <QRegularExpression>

#include "store/database.h"

namespace kibo {
namespace {

QRegularExpression anyOf(const char* pattern) {
    return QRegularExpression(QString::fromLatin1(pattern), QRegularExpression::CaseInsensitiveOption);
}

/// The piece that Access does not know; empty: none.
QString unknownPiece(QString sql) {
    // What Database sends to SQLite alone, and what tests do to tables to make trouble.
    static const auto kOthers = anyOf(
        "^(pragma|begin immediate|commit|rollback|select total_changes|select last_insert_rowid|create|drop|alter)\\b");
    static const auto kDateText = anyOf("'\\d{4}-\\d\\d-\\d\\d[^']*'");
    static const auto kQuoted = anyOf("'[^']*'");
    static const auto kUnknown = anyOf(
        "\\|\\||!=|%|`|;|\\(distinct\\b|\\)\\s*,\\s*\\(|\\b(limit|offset|replace into|insert or|on conflict|case|"
        "except|intersect|returning|with|current_timestamp|glob|regexp)\\b");
    static const auto kFunction = anyOf("\\b(?!count|min|max|sum|in\\b|values|and\\b|or\\b)(?<!into )(\\w+)\\(");
    // Access is given rows one by one; only SQLite many at once.
    static const auto kFurtherRows = anyOf(",\\((\\?(, )?)+\\)");
    if (kOthers.match(sql).hasMatch()) return {};
    sql.remove(kFurtherRows);
    if (const auto found = kDateText.match(sql); found.hasMatch()) return found.captured();
    sql.replace(kQuoted, QStringLiteral("''"));
    for (const auto& pattern : {kUnknown, kFunction})
        if (const auto found = pattern.match(sql); found.hasMatch()) return found.captured();
    return {};
}

class AccessSql : public testing::Environment {
 public:
    void SetUp() override {
        Database::onLocalStatement = [](const QString& sql, const Database::Values& values) {
            static const auto kDate = anyOf("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d$");
            EXPECT_EQ(unknownPiece(sql).toStdString(), "") << "unknown to Access: " << sql.toStdString();
            for (const QVariant& value : values)
                EXPECT_FALSE(value.typeId() == QMetaType::QString && kDate.match(value.toString()).hasMatch())
                    << "a text where Access wants a time: " << sql.toStdString();
        };
    }
};

const auto* const kAccessSql = testing::AddGlobalTestEnvironment(new AccessSql);

}  // namespace
}  // namespace kibo
