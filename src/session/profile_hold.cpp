#include "session/profile_hold.h"

#include <QSysInfo>
#include <QUuid>
#include <utility>

#include "base/log.h"

namespace kibo {
namespace {

const QString kMine = QStringLiteral(" where profil = ? and host = ? and process = ?");
const QString kBeat = QStringLiteral("beat = now(), beats = beats + 1");
const QString kRenew = QStringLiteral("update kibo_instance set ") + kBeat + kMine + QStringLiteral(" and holds = 1");
const QString kRelieve = QStringLiteral(
                             "update kibo_instance set holds = null where profil = ? and holds = 1 and "
                             "(beat is null or beat < now() - interval %1 second)")
                             .arg(ProfileHold::kLeaseS);
const QString kClaim = QStringLiteral("update kibo_instance set holds = 1, held_since = now(), ") + kBeat + kMine;
// One statement, so that there is no moment between the two in which the process could be stopped.
const QString kConfirm = QStringLiteral(
    "update kibo_instance i join kibo_message m on m.profil = i.profil and m.outbox_id = ? and "
    "m.taken_by = ? and m.ended is null set i.beat = now(), i.beats = i.beats + 1, "
    "m.typed = ? where i.profil = ? and i.host = ? and i.process = ? and i.holds = 1");
const QString kLook =
    QStringLiteral(
        "select host, process, holds, held_since, switched_off, "
        "case when beat > now() - interval %1 second then 1 else 0 end as alive from kibo_instance where profil = ?")
        .arg(ProfileHold::kLeaseS);
// Those of instances that died and were never started again on their computer.
const QString kForget = QStringLiteral("delete from kibo_instance where profil = ? and beat < now() - interval 1 day");
const QString kSwitchOff = QStringLiteral("update kibo_instance set switched_off = 1 where profil = ?");

constexpr qint64 kTryAgainMs = 60'000;
constexpr int kHostCharacters = 60;

}  // namespace

InstanceKey InstanceKey::own() {
    return {QSysInfo::machineHostName(), platform::ownProcessId()};
}

ProfileHold::ProfileHold(Needs needs)
    : n_(std::move(needs)),
      name_(QStringLiteral("%1 %2 %3")
                .arg(n_.key.host.left(kHostCharacters))
                .arg(n_.key.process)
                .arg(QUuid::createUuid().toString(QUuid::Id128).left(8))) {
    n_.state.standby = {true, QString()};
}

Database::Values ProfileHold::ownRow() const {
    return {profile_, n_.key.host, QVariant::fromValue<qint64>(n_.key.process)};
}

void ProfileHold::tick() {
    const qint64 now = n_.clock.monotonicMs();
    if (profile_ != n_.state.cb_Profil.text) {  // another one was chosen, and the row of the former is gone
        if (!profile_.isEmpty()) lose();
        profile_ = n_.state.cb_Profil.text;
        kept_ = Kept::Unknown;
        first_ = true;
        lookAgainAtMs_ = 0;
    }
    if (ours_ && kept_ == Kept::Yes) {
        if (now - renewedAtMs_ >= kRenewMs) renew();
        return;
    }
    // A message that was begun before may not find the hold regained.
    if (n_.state.atWork() || now < lookAgainAtMs_) return;
    lookAgainAtMs_ = now + kLookMs;
    if (kept_ != Kept::Yes && !probe()) return;
    look();
}

/// Whether there is anything to ask.
bool ProfileHold::probe() {
    if (n_.database.kind() != DatabaseKind::MySql) {
        if (!ours_) gain({});
        lookAgainAtMs_ = n_.clock.monotonicMs() + kTryAgainMs;
        return false;
    }
    const Result<qint64> relieved = n_.database.attempt(kRelieve, {profile_});
    if (relieved) {
        if (kept_ == Kept::No) lose();
        kept_ = Kept::Yes;
        return true;
    }
    if (!isRefused(relieved.failure())) return false;
    if (kept_ == Kept::Unknown)
        log::warning("session", QStringLiteral("two instances of one profile can't be told apart: %1")
                                    .arg(QString::fromStdString(relieved.failure().text)));
    kept_ = Kept::No;
    if (!ours_) gain({});
    lookAgainAtMs_ = n_.clock.monotonicMs() + kTryAgainMs;
    return false;
}

void ProfileHold::look() {
    Recordset rows = n_.database.OpenRecordset(kLook, {profile_});
    if (rows.state() == Recordset::State::Closed) {
        kept_ = Kept::Unknown;
        return;
    }
    bool isThere = false, switchedOff = false, claimed = false;
    QString holder;
    for (; !rows.eof(); rows.moveNext()) {
        if (rows.field(0) == n_.key.host && rows.field(1).toLongLong() == n_.key.process) {
            isThere = true;
            switchedOff = rows.field(4).toInt() > 0;
        } else if (rows.field(2).toInt() > 0) {
            claimed = rows.field(5).toInt() > 0;
            if (claimed)
                holder = QStringLiteral("%1 since %2").arg(rows.field(0), rows.field(3).left(16).replace(u'T', u' '));
        }
    }
    if (switchedOff) {
        log::info("session", QStringLiteral("the profile was switched off"));
        if (n_.switchedOff) n_.switchedOff();
        return;
    }
    if (claimed) {
        const QString words = QStringLiteral(
                                  "Standby: profile %1 is held by %2. This instance takes over when that one "
                                  "ends.")
                                  .arg(profile_, holder);
        if (n_.state.standby.caption != words) log::info("session", words);
        n_.state.standby = {true, words};
        first_ = false;
        return;
    }
    if (isThere) claim();
}

void ProfileHold::claim() {
    const auto relieved = n_.database.attempt(kRelieve, {profile_});
    if (!relieved) return;
    const auto claimed = n_.database.attempt(kClaim, ownRow());
    if (claimed && claimed.value() == 1) {
        renewedAtMs_ = n_.clock.monotonicMs();
        gain(name_);
        (void)n_.database.attempt(kForget, {profile_});
    } else {
        lookAgainAtMs_ = 0;  // another one was faster
    }
}

void ProfileHold::renew() {
    const auto renewed = n_.database.attempt(kRenew, ownRow());
    if (renewed && renewed.value() == 1) {
        renewedAtMs_ = n_.clock.monotonicMs();
    } else if (renewed || isRefused(renewed.failure())) {
        lose();
        kept_ = Kept::Unknown;
    }
}

Hold ProfileHold::confirm(const QString& id, const QString& attempt) {
    if (!ours_) return Hold::Lost;
    if (kept_ != Kept::Yes) return Hold::Ours;
    const auto confirmed =
        attempt.isEmpty()
            ? n_.database.attempt(kRenew, ownRow())
            : n_.database.attempt(kConfirm,
                                  Database::Values{id.toLongLong(), attempt, storedTime(n_.clock.now())} + ownRow());
    if (!confirmed) return Hold::Unknown;
    if (confirmed.value() > 0) {
        renewedAtMs_ = n_.clock.monotonicMs();
        return Hold::Ours;
    }
    lose();
    return Hold::Lost;
}

void ProfileHold::switchOffOthers() {
    if (ours_ && kept_ == Kept::Yes) (void)n_.database.attempt(kSwitchOff, {profile_});
}

void ProfileHold::gain(const QString& instance) {
    const bool tookOver = !std::exchange(first_, false);
    ours_ = true;
    n_.state.standby = {};
    n_.state.instance = instance;
    if (tookOver) log::warning("session", QStringLiteral("takes over profile %1").arg(profile_));
    if (n_.gained) n_.gained(tookOver);
}

void ProfileHold::lose() {
    if (ours_ && kept_ == Kept::Yes && profile_ == n_.state.cb_Profil.text)
        log::warning("session", QStringLiteral("profile %1 is held by another instance by now").arg(profile_));
    ours_ = false;
    n_.state.standby = {true, QString()};
    lookAgainAtMs_ = 0;
}

/// By the table's lack or the user's rights; a connection that is lost, or a row that is locked, says nothing.
bool ProfileHold::isRefused(const Failure& failure) {
    // No such table, unknown column, command and column denied (MySQL, MariaDB).
    return failure.code == "1146" || failure.code == "1054" || failure.code == "1142" || failure.code == "1143";
}

}  // namespace kibo
