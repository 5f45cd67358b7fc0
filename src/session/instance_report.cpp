#include "session/instance_report.h"

#include <QSysInfo>
#include <cstdlib>

#include "base/log.h"
#include "engine/hindrances.h"
#include "platform/process.h"

namespace kibo {
namespace {

// The time of the store, since that of thirty computers differs.
const QString kServerTime = QStringLiteral("now()");
const QString kUpdate = QStringLiteral(
    "update kibo_instance set version = ?, started = ?, status = ?, step = ?, paused = ?, break_until = ?, held = ?, "
    "held_why = ?, waiting = ?, done_about = ?, sent = ?, failed = ?, last_failure = ?, browser_since = ?, "
    "browser_mb = ?, page_changed = ?, received_today = ?, number = ?, beats = beats + 1, beat = %1 where profil = ? "
    "and host = ? "
    "and process = ?");
const QString kInsert = QStringLiteral(
    "insert into kibo_instance (version, started, status, step, paused, break_until, held, held_why, waiting, "
    "done_about, sent, failed, last_failure, browser_since, browser_mb, page_changed, received_today, number, beat, "
    "profil, host, process) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, %1, ?, ?, ?)");
const QString kRemove = QStringLiteral("delete from kibo_instance where profil = ? and host = ? and process = ?");
const QString kHere = QStringLiteral("select process from kibo_instance where profil = ? and host = ?");

constexpr qint64 kMeasureMs = 60'000;
constexpr qint64 kTryAgainMs = 60'000;
constexpr int kCharacters = 255;

QString cut(const QString& text) {
    return text.isNull() ? QStringLiteral("") : text.left(kCharacters);
}

}  // namespace

InstanceReport::InstanceReport(Needs needs)
    : n_(std::move(needs)), host_(QSysInfo::machineHostName()), started_(n_.clock.now()) {}

Database::Values InstanceReport::key() const {
    return {profile_, host_, QVariant::fromValue<qint64>(platform::ownProcessId())};
}

void InstanceReport::begin() {
    const QString profile = n_.state.cb_Profil.text;
    if (!n_.database.isOpen() || !attempt(QStringLiteral("select beats from kibo_instance where 1=0"), {})) return;
    for (Recordset here = n_.database.OpenRecordset(kHere, {profile, host_}); !here.eof(); here.moveNext()) {
        const qint64 process = here.field(0).toLongLong();
        const std::string program = platform::executablePath(process);
        if (program.empty() || process == platform::ownProcessId()) attempt(kRemove, {profile, host_, process});
    }
}

void InstanceReport::tick() {
    const qint64 now = n_.clock.monotonicMs();
    if (!n_.database.isOpen() || (refused_ && now - triedAtMs_ < kTryAgainMs)) return;
    if (profile_ != n_.state.cb_Profil.text) {  // another one was chosen
        withdraw();
        profile_ = n_.state.cb_Profil.text;
    }
    const Database::Values row = told();
    if (row == written_ && now - writtenAtMs_ < kEveryMs) return;
    triedAtMs_ = now;
    write(row);
}

void InstanceReport::withdraw() {
    if (!written_.isEmpty() && n_.database.isOpen()) attempt(kRemove, key());
    written_.clear();
}

/// The columns in the order of the statements.
Database::Values InstanceReport::told() {
    const GatewayState& s = n_.state;
    const QDateTime now = n_.clock.now();
    const qint64 ageMs = n_.browserAgeMs();
    // Two clocks give a time that moves by a second now and then, which is no news.
    const QDateTime since = now.addMSecs(-ageMs);
    if (!browserSince_.isValid() || std::abs(browserSince_.msecsTo(since)) > 2'000) browserSince_ = since;
    if (ageMs == 0) {
        megabytes_ = 0;
    } else if (megabytes_ == 0 || n_.clock.monotonicMs() - measuredAtMs_ >= kMeasureMs) {
        measuredAtMs_ = n_.clock.monotonicMs();
        const quint64 megabytes = n_.browserBytes() / 1'000'000;
        megabytes_ = static_cast<double>(megabytes);
    }
    QDateTime breakUntil;
    if (s.BreakTime.enabled())
        breakUntil = now.addSecs(static_cast<qint64>(n_.settings.Break.toDouble() - s.DetikBreak.text.toDouble()));
    const auto hindering = hindrances(s, n_.settings);
    const int failed = s.ms2.rowCount() - 1;
    return {QString::fromLatin1(KIBO_VERSION),
            storedTime(started_),
            s.status.caption,
            cut(s.step),
            s.pausedByOperator() ? 1 : 0,
            storedTime(breakUntil),
            hindering.empty() ? 0 : 1,
            hindering.empty() ? QStringLiteral("") : cut(hindering.front().text),
            s.Outbox_Cnt.caption.toLongLong(),
            cut(s.doneAbout),
            s.sentCount,
            s.failedCount,
            failed > 0 ? cut(s.ms2.text(failed, UnsentColumn::Reason)) : QStringLiteral(""),
            ageMs > 0 ? storedTime(browserSince_) : QVariant(),
            megabytes_,
            cut(s.pageChanged.isEmpty() ? s.readingChanged : s.pageChanged),
            s.received.on == now.date() ? s.received.count : 0,
            cut(s.ownNumber)};
}

void InstanceReport::write(const Database::Values& row) {
    const bool server = n_.database.kind() == DatabaseKind::MySql;
    const QString beat = server ? kServerTime : QStringLiteral("?");
    const Database::Values values =
        row + (server ? Database::Values() : Database::Values{storedTime(n_.clock.now())}) + key();
    qint64 updated = 0;
    if (!attempt(kUpdate.arg(beat), values, &updated)) return;
    // A row that somebody deleted comes back.
    if (updated == 0 && !attempt(kInsert.arg(beat), values)) return;
    written_ = row;
    writtenAtMs_ = n_.clock.monotonicMs();
}

bool InstanceReport::attempt(const QString& sql, const Database::Values& values, qint64* rows) {
    const Result<qint64> done = n_.database.attempt(sql, values);
    if (!done && !refused_ && done.failure().kind != FailureKind::ConnectionLost)
        log::warning("session", QStringLiteral("how this instance does is not told in kibo_instance: %1")
                                    .arg(QString::fromStdString(done.failure().text)));
    refused_ = !done;
    if (done && rows) *rows = done.value();
    return done.ok();
}

}  // namespace kibo
