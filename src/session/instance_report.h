#pragma once

#include <QString>
#include <functional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// This instance's row in `kibo_instance`, by which whoever watches many of them knows how it does: written every five
/// seconds, and sooner when something has changed. Without the table everything else works; the log says so once.
class InstanceReport {
 public:
    struct Needs {
        const GatewayState& state;
        const Settings& settings;
        Database& database;
        const Clock& clock;
        std::function<qint64()> browserAgeMs;   ///< 0: none is open
        std::function<quint64()> browserBytes;  ///< asked once a minute, since that takes a while; 0: not known
    };
    /// What it is given must outlive it.
    explicit InstanceReport(Needs needs);

    /// Removes what an instance of this profile left on this computer that was ended without its leave.
    void begin();
    /// Writes what is to be told. Call it every second.
    void tick();
    /// Removes the row: the instance goes.
    void withdraw();

    static constexpr qint64 kEveryMs = 5'000;

 private:
    Database::Values told();
    void write(const Database::Values& row);
    Database::Values key() const;
    bool attempt(const QString& sql, const Database::Values& values, qint64* rows = nullptr);

    Needs n_;
    const QString host_;
    const QDateTime started_;
    Database::Values written_;
    QString profile_;  // of the row; empty: there is none yet
    qint64 writtenAtMs_ = 0, measuredAtMs_ = 0, triedAtMs_ = 0;
    QDateTime browserSince_;
    double megabytes_ = 0;
    bool refused_ = false;
};

}  // namespace kibo
