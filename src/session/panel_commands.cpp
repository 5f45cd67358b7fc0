#include "session/panel_commands.h"

#include "base/log.h"

namespace kibo {

void PanelCommands::tick() {
    const auto asked = n_.rows.commands(profile(), multi());
    if (asked) notice(*asked);
    if (pending_ != Command::None) obey();
    if (asked && !n_.clock.waitingStopped()) n_.rows.report(profile(), n_.state.status.caption, asked->status);
}

void PanelCommands::notice(const InstanceRows::Commands& asked) {
    if (!asked.restart) rowStays_ = false;
    if (asked.off) {
        begin(Command::Off);
    } else if (asked.restart && !rowStays_) {
        begin(Command::Restart);
    }
}

void PanelCommands::begin(Command command) {
    if (pending_ == command || pending_ == Command::Off) return;
    pending_ = command;
    pendingSinceMs_ = n_.clock.monotonicMs();
    browserClosed_ = false;
    log::info("session", command == Command::Off ? QStringLiteral("the control panel switches this instance off")
                                                 : QStringLiteral("the control panel asks for a fresh session"));
    if (command == Command::Restart) return;
    // No further message is begun; the one in hand goes on to its end.
    n_.state.Timer_KIBO.setEnabled(false);
    n_.state.Timer_cekURL.setEnabled(false);
}

void PanelCommands::obey() {
    if (n_.state.atWork()) {
        if (n_.clock.monotonicMs() - pendingSinceMs_ < kPatienceMs) return;
        if (pending_ == Command::Restart) {
            // Opened only when all that works on the old page has found it gone: nothing then goes on on the new one.
            if (!browserClosed_) n_.closeBrowser();
            browserClosed_ = true;
            return;
        }
    }
    const Command command = pending_;
    pending_ = Command::None;
    if (command == Command::Restart) {
        restart();
        return;
    }
    n_.endProgram();  // which removes the rows
}

void PanelCommands::restart() {
    const qint64 now = n_.clock.monotonicMs();
    if (restartedAtMs_ && now - *restartedAtMs_ < kFreshMs) {
        log::info("session",
                  QStringLiteral("the session is %1 s old, which is fresh").arg((now - *restartedAtMs_) / 1000));
    } else {
        restartedAtMs_ = now;  // also where opening it surfaces an error: it isn't tried every second
        n_.openFreshSession();
        restartedAtMs_ = n_.clock.monotonicMs();
    }
    rowStays_ = !n_.rows.restartObeyed(profile(), multi());
    if (rowStays_) log::warning("session", QStringLiteral("the row that asks for a restart can't be deleted"));
}

}  // namespace kibo
