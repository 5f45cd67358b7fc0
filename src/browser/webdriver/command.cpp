#include "browser/webdriver/command.h"

#include <QUrl>
#include <initializer_list>
#include <utility>

namespace kibo::webdriver {
namespace {

// Key of an element reference: https://www.w3.org/TR/webdriver2/#elements
const QString kElementKey = QStringLiteral("element-6066-11e4-a52e-4f735466cecf");

// The session lets a page script run for 3 s, so a responsive driver always answers within this.
constexpr int kAnswerMs = 5'000;
// Starting a browser with a large profile on a slow disk.
constexpr int kNewSessionMs = 60'000;
constexpr int kScreenshotMs = 10'000;
// ChromeDriver presses and releases a key for each character: about 1 ms each on an idle computer.
constexpr int kCharacterMs = 10;

QByteArray encoded(const QString& segment) {
    return QUrl::toPercentEncoding(segment);
}

/// Turns each command into its request; the session's own path is put in front by the helpers below.
class RequestBuilder {
 public:
    explicit RequestBuilder(const QString& sessionId) : sessionId_(sessionId) {}

    Request operator()(const Status&) const { return {"Status", Method::Get, "/status", {}, kAnswerMs}; }
    Request operator()(const NewSession& c) const {
        const QJsonObject capabilities{{QStringLiteral("alwaysMatch"), c.capabilities}};
        return {"NewSession", Method::Post, "/session", QJsonObject{{QStringLiteral("capabilities"), capabilities}},
                kNewSessionMs};
    }
    Request operator()(const DeleteSession&) const { return del("DeleteSession", ""); }
    Request operator()(const SetTimeouts& c) const {
        return post("SetTimeouts", "/timeouts",
                    {{QStringLiteral("script"), c.scriptMs},
                     {QStringLiteral("pageLoad"), c.pageLoadMs},
                     {QStringLiteral("implicit"), c.implicitMs}});
    }
    Request operator()(const NavigateTo& c) const {
        return post("NavigateTo", "/url", {{QStringLiteral("url"), c.address}});
    }
    Request operator()(const Refresh&) const { return post("Refresh", "/refresh"); }
    Request operator()(const GetTitle&) const { return get("GetTitle", "/title"); }
    Request operator()(const GetWindowHandle&) const { return get("GetWindowHandle", "/window"); }
    Request operator()(const GetWindowHandles&) const { return get("GetWindowHandles", "/window/handles"); }
    Request operator()(const SwitchToWindow& c) const {
        return post("SwitchToWindow", "/window", {{QStringLiteral("handle"), c.handle}});
    }
    Request operator()(const CloseWindow&) const { return del("CloseWindow", "/window"); }
    Request operator()(const SetWindowRect& c) const {
        return post("SetWindowRect", "/window/rect",
                    {{QStringLiteral("x"), c.x},
                     {QStringLiteral("y"), c.y},
                     {QStringLiteral("width"), c.width},
                     {QStringLiteral("height"), c.height}});
    }
    Request operator()(const ExecuteScript& c) const {
        return post("ExecuteScript", "/execute/sync",
                    {{QStringLiteral("script"), c.script}, {QStringLiteral("args"), c.arguments}});
    }
    Request operator()(const FindElement& c) const { return find("FindElement", "/element", c.locator, c.within); }
    Request operator()(const FindElements& c) const { return find("FindElements", "/elements", c.locator, c.within); }
    Request operator()(const ElementClick& c) const { return post("ElementClick", on(c.element, "/click")); }
    Request operator()(const ElementSendKeys& c) const {
        Request request = post("ElementSendKeys", on(c.element, "/value"), {{QStringLiteral("text"), c.text}});
        request.timeoutMs += kCharacterMs * static_cast<int>(c.text.size());
        return request;
    }
    Request operator()(const GetElementAttribute& c) const {
        return get("GetElementAttribute", on(c.element, "/attribute/") + encoded(c.name));
    }
    Request operator()(const PerformActions& c) const {
        return post("PerformActions", "/actions", {{QStringLiteral("actions"), c.sources}});
    }
    Request operator()(const TakeScreenshot&) const { return get("TakeScreenshot", "/screenshot", kScreenshotMs); }
    Request operator()(const ElementScreenshot& c) const {
        return get("ElementScreenshot", on(c.element, "/screenshot"), kScreenshotMs);
    }
    Request operator()(const ChromeExecuteCdp& c) const {
        return post("ChromeExecuteCdp", "/goog/cdp/execute",
                    {{QStringLiteral("cmd"), c.method}, {QStringLiteral("params"), c.parameters}});
    }

 private:
    QByteArray inSession(const QByteArray& path) const { return "/session/" + encoded(sessionId_) + path; }
    static QByteArray on(const Element& element, const char* action) {
        return "/element/" + encoded(element.id) + action;
    }

    Request get(const char* name, const QByteArray& path, int timeoutMs = kAnswerMs) const {
        return {name, Method::Get, inSession(path), {}, timeoutMs};
    }
    Request post(const char* name, const QByteArray& path, QJsonObject body = {}) const {
        return {name, Method::Post, inSession(path), std::move(body), kAnswerMs};
    }
    Request del(const char* name, const QByteArray& path) const {
        return {name, Method::Delete, inSession(path), {}, kAnswerMs};
    }
    Request find(const char* name, const char* path, const Locator& locator,
                 const std::optional<Element>& within) const {
        return post(
            name, within ? on(*within, path) : QByteArray(path),
            {{QStringLiteral("using"), strategyName(locator.strategy)}, {QStringLiteral("value"), locator.value}});
    }
    // https://www.w3.org/TR/webdriver2/#locator-strategies
    static QString strategyName(Using strategy) {
        switch (strategy) {
            case Using::Css:
                return QStringLiteral("css selector");
            case Using::XPath:
                return QStringLiteral("xpath");
            case Using::LinkText:
                return QStringLiteral("link text");
            case Using::PartialLinkText:
                return QStringLiteral("partial link text");
            case Using::TagName:
                return QStringLiteral("tag name");
        }
        return {};
    }

    const QString& sessionId_;
};

}  // namespace

Request requestFor(const Command& command, const QString& sessionId) {
    return std::visit(RequestBuilder(sessionId), command);
}

QJsonObject toJson(const Element& element) {
    return {{kElementKey, element.id}};
}

std::optional<Element> elementFrom(const QJsonValue& value) {
    const QString id = value[kElementKey].toString();
    return id.isEmpty() ? std::nullopt : std::optional(Element{id});
}

std::vector<Element> elementsFrom(const QJsonValue& value) {
    std::vector<Element> elements;
    const QJsonArray items = value.toArray();
    elements.reserve(static_cast<std::size_t>(items.size()));
    for (const QJsonValue& item : items) {
        if (auto element = elementFrom(item)) elements.push_back(std::move(*element));
    }
    return elements;
}

}  // namespace kibo::webdriver
