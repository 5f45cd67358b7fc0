#pragma once

#include <httplib.h>

#include <QString>
#include <thread>

namespace kibo::test {

/// ChromeDriver as a program under Wine needs it: the files that it names stand on drive Z:, which is Debian's root.
class DriverRelay {
 public:
    explicit DriverRelay(int driverPort) {
        const auto relay = [driverPort](const httplib::Request& asked, httplib::Response& answer) {
            httplib::Request passed;
            passed.method = asked.method;
            passed.path = asked.target;
            QString body = QString::fromStdString(asked.body);
            if (body.contains(QStringLiteral("\"Z:\\\\")))
                body.replace(QStringLiteral("\"Z:"), QStringLiteral("\""))
                    .replace(QStringLiteral("\\\\"), QStringLiteral("/"));
            passed.body = body.toStdString();
            passed.set_header("Content-Type", "application/json");
            httplib::Client driver("127.0.0.1", driverPort);
            driver.set_read_timeout(120);
            const httplib::Result said = driver.send(passed);
            answer.status = said ? said->status : 502;
            if (said) answer.set_content(said->body, "application/json");
        };
        server_.Get(".*", relay).Post(".*", relay).Delete(".*", relay);
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
    }
    ~DriverRelay() {
        server_.stop();
        thread_.join();
    }
    DriverRelay(const DriverRelay&) = delete;
    DriverRelay& operator=(const DriverRelay&) = delete;

    QString address() const { return QStringLiteral("http://127.0.0.1:%1").arg(port_); }

 private:
    httplib::Server server_;
    std::thread thread_;
    int port_ = 0;
};

}  // namespace kibo::test
