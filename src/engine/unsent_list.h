#pragma once

#include <QStringList>
#include <optional>
#include <vector>

#include "base/clock.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "store/database.h"

namespace kibo {

/// The list of failed messages, `ms2`: those of this run, and before them what `kibo_message` tells of the last days,
/// so that a restart loses none. A line leaves for good when an operator has dealt with it, which that table keeps. An
/// id has one line, of its last failure.
class UnsentList {
 public:
    using Ids = std::vector<qint64>;

    /// All must outlive the object.
    UnsentList(GatewayState& state, const Settings& settings, Database& database, const Clock& clock)
        : state_(state), settings_(settings), database_(database), clock_(clock) {}

    void add(const QString& number, const QString& text, const QString& reason, const QString& id);
    /// Adds what failed before this run, once, as soon as the store can tell. Call it as often as you like.
    void fill();
    /// The operator has dealt with these messages. Where the store can't note it, they come back with the next start.
    void handled(const Ids& ids);
    /// The same for those of them that are listed.
    void queuedAgain(const Ids& ids);
    /// The same for all that are listed.
    void allHandled();

    static constexpr int kMostLines = 500;
    static constexpr int kDays = 7;

 private:
    bool multi() const { return isYes(settings_.Multi); }
    QString whose() const { return multi() ? QStringLiteral("multi/") + state_.cb_Profil.text : QString(); }
    void show();

    GatewayState& state_;
    const Settings& settings_;
    Database& database_;
    const Clock& clock_;
    std::vector<QStringList> lines_;  // cells in the order of UnsentColumn
    std::optional<QString> filledFor_;
    qint64 fillAgainMs_ = 0;
};

}  // namespace kibo
