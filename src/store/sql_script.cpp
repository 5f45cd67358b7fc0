#include "store/sql_script.h"

#include <QStringList>
#include <algorithm>

namespace kibo {
namespace {

/// A word outside of quotes and comments, in capitals.
struct Word {
    QString text;
    int depth;  // of parentheses around it
};

bool isOneOf(const QString& word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(), [&word](const char* one) { return word == QLatin1String(one); });
}

/// Judges one statement by its words.
class Judge {
 public:
    explicit Judge(const std::vector<Word>& words) : words_(words), verb_(verbAt()) {}

    QString verb() const { return word(verb_); }

    SqlDanger danger() const {
        const QString first = verb();
        if (first == QStringLiteral("DELETE")) return follows({"WHERE"}) ? SqlDanger::None : SqlDanger::DeletesAllRows;
        if (first == QStringLiteral("UPDATE")) return follows({"WHERE"}) ? SqlDanger::None : SqlDanger::ChangesAllRows;
        if (first == QStringLiteral("TRUNCATE")) return SqlDanger::Truncates;
        if (first == QStringLiteral("DROP")) return SqlDanger::Drops;
        if (first == QStringLiteral("ALTER")) return follows({"DROP", "TRUNCATE"}) ? SqlDanger::Drops : SqlDanger::None;
        if (first == QStringLiteral("CREATE") && word(verb_ + 1) == QStringLiteral("OR") &&
            follows({"TABLE", "DATABASE", "SCHEMA"}) && !definesRoutine(words_))
            return SqlDanger::Drops;
        if (first == QStringLiteral("BEGIN"))
            return word(verb_ + 1) == QStringLiteral("NOT") ? SqlDanger::Unseen : SqlDanger::None;
        return isOneOf(first, {"PREPARE", "EXECUTE", "IF", "LOOP", "WHILE", "REPEAT", "FOR", "CASE"})
                   ? SqlDanger::Unseen
                   : SqlDanger::None;
    }

    bool selects() const { return isOneOf(verb(), {"SELECT", "VALUES", "TABLE"}) && !follows({"INTO"}); }

    static bool definesRoutine(const std::vector<Word>& words) {
        if (words.empty() || words.front().text != QStringLiteral("CREATE")) return false;
        for (const Word& one : words) {
            if (isOneOf(one.text, {"TRIGGER", "PROCEDURE", "FUNCTION", "EVENT", "PACKAGE"})) return true;
            if (isOneOf(one.text, {"TABLE", "VIEW", "INDEX", "DATABASE", "SCHEMA", "BEGIN"})) return false;
        }
        return false;
    }

 private:
    QString word(size_t at) const { return at < words_.size() ? words_[at].text : QString(); }

    /// What WITH, ANALYZE and SET STATEMENT run stands behind them, outside of their parentheses.
    size_t verbAt() const {
        const QString first = word(0), second = word(1);
        const bool wraps = isOneOf(first, {"WITH", "ANALYZE"}) ||
                           (first == QStringLiteral("SET") && second == QStringLiteral("STATEMENT")) ||
                           (first == QStringLiteral("EXPLAIN") && second == QStringLiteral("ANALYZE"));
        for (size_t at = 1; wraps && at < words_.size(); ++at)
            if (words_[at].depth == words_[0].depth &&
                isOneOf(words_[at].text, {"SELECT", "INSERT", "UPDATE", "DELETE", "REPLACE", "VALUES", "TRUNCATE",
                                          "DROP", "ALTER", "CREATE"}))
                return at;
        return 0;
    }

    bool follows(std::initializer_list<const char*> wanted) const {
        for (size_t at = verb_ + 1; at < words_.size(); ++at)
            if (words_[at].depth == words_[verb_].depth && isOneOf(words_[at].text, wanted)) return true;
        return false;
    }

    const std::vector<Word>& words_;
    const size_t verb_;
};

class Splitter {
 public:
    Splitter(const QString& text, DatabaseKind kind) : text_(text), onServer_(kind == DatabaseKind::MySql) {}

    std::vector<SqlStatement> all() {
        while (at_ < text_.size()) {
            if (isDelimiter()) {
                end();
            } else if (!skipComment() && !skipQuoted()) {
                takeCharacter();
            }
        }
        end();
        return std::move(statements_);
    }

 private:
    bool isAt(const QString& piece, qsizetype at) const { return QStringView(text_).mid(at).startsWith(piece); }
    bool isDelimiter() const { return isAt(delimiter_, at_) && (blocks_ == 0 || delimiter_ != QStringLiteral(";")); }
    static bool isOfWord(QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'@' || c == u'$' || c == u':'; }

