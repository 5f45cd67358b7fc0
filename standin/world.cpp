#include "standin/world.h"

#include <algorithm>

#include "standin/json_fields.h"

namespace kibo::standin {
namespace {

using nlohmann::json;

/// Pages ask again within seconds, so only the newest changes can still be news to one.
constexpr size_t kUpdatesKept = 1000;

int64_t nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

int64_t numberOf(const json& object, const char* key, int64_t otherwise) {
    const auto found = object.find(key);
    return found != object.end() && found->is_number_integer() ? found->get<int64_t>() : otherwise;
}

Failure missing(const std::string& action, const char* detail) {
    return {FailureKind::InvalidArgument, "action \"" + action + "\" needs " + detail};
}

}  // namespace

bool isNumber(const std::string& text) {
    return !text.empty() && text.size() <= 20 && text.find_first_not_of("0123456789") == std::string::npos;
}

Behaviour World::behaviour() const {
    const std::lock_guard lock(mutex_);
    return behaviour_;
}

void World::setBehaviour(const Behaviour& behaviour) {
    const std::lock_guard lock(mutex_);
    behaviour_ = behaviour;
    push(nullptr);
    behaviourRevision_ = revision_;
}

Result<void> World::updateBehaviour(const json& update) {
    const std::lock_guard lock(mutex_);
    if (auto applied = applyUpdate(behaviour_, update); !applied) return applied;
    push(nullptr);
    behaviourRevision_ = revision_;
    return {};
}

void World::addContact(const std::string& number, const std::string& name) {
    const std::lock_guard lock(mutex_);
    contacts_[number] = name;
    push({{"name", "contact"}, {"number", number}, {"contactName", name}});
}

std::vector<ReceivedMessage> World::received() const {
    const std::lock_guard lock(mutex_);
    return received_;
}

std::vector<PageEvent> World::events() const {
    const std::lock_guard lock(mutex_);
    return events_;
}

bool World::waitForReceived(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return received_.size() >= count; });
}

bool World::waitUntilPageKnows(std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&, wanted = revision_] { return knownRevision_ >= wanted; });
}

Result<void> World::act(const std::string& name, const json& details) {
    const auto behave = [this](json update) { return updateBehaviour(update); };
    if (name == "login") return behave({{"loggedIn", true}});
    if (name == "logout") return behave({{"loggedIn", false}});
    if (name == "expireQr") return behave({{"qrExpired", true}});
    if (name == "banner") return behave({{"banner", textOf(details, "text")}});
    if (name == "loseFocus") return behave({{"loseFocus", numberOf(details, "times", 1)}});
    if (name == "freeze") return behave({{"frozenMs", numberOf(details, "ms", 1000)}});
    if (name == "incoming") {
        if (!isNumber(textOf(details, "number"))) return missing(name, R"("number", in digits)");
        if (textOf(details, "text").empty() && textOf(details, "kind").empty())
            return missing(name, R"("text" or "kind")");
        addIncoming(details);
        return {};
    }
    const bool aboutChat = name == "mark" || name == "typing" || name == "delete" || name == "ticks" || name == "read";
    if (aboutChat && !isNumber(textOf(details, "number"))) return missing(name, R"("number", in digits)");
    if (name == "mark" || name == "typing" || name == "read") {
        const std::lock_guard lock(mutex_);
        json update = details;
        update["name"] = name;
        if (name == "read") unread_.erase(textOf(details, "number"));
        if (name == "mark") marks_[textOf(details, "number")] = update;
        push(update);
        return {};
    }
    if (name == "ticks") {
        const int64_t ticks = numberOf(details, "ticks", -1);
        if (ticks < 0 || ticks > 3) return missing(name, R"("ticks", from 0 to 3)");
        raiseTicks(textOf(details, "number"), ticks);
        return {};
    }
    if (name == "delete") {
        deleteNewest(textOf(details, "number"));
        return {};
    }
    if (name == "openChat" && !isNumber(textOf(details, "number"))) return missing(name, R"("number", in digits)");
    if (name == "openChat" || name == "closeChat" || name == "reload" || name == "strayTab") {
        const std::lock_guard lock(mutex_);
        push({{"name", name}, {"number", textOf(details, "number")}});
        return {};
    }
    return Failure{FailureKind::InvalidArgument, "unknown action \"" + name + "\""};
}

