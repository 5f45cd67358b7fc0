#pragma once

#include <QByteArray>

#include "browser/webdriver/command.h"
#include "platform/result.h"

namespace kibo::webdriver {

/// The answer to a request, whatever its status says.
struct HttpAnswer {
    int status = 0;
    QByteArray body;
    qint64 durationUs = 0;  ///< from the call to the last byte
};

/// Carries requests to the driver. A request that may have had an effect (all but GET) is never sent twice: when its
/// fate is unknown the call fails.
class Transport {
 public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    virtual ~Transport() = default;

    /// Blocks for at most `timeoutMs`. `path` is percent-encoded and starts with "/"; `body` (JSON) goes with POST
    /// only. Fails with FailureKind::Transport; `code` is kTimeoutCode when the time ran out.
    virtual Result<HttpAnswer> send(Method method, const QByteArray& path, const QByteArray& body, int timeoutMs) = 0;
};

}  // namespace kibo::webdriver
