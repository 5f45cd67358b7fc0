#include "standin/behaviour.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <variant>

namespace kibo::standin {
namespace {

using nlohmann::json;

using Member = std::variant<bool Behaviour::*, int Behaviour::*, std::string Behaviour::*,
                            std::vector<std::string> Behaviour::*, DelayRange Behaviour::*>;

enum class Use { Kept, Counted, Once };

struct Field {
    const char* key;
    Member member;
    std::vector<std::string> choices = {};  ///< texts allowed; empty: any
    Use use = Use::Kept;
};

/// The one list of keys: reading, writing, checking and spending all go by it.
const std::vector<Field>& fields() {
    using B = Behaviour;
    static const std::vector<Field> list = {
        {"loggedIn", &B::loggedIn},
        {"qrExpired", &B::qrExpired, {}, Use::Once},
        {"qrFirstMs", &B::qrFirstMs},
        {"qrNextMs", &B::qrNextMs},
        {"qrCodes", &B::qrCodes},
        {"readyDelayMs", &B::readyDelayMs},
        {"openElsewhere", &B::openElsewhere, {}, Use::Once},
        {"errorPage", &B::errorPage, {}, Use::Counted},
        {"ownNumber", &B::ownNumber},
        {"chatOpenDelayMs", &B::chatOpenDelayMs},
        {"startingPopup", &B::startingPopup},
        {"startingPopupMs", &B::startingPopupMs},
        {"unknownNumbers", &B::unknownNumbers},
        {"unknownPrefix", &B::unknownPrefix},
        {"unknownText", &B::unknownText, {"new", "old"}},
        {"noticeDelayMs", &B::noticeDelayMs},
        {"reuseConversation", &B::reuseConversation},
        {"contentLagMs", &B::contentLagMs},
        {"reloadAfterOpen", &B::reloadAfterOpen, {}, Use::Counted},
        {"language", &B::language, {"browser", "en", "id", "ms", "pt", "es", "hi", "ar", "tr", "de", "fr", "it", "ru"}},
        {"testIds", &B::testIds},
        {"labels", &B::labels},
        {"banner", &B::banner},
        {"emptyBannerSlot", &B::emptyBannerSlot},
        {"updateNotice", &B::updateNotice, {}, Use::Once},
        {"pictureNumber", &B::pictureNumber},
        {"messageIds", &B::messageIds, {"phone", "lid", "none"}},
        {"entryRole", &B::entryRole, {"row", "listitem"}},
        {"entryPreviews", &B::entryPreviews},
        {"wholeList", &B::wholeList},
        {"extraRows", &B::extraRows},
        {"ornateEntries", &B::ornateEntries},
        {"mediaStyle", &B::mediaStyle, {"held", "control", "label", "menu"}},
        {"mediaDelayMs", &B::mediaDelayMs},
        {"stickyBadges", &B::stickyBadges, {}, Use::Counted},
        {"searchDelayMs", &B::searchDelayMs},
        {"renameBox", &B::renameBox},
        {"editDelayMs", &B::editDelayMs},
        {"loseEdits", &B::loseEdits, {}, Use::Counted},
        {"hastyEnter", &B::hastyEnter},
        {"swallowEnter", &B::swallowEnter, {}, Use::Counted},
        {"sendDelayMs", &B::sendDelayMs},
        {"acknowledgedSend", &B::acknowledgedSend},
        {"linkPreviewDelayMs", &B::linkPreviewDelayMs},
        {"previewDelayMs", &B::previewDelayMs},
        {"uploadDelayMs", &B::uploadDelayMs},
        {"losePreview", &B::losePreview, {}, Use::Counted},
        {"dropPreview", &B::dropPreview, {}, Use::Counted},
        {"ackDelayMs", &B::ackDelayMs},
        {"ownTicks", &B::ownTicks},
        {"tickStyle", &B::tickStyle, {"ack", "colour", "title"}},
        {"loseFocus", &B::loseFocus, {}, Use::Counted},
        {"strayTab", &B::strayTab, {}, Use::Counted},
        {"frozenMs", &B::frozenMs, {}, Use::Once},
    };
    return list;
}

bool isCount(const json& value) {
    constexpr int kLargest = 3'600'000;  // an hour: longer is a slip of the keyboard
    return value.is_number_integer() && value >= 0 && value <= kLargest;
}

/// Writes `value` into the member; returns what the member takes when `value` is something else, else null.
struct Assign {
    Behaviour& behaviour;
    const Field& field;
    const json& value;

