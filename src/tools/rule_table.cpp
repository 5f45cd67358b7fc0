#include "tools/rule_table.h"

#include <QHash>

#include "store/row_reader.h"
#include "store/transaction.h"

namespace kibo {
namespace {

const QString kList = QStringLiteral(
    "select * from autochat where profil = ? and (keyword like ? or answer like ?) order by tipe desc, previd, rowid");
const QString kAll = QStringLiteral("select * from autochat order by rowid");
const QString kOne = QStringLiteral("select * from autochat where rowid = ?");
const QString kDelete = QStringLiteral("delete from autochat where rowid = ?");
const QString kDemoteWelcome = QStringLiteral("update autochat set tipe=0 where tipe=1");
const QString kDemoteNotFound = QStringLiteral("update autochat set tipe=0 where tipe=2");
const QString kInsert = QStringLiteral(
    "insert into autochat (PROFIL, keyword, previd, logic, answer, wa_media, wa_file, run_exe, exec_php, respon, "
    "neednext, tipe) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
const QString kUpdate = QStringLiteral(
    "update autochat set PROFIL = ?, keyword = ?, previd = ?, logic = ?, answer = ?, wa_media = ?, wa_file = ?, "
    "run_exe = ?, exec_php = ?, respon = ?, neednext = ?, tipe = ? where rowid = ?");
const QString kSetPrevious = QStringLiteral("update autochat set previd = ? where rowid = ?");
constexpr int kStopLooks = 16;

RuleKind kindOf(qint64 tipe) {
    return tipe >= 0 && tipe <= 4 ? static_cast<RuleKind>(tipe) : RuleKind::Text;
}

/// Empty instead of NULL, which an older row may hold.
QString stored(const QString& text) {
    return text.isNull() ? QStringLiteral("") : text;
}

/// Everything that makes a rule what it is, wherever it stands.
QStringList contentOf(const Rule& rule) {
    return {rule.profile,
            rule.keyword,
            rule.previous,
            rule.logic,
            rule.answer,
            rule.media,
            rule.file,
            rule.program,
            rule.script,
            QString::number(2 * int{rule.answersByScript} + int{rule.expectsNext}),
            QString::number(static_cast<int>(rule.kind))};
}

bool isAlone(RuleKind kind) {
    return kind == RuleKind::Welcome || kind == RuleKind::NotFound;
}

}  // namespace

QString storableRuleText(QString text) {
    return text.replace(u'\'', u'`');
}

std::vector<Rule> copiedRules(std::vector<Rule> rules, const QString& profile) {
    for (Rule& rule : rules) {
        rule.profile = profile;
        if (isAlone(rule.kind)) rule.kind = RuleKind::Text;
    }
    return rules;
}

Result<std::vector<Rule>> RuleTable::read(const QString& sql, const Database::Values& values) {
    std::vector<Rule> rules;
    const Result<void> read = database_.readThrough(sql, values, [&rules](const RowReader& row) {
        const auto text = [&row](const char* name) { return stored(row.text(row.columnOf(QLatin1String(name)))); };
        const auto number = [&row](const char* name) { return row.number(row.columnOf(QLatin1String(name))); };
        rules.push_back({.id = number("rowid"),
                         .profile = text("PROFIL"),
                         .keyword = text("keyword"),
                         .previous = text("previd"),
                         .logic = text("logic"),
                         .answer = text("answer"),
                         .media = text("wa_media"),
                         .file = text("wa_file"),
                         .program = text("run_exe"),
                         .script = text("exec_php"),
                         .answersByScript = number("respon") != 0,
                         .expectsNext = number("neednext") != 0,
                         .kind = kindOf(number("tipe"))});
        return true;
    });
    return read ? Result(std::move(rules)) : read.failure();
}

/// A quote of the search finds what it was stored as, and one that another program has stored.
Result<std::vector<Rule>> RuleTable::list(const QString& profile, const QString& search) {
    const QString pattern = u'%' + QString(search).replace(u'\'', u'_') + u'%';
    return read(kList, {profile, pattern, pattern});
}

Result<std::vector<Rule>> RuleTable::all() {
    return read(kAll, {});
}

Result<std::optional<Rule>> RuleTable::find(qint64 id) {
    const Result<std::vector<Rule>> found = read(kOne, {id});
    if (!found) return found.failure();
    return found.value().empty() ? std::nullopt : std::optional(found.value().front());
}

Result<void> RuleTable::claimKind(RuleKind kind) {
    if (!isAlone(kind)) return {};
    const Result<qint64> demoted = database_.attempt(kind == RuleKind::Welcome ? kDemoteWelcome : kDemoteNotFound);
    return demoted ? Result<void>() : demoted.failure();
}

Result<void> RuleTable::write(const Rule& rule, bool isThere) {
    Database::Values values;
    for (const QString& text : {rule.profile, rule.keyword, rule.previous, rule.logic, rule.answer, rule.media,
                                rule.file, rule.program, rule.script})
        values.append(stored(text));
    values << int{rule.answersByScript} << int{rule.expectsNext} << static_cast<int>(rule.kind);
    if (isThere) values.append(rule.id);
    const Result<qint64> written = database_.attempt(isThere ? kUpdate : kInsert, values);
    return written ? Result<void>() : written.failure();
}

Result<qint64> RuleTable::save(const Rule& rule) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    if (const Result<void> claimed = claimKind(rule.kind); !claimed) return claimed.failure();
    const Result<std::optional<Rule>> found = find(rule.id);
    if (!found) return found.failure();
    const bool isThere = found.value().has_value();
    if (const Result<void> written = write(rule, isThere); !written) return written.failure();
    const qint64 id = isThere ? rule.id : database_.lastInsertId();
    if (const Result<void> committed = transaction.value().commit(); !committed) return committed.failure();
    return id;
}

Result<void> RuleTable::remove(qint64 id) {
    const Result<qint64> deleted = database_.attempt(kDelete, {id});
    return deleted ? Result<void>() : deleted.failure();
}

/// Rules before those that follow them, so that these can name them. A loop has no first one: there a rule is stored
/// before the one that it follows, and named to it afterwards.
Result<RuleTable::Added> RuleTable::add(const std::vector<Rule>& rules, const std::stop_token& stop) {
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    const Result<std::vector<Rule>> before = all();
    if (!before) return before.failure();
    QHash<QStringList, qint64> there;
    for (const Rule& rule : before.value()) there.insert(contentOf(rule), rule.id);

    QHash<QString, size_t> places;
    for (size_t i = 0; i < rules.size(); ++i)
        if (rules[i].id > 0) places.insert(QString::number(rules[i].id), i);
    enum State { Waiting, Begun, Done };
    std::vector<State> states(rules.size(), Waiting);
    std::vector<qint64> ids(rules.size(), 0);
    std::vector<size_t> closesLoop;
    Added outcome;
    const auto store = [&](size_t place, bool ofLoop) -> Result<void> {
        Rule rule = rules[place];
        const auto previous = places.constFind(rule.previous.trimmed());
        if (previous != places.cend()) rule.previous = ofLoop ? QString() : QString::number(ids[*previous]);
        const auto same = there.constFind(contentOf(rule));
        if (!ofLoop && same != there.cend()) {
            ids[place] = *same;
            ++outcome.there;
            return {};
        }
        if (const Result<void> claimed = claimKind(rule.kind); !claimed) return claimed.failure();
        if (const Result<void> written = write(rule, false); !written) return written.failure();
        ids[place] = database_.lastInsertId();
        ++outcome.added;
        if (ofLoop) closesLoop.push_back(place);
        return {};
    };
    int looked = 0;
    for (size_t first = 0; first < rules.size(); ++first) {
        std::vector<size_t> chain;  // from this rule back to one that is stored, or that follows none of them
        bool ofLoop = false;
        for (size_t one = first; states[one] == Waiting;) {
            states[one] = Begun;
            chain.push_back(one);
            const auto previous = places.constFind(rules[one].previous.trimmed());
            if (previous == places.cend()) break;
            one = *previous;
            ofLoop = states[one] == Begun;
        }
        for (auto one = chain.rbegin(); one != chain.rend(); ++one) {
            if (++looked % kStopLooks == 0 && stop.stop_requested()) return Added{.stopped = true};
            const Result<void> kept = store(*one, std::exchange(ofLoop, false));
            if (!kept) return kept.failure();
            states[*one] = Done;
        }
    }
    for (const size_t place : closesLoop) {
        const qint64 previous = ids[*places.constFind(rules[place].previous.trimmed())];
        const Result<qint64> named = database_.attempt(kSetPrevious, {QString::number(previous), ids[place]});
        if (!named) return named.failure();
    }
    if (const Result<void> committed = transaction.value().commit(); !committed) return committed.failure();
    return outcome;
}

}  // namespace kibo
