#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <optional>
#include <variant>
#include <vector>

/// The commands of W3C WebDriver (https://www.w3.org/TR/webdriver2/#endpoints) that the gateway uses, as plain values,
/// and one pure function from a command to its HTTP request. Nothing here does any I/O.
///
/// Values reach the page only as JSON (script arguments, locator values, typed text): no text is ever pasted
/// into a script, so there is nothing to escape and nothing to inject.
namespace kibo::webdriver {

/// Reference to an element of the page, valid until the page drops the element ("stale element reference").
struct Element {
    QString id;
    bool operator==(const Element&) const = default;
};

/// How a locator's value is read.
enum class Using { Css, XPath, LinkText, PartialLinkText, TagName };

struct Locator {
    Using strategy = Using::Css;
    QString value;
    bool operator==(const Locator&) const = default;
};

struct Status {};
struct NewSession {
    QJsonObject capabilities;  ///< the required capabilities ("alwaysMatch")
};
struct DeleteSession {};
struct SetTimeouts {
    int scriptMs = 0, pageLoadMs = 0, implicitMs = 0;
};
struct NavigateTo {
    QString address;
};
struct Refresh {};
struct GetTitle {};
struct GetWindowHandle {};
struct GetWindowHandles {};
struct SwitchToWindow {
    QString handle;
};
struct CloseWindow {};
struct SetWindowRect {
    int x = 0, y = 0, width = 0, height = 0;
};
/// The script is a function body; its `arguments` are `arguments`. A promise that it returns is waited for.
struct ExecuteScript {
    QString script;
    QJsonArray arguments = {};
};
/// Without `within` the whole page is searched.
struct FindElement {
    Locator locator;
    std::optional<Element> within = {};
};
struct FindElements {
    Locator locator;
    std::optional<Element> within = {};
};
struct ElementClick {
    Element element;
};
/// Types `text`, or gives the file paths in it (separated by line feeds) to a file chooser element.
struct ElementSendKeys {
    Element element;
    QString text;
};
struct GetElementAttribute {
    Element element;
    QString name;
};
/// `sources` are the input sources with their actions, as W3C WebDriver describes them.
struct PerformActions {
    QJsonArray sources;
};
struct TakeScreenshot {};
struct ElementScreenshot {
    Element element;
};
/// A command of the Chrome DevTools protocol, passed on by ChromeDriver (not W3C).
struct ChromeExecuteCdp {
    QString method;
    QJsonObject parameters = {};
};

using Command = std::variant<Status, NewSession, DeleteSession, SetTimeouts, NavigateTo, Refresh, GetTitle,
                             GetWindowHandle, GetWindowHandles, SwitchToWindow, CloseWindow, SetWindowRect,
                             ExecuteScript, FindElement, FindElements, ElementClick, ElementSendKeys,
                             GetElementAttribute, PerformActions, TakeScreenshot, ElementScreenshot, ChromeExecuteCdp>;

enum class Method { Get, Post, Delete };

/// A command as HTTP wants it.
struct Request {
    const char* name = "";  ///< the command's name, for the log
    Method method = Method::Get;
    QByteArray path;  ///< percent-encoded, from "/" on
    QJsonObject body = {};
    int timeoutMs = 0;  ///< how long to wait for the answer
};

/// `sessionId` is ignored by the commands that stand outside a session (Status, NewSession).
Request requestFor(const Command& command, const QString& sessionId);

/// An element as a script argument.
QJsonObject toJson(const Element& element);
/// The element in an answer's value; none when the value isn't an element.
std::optional<Element> elementFrom(const QJsonValue& value);
/// The elements in an answer's value; what isn't an element is left out.
std::vector<Element> elementsFrom(const QJsonValue& value);

}  // namespace kibo::webdriver
