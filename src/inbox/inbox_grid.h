#pragma once

#include <QStringList>
#include <memory>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// Fills the inbox grid `ms`: from the database, and with each message that is stored.
class InboxGrid {
 public:
    /// All must outlive the object.
    InboxGrid(GatewayState& state, const Settings& settings, Database& database, Clock& clock);

    /// Loads the grid anew, in the order that the check box asks for.
    void cmd_InboxRefresh_Click();
    /// A message was stored: its line.
    void append(const QStringList& line);
    /// Loads the grid anew when it was loaded a while ago, since other programs set a message's status, and
    /// when the store has ended the rows that it shows.
    void keepFresh();

 private:
    class Rows;
    static constexpr qint64 kFreshMs = 60'000;

    bool multi() const { return isYes(settings_.Multi); }
    void countNew();

    GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    Clock& clock_;
    std::shared_ptr<Rows> rows_;
    int new_ = 0;  // messages without a status
    qint64 loadedAtMs_ = -kFreshMs;
    quint64 endedAtLoad_ = 0;  // the store's count of ended rows then
};

}  // namespace kibo
