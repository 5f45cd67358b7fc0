#pragma once

#include <QString>
#include <optional>

#include "base/settings.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// What the control panel of several instances may set for each of them, in its row of `web_user`.
class ProfileSettings {
 public:
    /// All must outlive the object.
    ProfileSettings(GatewayState& state, Settings& settings, Database& database)
        : state_(state), settings_(settings), database_(database) {}

    /// Takes `DisableRead`, `InboxRead`, where the table has such a column, and the dummy contact's number over from
    /// the profile's row; a row without a number, or no row, means the `DummyContact` of the settings. The number goes
    /// into the window when it has changed, so what the operator types there stands until then. Does nothing with a
    /// single session or a local store, and while the database doesn't answer.
    void BACA_PROFIL();

 private:
    GatewayState& state_;
    Settings& settings_;
    Database& database_;
    std::optional<QString> number_;  // taken over last
};

}  // namespace kibo
