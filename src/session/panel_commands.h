#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "session/instance_rows.h"

namespace kibo {

/// What the control panel asks of this instance through the table `tmp`, and the status that it reads there: the
/// database's part of the coordination tick, `Timer1`. A message in hand, or a pass over the inbox, is waited for; one
/// that takes longer than kPatienceMs loses its browser, and then goes the way of every message that has lost it.
class PanelCommands {
 public:
    struct Needs {
        GatewayState& state;
        const Settings& settings;
        const Clock& clock;
        InstanceRows& rows;
        std::function<void()> closeBrowser;
        std::function<void()> openFreshSession;  ///< ends the session, if there is one, and opens another
        std::function<void()> endProgram;
    };
    /// What it is given must outlive it.
    explicit PanelCommands(Needs needs) : n_(std::move(needs)) {}

    /// One statement reads what is asked for and told, one writes a status that has changed. A database that doesn't
    /// answer, or refuses one of them, leaves the rest to the next tick.
    void tick();

    static constexpr qint64 kPatienceMs = 30'000;
    /// A session this young is fresh enough for whoever asks again.
    static constexpr qint64 kFreshMs = 10'000;

 private:
    enum class Command { None, Restart, Off };

    void notice(const InstanceRows::Commands& asked);
    void begin(Command command);
    void obey();
    void restart();
    bool multi() const { return isYes(n_.settings.Multi); }
    const QString& profile() const { return n_.state.cb_Profil.text; }

    Needs n_;
    Command pending_ = Command::None;
    qint64 pendingSinceMs_ = 0;
    bool browserClosed_ = false;           // because the message in hand took too long
    bool rowStays_ = false;                // the row of an obeyed restart can't be deleted
    std::optional<qint64> restartedAtMs_;  // last
};

}  // namespace kibo
