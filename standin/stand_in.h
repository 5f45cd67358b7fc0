#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/result.h"
#include "standin/behaviour.h"
#include "standin/records.h"

namespace kibo::standin {

/// A local page that behaves like the messenger's web page, served on 127.0.0.1 from threads of its own. Nothing
/// leaves this computer. Each object is a world of its own with its own port; all members may be called from any
/// thread. What the page does is set by Behaviour; docs/stand-in.md is the guide.
class StandIn {
 public:
    /// Starts to listen on `port`; 0 picks a free one. Transport when that can't be had.
    static Result<std::unique_ptr<StandIn>> start(int port = 0);
    /// The same for tests and programs that can't go on without it: throws std::runtime_error.
    explicit StandIn(int port = 0);
    /// Answers what is under way and stops. Takes up to a second when a browser is still connected.
    ~StandIn();
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

    int port() const;
    std::string address() const;  ///< the page, "http://127.0.0.1:N/"
    std::string chatAddress()
        const;  ///< stands before a number in a link that opens its chat, "http://127.0.0.1:N/chat/"

    Behaviour behaviour() const;
    void setBehaviour(const Behaviour& behaviour);
    /// Changes single keys, given as a JSON object. InvalidArgument names an unknown key or unfit value.
    Result<void> updateBehaviour(const std::string& json);
    /// `number`: digits with country code. Known pages show it at once.
    void addContact(const std::string& number, const std::string& name);
    /// An action of the control interface by name, e.g. "incoming" with {"number": "62…", "text": "hi"}.
    Result<void> act(const std::string& name, const std::string& jsonDetails = "{}");
    void reset();
    /// Pages learn of changes a moment later. False when within `timeout` no open page has taken over all changes made
    /// before this call.
    bool waitUntilPageKnows(std::chrono::milliseconds timeout) const;

    /// What pages sent since start or reset, in order of arrival.
    std::vector<ReceivedMessage> received() const;
    /// False when fewer than `count` messages have come within `timeout`.
    bool waitForReceived(size_t count, std::chrono::milliseconds timeout) const;
    /// What pages reported since start or reset, in order of arrival.
    std::vector<PageEvent> events() const;

 private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace kibo::standin
