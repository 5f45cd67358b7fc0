#include "standin/stand_in.h"

#include <httplib.h>

#include <stdexcept>
#include <thread>

#include "standin/routes.h"
#include "standin/world.h"

namespace kibo::standin {
namespace {

/// A browser keeps up to six connections to a server, and each holds a thread while it is kept alive.
constexpr size_t kThreads = 32;
/// Ends idle connections soon: the destructor waits for them.
constexpr int kKeepAliveSeconds = 1;
constexpr size_t kRequestsPerConnection = 1'000'000;

nlohmann::json parse(const std::string& text) {
    return nlohmann::json::parse(text, nullptr, false);
}

}  // namespace

struct StandIn::Parts {
    World world;
    httplib::Server server;
    int port = 0;
    std::thread listener;
};

StandIn::StandIn(int port) : parts_(std::make_unique<Parts>()) {
    httplib::Server& server = parts_->server;
    server.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };  // the server deletes it
    server.set_keep_alive_timeout(kKeepAliveSeconds);
    server.set_keep_alive_max_count(kRequestsPerConnection);
    server.set_tcp_nodelay(true);
    // The library's own choice would let two servers share a port and split its connections between them.
    server.set_socket_options([](socket_t socket) {
        const int on = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on), sizeof on);
    });
    addRoutes(server, parts_->world);

    constexpr const char* kLoopback = "127.0.0.1";
    if (port == 0)
        parts_->port = server.bind_to_any_port(kLoopback);
    else
        parts_->port = server.bind_to_port(kLoopback, port) ? port : -1;
    if (parts_->port <= 0) throw std::runtime_error("the stand-in can't listen on port " + std::to_string(port));
    // The socket listens from here on: a connection made before the thread runs waits in the system's queue.
    parts_->listener = std::thread([&server] { server.listen_after_bind(); });
}

Result<std::unique_ptr<StandIn>> StandIn::start(int port) {
    try {
        return std::make_unique<StandIn>(port);
    } catch (const std::runtime_error& error) {
        return Failure{FailureKind::Transport, error.what()};
    }
}

StandIn::~StandIn() {
    parts_->world.close();
    while (!parts_->server.is_running()) std::this_thread::yield();  // stop() before that would be lost
    parts_->server.stop();
    parts_->listener.join();
}

int StandIn::port() const {
    return parts_->port;
}
std::string StandIn::address() const {
    return "http://127.0.0.1:" + std::to_string(parts_->port) + "/";
}
std::string StandIn::chatAddress() const {
    return address() + "chat/";
}

Behaviour StandIn::behaviour() const {
    return parts_->world.behaviour();
}
void StandIn::setBehaviour(const Behaviour& behaviour) {
    parts_->world.setBehaviour(behaviour);
}
Result<void> StandIn::updateBehaviour(const std::string& json) {
    return parts_->world.updateBehaviour(parse(json));
}
void StandIn::addContact(const std::string& number, const std::string& name) {
    parts_->world.addContact(number, name);
}
Result<void> StandIn::act(const std::string& name, const std::string& jsonDetails) {
    const auto details = parse(jsonDetails);
    if (!details.is_object()) return Failure{FailureKind::InvalidArgument, "an action's details are a JSON object"};
    return parts_->world.act(name, details);
}
void StandIn::reset() {
    parts_->world.reset();
}

bool StandIn::waitUntilPageKnows(std::chrono::milliseconds timeout) const {
    return parts_->world.waitUntilPageKnows(timeout);
}

std::vector<ReceivedMessage> StandIn::received() const {
    return parts_->world.received();
}
bool StandIn::waitForReceived(size_t count, std::chrono::milliseconds timeout) const {
    return parts_->world.waitForReceived(count, timeout);
}
std::vector<PageEvent> StandIn::events() const {
    return parts_->world.events();
}

}  // namespace kibo::standin
