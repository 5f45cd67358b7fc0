#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/result.h"
#include "standin/behaviour.h"
#include "standin/records.h"

namespace kibo::standin {

/// Digits with country code, at most 20, as chat links take them.
bool isNumber(const std::string& text);

/// Everything the pages share and what outlives their reloads: behaviour, contacts, chats, reports. Thread-safe.
///
/// Pages learn of changes through revisions: each change gets the next number, and a page asks for what came after
/// the last one it knows.
class World {
 public:
    World() = default;
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // For programs and people
    Behaviour behaviour() const;
    void setBehaviour(const Behaviour& behaviour);
    Result<void> updateBehaviour(const nlohmann::json& update);
    void addContact(const std::string& number, const std::string& name);
    std::vector<ReceivedMessage> received() const;
    std::vector<PageEvent> events() const;
    /// False when fewer than `count` messages have come within `timeout`.
    bool waitForReceived(size_t count, std::chrono::milliseconds timeout) const;
    /// False when within `timeout` no page has taken over everything that was changed before this call.
    bool waitUntilPageKnows(std::chrono::milliseconds timeout) const;
    /// Does one of the actions of docs/stand-in.md; InvalidArgument for an unknown name or missing details.
    Result<void> act(const std::string& name, const nlohmann::json& details);
    /// Back to the start: default behaviour, no contacts, messages or events; open pages reload.
    void reset();

    // For pages
    /// What a page needs to begin: revision, behaviour, contacts, messages of all chats.
    nlohmann::json pageState() const;
    /// What came after `revision`; waits up to `timeout` for something to come. A page that knows more than there is
    /// comes from an earlier server on this port: it is told to reload.
    nlohmann::json updatesAfter(int64_t revision, std::chrono::milliseconds timeout);
    /// A page's message; the stored form goes back to the page.
    Result<void> receive(const nlohmann::json& message);
    void report(const std::string& kind, const std::string& number, const std::string& detail);
    bool spend(const std::string& key);

    /// Ends all waits, now and later: the server is about to stop.
    void close();

 private:
    struct Update {
        int64_t revision;
        nlohmann::json action;
    };

    void push(nlohmann::json action);  // mutex_ held
    void addIncoming(const nlohmann::json& details);
    void raiseTicks(const std::string& number, int64_t ticks);
    void deleteNewest(const std::string& number);

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Behaviour behaviour_;
    int64_t behaviourRevision_ = 0;
    int64_t revision_ = 0;
    int64_t knownRevision_ = 0;  // the newest that a page has
    std::deque<Update> updates_;
    std::map<std::string, std::string> contacts_;       // number -> name
    std::map<std::string, int> unread_;                 // number -> messages that no page has shown
    std::map<std::string, nlohmann::json> marks_;       // number -> what makes the chat special: pinned, muted
    nlohmann::json history_ = nlohmann::json::array();  // every chat's messages as the page shows them
    std::vector<ReceivedMessage> received_;
    std::vector<PageEvent> events_;
    int64_t incomingCount_ = 0;
    bool closed_ = false;
};

}  // namespace kibo::standin
