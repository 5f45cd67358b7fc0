#pragma once

#include <memory>

#include "browser/webdriver/transport.h"

namespace kibo::webdriver {

/// HTTP over libcurl: one handle, one kept-alive connection, no proxy, no redirects. Single-threaded.
class CurlTransport : public Transport {
 public:
    /// `address` is the driver's http(s) address, with a base path where it has one ("http://grid:4444/wd/hub").
    explicit CurlTransport(const QByteArray& address);
    ~CurlTransport() override;

    Result<HttpAnswer> send(Method method, const QByteArray& path, const QByteArray& body, int timeoutMs) override;

 private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
    QByteArray address_;
};

}  // namespace kibo::webdriver
