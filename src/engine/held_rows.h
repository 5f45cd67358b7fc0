#pragma once

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// Loads the rows of the queue that are held (`wa_mode` 3) into `state.held`, where an operator sees them. They are not
/// in `ms_out`: nothing there is ever sent.
class HeldRows {
 public:
    /// All must outlive the object.
    HeldRows(GatewayState& state, const Settings& settings, Database& database, const Clock& clock)
        : state_(state), settings_(settings), database_(database), clock_(clock) {}

    /// Loads them anew when they may have changed. Call it as often as you like: a store that needs long is asked less
    /// often.
    void look();
    /// The same, at once.
    void lookNow() {
        lookAgainMs_ = 0;
        look();
    }

 private:
    GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    const Clock& clock_;
    QString loadedMark_;  // the store's change mark when they were loaded; empty: not known
    qint64 lookAgainMs_ = 0;
};

}  // namespace kibo
