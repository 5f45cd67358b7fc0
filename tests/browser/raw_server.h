#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kibo::test {

/// An HTTP server on a free loopback port that misbehaves exactly as told: it hands out bytes, silence or a closed
/// connection. Requests are counted when they have arrived completely.
class RawServer {
 public:
    struct Reply {
        std::string bytes;
        enum class Then { KeepOpen, Close } then = Then::KeepOpen;
    };
    /// Called with the number of the request (from 0) on a server thread. Empty bytes with KeepOpen never answer.
    using Handler = std::function<Reply(int number)>;

    explicit RawServer(Handler handler);
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_); }
    /// The complete requests, header and body, in the order of their arrival.
    std::vector<std::string> requests() const;
    int connections() const;

    /// A conforming answer with `json` as its body.
    static std::string answer(const std::string& json, int status = 200);

 private:
    void acceptConnections();
    void serve(int connection);

    Handler handler_;
    int listener_ = -1;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::vector<int> sockets_;
    std::vector<std::thread> workers_;
    std::thread acceptor_;
};

}  // namespace kibo::test
