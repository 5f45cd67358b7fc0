#pragma once

#include <QString>
#include <functional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/confirm_hold.h"
#include "engine/gateway_state.h"
#include "platform/process.h"
#include "store/database.h"

namespace kibo {

/// Who an instance is among those of one profile: the key of its row in `kibo_instance`.
struct InstanceKey {
    QString host;
    platform::ProcessId process = 0;

    static InstanceKey own();
};

/// Which of the instances of one profile works for it, on whatever computers they run: the one whose row in
/// `kibo_instance` says so. A unique key lets only one row say it, on a cluster too, and a row whose instance hasn't
/// told for kLeaseS that it lives can be relieved of it by another one, by the server's clock. The others stand by
/// (`GatewayState::standby`), and one of them takes over when the holder ends or dies.
///
/// On a store without the table, or one that no other computer shares, everybody works.
class ProfileHold {
 public:
    struct Needs {
        GatewayState& state;
        const Settings& settings;
        Database& database;
        const Clock& clock;
        /// May be empty. `tookOver`: since this instance chose the profile, it was somebody's.
        std::function<void(bool tookOver)> gained;
        std::function<void()> switchedOff;  ///< by whoever switched the profile off; may be empty
        InstanceKey key = InstanceKey::own();
    };
    /// What it is given must outlive it. Until the first `tick` nobody is known to have the profile.
    explicit ProfileHold(Needs needs);

    /// Call it every second, after the instance's row was written.
    void tick();
    /// See ConfirmHold. One statement; a hold that is confirmed lasts another kLeaseS from then. An attempt must have
    /// an open record that names it.
    Hold confirm(const QString& id, const QString& attempt);
    /// Tells the instances that stand by to end too, and doesn't wait for it.
    void switchOffOthers();

    /// An instance that died is relieved after it; a standby looks every kLookMs.
    static constexpr int kLeaseS = 10;
    static constexpr qint64 kLookMs = 2'000, kRenewMs = 4'000;

 private:
    enum class Kept { Unknown, Yes, No };

    bool probe();
    void look();
    void claim();
    void renew();
    void gain(const QString& instance);
    void lose();
    bool isRefused(const Failure& failure);
    Database::Values ownRow() const;

    Needs n_;
    const QString name_;  // of this run
    Kept kept_ = Kept::Unknown;
    bool ours_ = false;
    bool first_ = true;  // nobody was seen to have the profile since this instance chose it
    QString profile_;    // that was asked for
    qint64 renewedAtMs_ = 0, lookAgainAtMs_ = 0;
};

}  // namespace kibo