void World::reset() {
    const std::lock_guard lock(mutex_);
    behaviour_ = {};
    contacts_.clear();
    unread_.clear();
    marks_.clear();
    history_ = json::array();
    received_.clear();
    events_.clear();
    push({{"name", "reload"}});
    behaviourRevision_ = revision_;
}

json World::pageState() const {
    const std::lock_guard lock(mutex_);
    return {{"revision", revision_}, {"behaviour", toJson(behaviour_)},
            {"contacts", contacts_}, {"messages", history_},
            {"unread", unread_},     {"marks", marks_}};
}

json World::updatesAfter(int64_t revision, std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    if (revision > revision_) return {{"revision", revision_}, {"actions", json::array({{{"name", "reload"}}})}};
    if (revision > knownRevision_) {
        knownRevision_ = revision;
        changed_.notify_all();
    }
    changed_.wait_for(lock, timeout, [&] { return closed_ || revision_ > revision; });
    json answer = {{"revision", revision_}, {"actions", json::array()}};
    if (behaviourRevision_ > revision) answer["behaviour"] = toJson(behaviour_);
    for (const Update& update : updates_)
        if (update.revision > revision && !update.action.is_null()) answer["actions"].push_back(update.action);
    return answer;
}

Result<void> World::receive(const json& message) {
    ReceivedMessage received;
    received.number = textOf(message, "number");
    received.text = textOf(message, "text");
    received.kind = textOf(message, "kind");
    received.caption = textOf(message, "caption");
    received.fileName = textOf(message, "fileName");
    received.fileSize = numberOf(message, "fileSize", 0);
    received.linkPreview = message.contains("linkPreview") && message["linkPreview"] == true;
    received.timeMs = nowMs();
    if (received.number.empty() || received.kind.empty())
        return Failure{FailureKind::InvalidArgument, "a message has a number and a kind"};

    const std::lock_guard lock(mutex_);
    received.seq = static_cast<int64_t>(received_.size()) + 1;
    if (const auto contact = contacts_.find(received.number); contact != contacts_.end())
        received.name = contact->second;
    received_.push_back(received);
    history_.push_back(message);
    changed_.notify_all();
    return {};
}

void World::addIncoming(const json& details) {
    const std::string number = textOf(details, "number");
    if (const std::string name = textOf(details, "name"); !name.empty()) addContact(number, name);
    const std::lock_guard lock(mutex_);
    char id[24];
    std::snprintf(id, sizeof id, "3A%016llX", static_cast<unsigned long long>(++incomingCount_));
    const std::string kind = textOf(details, "kind");
    const json message = {{"id", id},
                          {"number", number},
                          {"member", textOf(details, "member")},
                          {"kind", kind.empty() ? "text" : kind},
                          {"text", textOf(details, "text")},
                          {"caption", textOf(details, "text")},
                          {"fileName", textOf(details, "fileName")},
                          {"fileSize", numberOf(details, "fileSize", 0)},
                          {"incoming", true},
                          {"timeMs", nowMs()}};
    history_.push_back(message);
    ++unread_[number];
    push({{"name", "incoming"}, {"message", message}});
}

void World::deleteNewest(const std::string& number) {
    const std::lock_guard lock(mutex_);
    for (auto message = history_.rbegin(); message != history_.rend(); ++message) {
        if ((*message)["number"] != number) continue;
        (*message)["kind"] = "deleted";
        push({{"name", "delete"}, {"number", number}});
        return;
    }
}

void World::raiseTicks(const std::string& number, int64_t ticks) {
    const std::lock_guard lock(mutex_);
    for (json& message : history_)
        if (message["number"] == number && !message.contains("incoming"))
            message["ticks"] = std::max(numberOf(message, "ticks", 0), ticks);
    push({{"name", "ticks"}, {"number", number}, {"ticks", ticks}});
}

void World::report(const std::string& kind, const std::string& number, const std::string& detail) {
    const std::lock_guard lock(mutex_);
    if (kind == "read") unread_.erase(number);
    events_.push_back({static_cast<int64_t>(events_.size()) + 1, kind, number, detail, nowMs()});
    changed_.notify_all();
}

bool World::spend(const std::string& key) {
    const std::lock_guard lock(mutex_);
    if (!standin::spend(behaviour_, key)) return false;
    push(nullptr);
    behaviourRevision_ = revision_;
    return true;
}

void World::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
}

void World::push(json action) {
    updates_.push_back({++revision_, std::move(action)});
    if (updates_.size() > kUpdatesKept) updates_.pop_front();
    changed_.notify_all();
}

}  // namespace kibo::standin
