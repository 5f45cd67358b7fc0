#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <mutex>
#include <stdexcept>
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

    explicit RawServer(Handler handler) : handler_(std::move(handler)), listener_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 8) != 0 ||
            ::getsockname(listener_, generic, &size) != 0)
            throw std::runtime_error("no loopback port");
        port_ = ntohs(address.sin_port);
        acceptor_ = std::thread([this] {
            for (int socket = 0; (socket = ::accept(listener_, nullptr, nullptr)) >= 0;) {
                const std::lock_guard lock(mutex_);
                sockets_.push_back(socket);
                workers_.emplace_back([this, socket] { serve(socket); });
            }
        });
    }
    ~RawServer() {
        ::shutdown(listener_, SHUT_RDWR);
        acceptor_.join();
        for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
        for (std::thread& worker : workers_) worker.join();
        for (const int socket : sockets_) ::close(socket);
        ::close(listener_);
    }
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_); }
    /// The complete requests, header and body, in the order of their arrival.
    std::vector<std::string> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }
    std::size_t connections() const {
        const std::lock_guard lock(mutex_);
        return sockets_.size();
    }

    /// A conforming answer with `json` as its body.
    static std::string answer(const std::string& json, int status = 200) {
        return "HTTP/1.1 " + std::to_string(status) +
               " X\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(json.size()) + "\r\n\r\n" +
               json;
    }

 private:
    /// Reads one request; empty when the client has closed the connection.
    static std::string readRequest(int connection) {
        std::string request;
        for (char buffer[4096];;) {
            if (const std::size_t end = request.find("\r\n\r\n"); end != std::string::npos) {
                const std::size_t field = request.find("Content-Length: ");
                const std::size_t length = field < end ? std::stoul(request.substr(field + 16)) : 0;
                if (request.size() >= end + 4 + length) return request;
            }
            const ssize_t got = ::recv(connection, buffer, sizeof buffer, 0);
            if (got <= 0) return {};
            request.append(buffer, static_cast<std::size_t>(got));
        }
    }
    void serve(int connection) {
        for (std::string request; !(request = readRequest(connection)).empty();) {
            std::unique_lock lock(mutex_);
            const int number = static_cast<int>(requests_.size());
            requests_.push_back(std::move(request));
            lock.unlock();
            const Reply reply = handler_(number);
            ::send(connection, reply.bytes.data(), reply.bytes.size(), MSG_NOSIGNAL);
            if (reply.then == Reply::Then::Close) break;
        }
        ::shutdown(connection, SHUT_RDWR);
    }

    const Handler handler_;
    const int listener_;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::vector<int> sockets_;
    std::vector<std::thread> workers_;
    std::thread acceptor_;
};

}  // namespace kibo::test