    const char* operator()(bool Behaviour::*member) const {
        if (!value.is_boolean()) return "true or false";
        behaviour.*member = value.get<bool>();
        return nullptr;
    }
    const char* operator()(int Behaviour::*member) const {
        if (!isCount(value)) return "a whole number from 0 to 3600000";
        behaviour.*member = value.get<int>();
        return nullptr;
    }
    const char* operator()(std::string Behaviour::*member) const {
        const bool fits =
            value.is_string() && (field.choices.empty() ||
                                  std::find(field.choices.begin(), field.choices.end(), value) != field.choices.end());
        if (!fits) return field.choices.empty() ? "a text" : "one of its known words";
        behaviour.*member = value.get<std::string>();
        return nullptr;
    }
    const char* operator()(std::vector<std::string> Behaviour::*member) const {
        if (!value.is_array() || !std::all_of(value.begin(), value.end(), [](auto& v) { return v.is_string(); }))
            return "a list of texts";
        behaviour.*member = value.get<std::vector<std::string>>();
        return nullptr;
    }
    const char* operator()(DelayRange Behaviour::*member) const {
        if (isCount(value)) {
            behaviour.*member = {value.get<int>(), value.get<int>()};
            return nullptr;
        }
        if (!value.is_object() || value.size() != 2 || !isCount(value.value("min", json())) ||
            !isCount(value.value("max", json())) || value["min"] > value["max"])
            return "milliseconds, or {\"min\": …, \"max\": …} with min not above max";
        behaviour.*member = {value["min"].get<int>(), value["max"].get<int>()};
        return nullptr;
    }
};

json valueOf(const Behaviour& behaviour, const Member& member) {
    return std::visit(
        [&](auto pointer) -> json {
            if constexpr (std::is_same_v<decltype(pointer), DelayRange Behaviour::*>)
                return {{"min", (behaviour.*pointer).min}, {"max", (behaviour.*pointer).max}};
            else
                return behaviour.*pointer;
        },
        member);
}

const Field* findField(const std::string& key) {
    const auto& list = fields();
    const auto found = std::find_if(list.begin(), list.end(), [&](const Field& field) { return key == field.key; });
    return found == list.end() ? nullptr : &*found;
}

}  // namespace

json toJson(const Behaviour& behaviour) {
    json object = json::object();
    for (const Field& field : fields()) object[field.key] = valueOf(behaviour, field.member);
    return object;
}

Result<void> applyUpdate(Behaviour& behaviour, const json& update) {
    if (!update.is_object()) return Failure{FailureKind::InvalidArgument, "the behaviour must be a JSON object"};
    Behaviour changed = behaviour;
    for (const auto& [key, value] : update.items()) {
        const Field* field = findField(key);
        if (!field) return Failure{FailureKind::InvalidArgument, "unknown behaviour \"" + key + "\""};
        if (const char* wanted = std::visit(Assign{changed, *field, value}, field->member))
            return Failure{FailureKind::InvalidArgument, "behaviour \"" + key + "\" takes " + wanted};
    }
    behaviour = std::move(changed);
    return {};
}

bool spend(Behaviour& behaviour, const std::string& key) {
    const Field* field = findField(key);
    if (!field || field->use == Use::Kept) return false;
    if (const auto* flag = std::get_if<bool Behaviour::*>(&field->member)) {
        behaviour.** flag = false;
    } else if (const auto* number = std::get_if<int Behaviour::*>(&field->member)) {
        int& left = behaviour.**number;
        left = field->use == Use::Once ? 0 : std::max(0, left - 1);
    }
    return true;
}

}  // namespace kibo::standin