    void end() {
        if (!words_.empty() || anyQuoted_) {
            const Judge judge(words_);
            statements_.push_back(
                {text_.mid(begin_, at_ - begin_).trimmed(), judge.verb(), judge.danger(), judge.selects()});
        }
        at_ = qMin(at_ + delimiter_.size(), text_.size());
        begin_ = at_;
        words_.clear();
        anyQuoted_ = inExecuted_ = afterEnd_ = false;
        depth_ = blocks_ = 0;
    }

    bool skipComment() {
        const auto to = [this](const QString& close) {
            const qsizetype found = text_.indexOf(close, at_);
            at_ = found < 0 ? text_.size() : found + close.size();
            return true;
        };
        const QChar afterDashes = at_ + 2 < text_.size() ? text_[at_ + 2] : QChar(u' ');
        // A server takes two dashes without a blank for two signs.
        if (isAt(QStringLiteral("--"), at_) && (!onServer_ || afterDashes.isSpace() || afterDashes < u' '))
            return to(QStringLiteral("\n"));
        if (onServer_ && text_[at_] == u'#') return to(QStringLiteral("\n"));
        if (inExecuted_ && isAt(QStringLiteral("*/"), at_)) {
            inExecuted_ = false;
            at_ += 2;
            return true;
        }
        if (!isAt(QStringLiteral("/*"), at_)) return false;
        // What stands in this comment, the server runs.
        const qsizetype mark = isAt(QStringLiteral("M!"), at_ + 2) ? 4 : isAt(QStringLiteral("!"), at_ + 2) ? 3 : 0;
        if (!onServer_ || mark == 0) {
            at_ += 2;
            return to(QStringLiteral("*/"));
        }
        inExecuted_ = true;
        for (at_ += mark; at_ < text_.size() && text_[at_].isDigit();) ++at_;
        return true;
    }

    bool skipQuoted() {
        QChar close = text_[at_];
        if (close == u'[' && !onServer_) close = u']';
        if (close != u'\'' && close != u'"' && close != u'`' && close != u']') return false;
        const bool escapes = onServer_ && (close == u'\'' || close == u'"');
        anyQuoted_ = true;
        // A quote that is written twice ends one text and begins another, which comes to the same.
        for (++at_; at_ < text_.size() && text_[at_] != close; ++at_)
            if (escapes && text_[at_] == u'\\') ++at_;
        at_ = qMin(at_ + 1, text_.size());
        return true;
    }

    void takeCharacter() {
        const QChar c = text_[at_];
        if (!isOfWord(c)) {
            depth_ += c == u'(' ? 1 : c == u')' ? -1 : 0;
            if (c == u';') afterEnd_ = false;
            ++at_;
            return;
        }
        const qsizetype start = at_;
        while (at_ < text_.size() && isOfWord(text_[at_]) && (at_ == start || !isDelimiter())) ++at_;
        const QString word = text_.mid(start, at_ - start).toUpper();
        if (words_.empty() && !anyQuoted_ && word == QStringLiteral("DELIMITER")) return readDelimiter();
        // A name behind a dot is a column or a table, whatever it is called.
        if (start > begin_ && text_[start - 1] == u'.') return;
        words_.push_back({word, depth_});
        countBlocks(word);
    }

    void readDelimiter() {
        const qsizetype lineEnd = text_.indexOf(u'\n', at_);
        const QString rest = text_.mid(at_, lineEnd < 0 ? -1 : lineEnd - at_).simplified().section(u' ', 0, 0);
        if (!rest.isEmpty()) delimiter_ = rest;
        at_ = lineEnd < 0 ? text_.size() : lineEnd + 1;
        begin_ = at_;
    }

    /// Of a trigger or routine, whose statements end in semicolons of their own.
    void countBlocks(const QString& word) {
        const bool closes = word == QStringLiteral("END");
        // END IF and the like: what they end was not counted.
        const bool wasNone = afterEnd_ && isOneOf(word, {"IF", "LOOP", "WHILE", "REPEAT", "FOR"});
        const bool opens = word == QStringLiteral("BEGIN") || (word == QStringLiteral("CASE") && !afterEnd_);
        if (closes) --blocks_;
        if (wasNone || (opens && Judge::definesRoutine(words_))) ++blocks_;
        blocks_ = qMax(0, blocks_);
        afterEnd_ = closes;
    }

    const QString& text_;
    const bool onServer_;
    qsizetype at_ = 0, begin_ = 0;  // begin_: of the statement
    QString delimiter_ = QStringLiteral(";");
    std::vector<Word> words_;
    int depth_ = 0;
    int blocks_ = 0;
    bool anyQuoted_ = false;   // in this statement
    bool inExecuted_ = false;  // inside a comment that the server runs
    bool afterEnd_ = false;    // the last word was END
    std::vector<SqlStatement> statements_;
};

}  // namespace

std::vector<SqlStatement> sqlStatements(const QString& text, DatabaseKind kind) {
    return Splitter(text, kind).all();
}

}  // namespace kibo
