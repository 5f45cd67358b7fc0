#pragma once

#include "bench/browser_page.h"
#include "engine/gateway.h"
#include "store/database.h"

namespace kibo::bench {

/// The engine on the stand-in's page in the real browser, with a store and a journal of its own, without window and
/// timers.
class SendingGateway {
 public:
    /// `clock` must outlive the gateway. Throws std::runtime_error when something can't be started.
    explicit SendingGateway(Clock& clock);

    void queue(const QString& number, const QString& text);
    quint64 commandsSent() { return chat.browser.client().commandsSent(); }

    BrowserPage chat;
    GatewayState state;

 private:
    ErrorPolicy policy_;
    Database database_;
    SendJournal journal_;

 public:
    Gateway gateway;
};

}  // namespace kibo::bench
