#include "raw_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace kibo::test {
namespace {

/// Reads one request; empty when the client has closed the connection.
std::string readRequest(int connection) {
    std::string request;
    char buffer[4096];
    for (;;) {
        const std::size_t end = request.find("\r\n\r\n");
        if (end != std::string::npos) {
            const std::size_t field = request.find("Content-Length: ");
            const std::size_t length = field < end ? std::stoul(request.substr(field + 16)) : 0;
            if (request.size() >= end + 4 + length) return request;
        }
        const ssize_t got = ::recv(connection, buffer, sizeof buffer, 0);
        if (got <= 0) return {};
        request.append(buffer, static_cast<std::size_t>(got));
    }
}

}  // namespace

RawServer::RawServer(Handler handler) : handler_(std::move(handler)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 8) != 0 ||
        ::getsockname(listener_, generic, &size) != 0) {
        throw std::runtime_error("no loopback port");
    }
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { acceptConnections(); });
}

RawServer::~RawServer() {
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    {
        const std::lock_guard lock(mutex_);
        for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& worker : workers_) worker.join();
    for (const int socket : sockets_) ::close(socket);
    ::close(listener_);
}

std::vector<std::string> RawServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

int RawServer::connections() const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(sockets_.size());
}

std::string RawServer::answer(const std::string& json, int status) {
    return "HTTP/1.1 " + std::to_string(status) +
           " X\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(json.size()) + "\r\n\r\n" + json;
}

void RawServer::acceptConnections() {
    for (;;) {
        const int connection = ::accept(listener_, nullptr, nullptr);
        if (connection < 0) return;
        const std::lock_guard lock(mutex_);
        sockets_.push_back(connection);
        workers_.emplace_back([this, connection] { serve(connection); });
    }
}

void RawServer::serve(int connection) {
    for (;;) {
        std::string request = readRequest(connection);
        if (request.empty()) return;
        std::unique_lock lock(mutex_);
        const int number = static_cast<int>(requests_.size());
        requests_.push_back(std::move(request));
        lock.unlock();
        const Reply reply = handler_(number);
        ::send(connection, reply.bytes.data(), reply.bytes.size(), MSG_NOSIGNAL);
        if (reply.then == Reply::Then::Close) {
            ::shutdown(connection, SHUT_RDWR);
            return;
        }
    }
}

}  // namespace kibo::test
