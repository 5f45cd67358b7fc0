#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <thread>

#include "standin/stand_in.h"

namespace {

std::atomic<bool> stopAsked{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

int refuse(const std::string& why) {
    std::cerr << "kibo-standin: " << why << "\nusage: kibo-standin [--port N] [--behaviour JSON]\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    int port = 0;
    std::string behaviour = "{}";
    for (int i = 1; i < argc; i += 2) {
        const std::string option = argv[i];
        if (i + 1 == argc) return refuse("unknown option or missing value: " + option);
        const char* value = argv[i + 1];
        if (option == "--behaviour") {
            behaviour = value;
        } else if (option == "--port") {
            const char* end = value + std::strlen(value);
            const auto parsed = std::from_chars(value, end, port);
            if (parsed.ec != std::errc() || parsed.ptr != end || port < 0 || port > 65535)
                return refuse("not a port: " + std::string(value));
        } else {
            return refuse("unknown option: " + option);
        }
    }

    std::signal(SIGINT, [](int) { stopAsked = true; });
    std::signal(SIGTERM, [](int) { stopAsked = true; });

    auto started = kibo::standin::StandIn::start(port);
    if (!started) return refuse(started.failure().text);
    const auto standIn = std::move(started).value();
    if (const auto applied = standIn->updateBehaviour(behaviour); !applied) return refuse(applied.failure().text);

    std::cout << "stand-in: " << standIn->address() << std::endl;
    while (!stopAsked) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return 0;
}
