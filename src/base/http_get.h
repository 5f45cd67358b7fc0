#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

#include "platform/result.h"

namespace kibo {

/// What one GET may take at most.
struct HttpLimits {
    int connectMs = 5'000;
    int wholeMs = 15'000;                   ///< from the call to the last byte of the answer, redirects included
    qsizetype largestAnswer = 1024 * 1024;  ///< bytes
};

/// Fetches an http or https address and gives the answer's body as it came. Follows up to five redirects, and uses the
/// proxy that the environment names. Returns within the limits. `address` must be percent-encoded.
///
/// `goOn` is called several times a second while the answer is waited for, so that events can run; it may be empty.
/// When it says false the request is broken off, with Transport.
///
/// Fails with InvalidArgument for an address that can't be asked, with Transport when there is no answer in time or the
/// connection breaks, with Protocol for an answer that is too large or isn't HTTP, and with Remote for a status other
/// than 2xx, which is then the failure's code ("404"). The failure's text names the host at most: the rest of an
/// address may hold what isn't for the log.
Result<QByteArray> httpGet(const QString& address, const HttpLimits& limits = {},
                           const std::function<bool()>& goOn = {});

}  // namespace kibo
