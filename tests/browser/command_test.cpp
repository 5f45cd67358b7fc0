#include "browser/webdriver/command.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <set>
#include <string>

#include "browser/webdriver/error.h"

namespace kibo::webdriver {
namespace {

const QString kSession = QStringLiteral("s1");

std::string line(const Command& command) {
    const Request request = requestFor(command, kSession);
    const char* method = request.method == Method::Get ? "GET " : request.method == Method::Post ? "POST " : "DELETE ";
    std::string text(method);
    text.append(request.path.toStdString());
    if (request.method == Method::Post) {
        text.append(" ").append(QJsonDocument(request.body).toJson(QJsonDocument::Compact).toStdString());
    }
    return text;
}

// Those with parts, and those that no test sends to a browser.
TEST(Command, BecomesTheRequestOfTheProtocol) {
    const Element element{QStringLiteral("e/1")};
    const Locator css{Using::Css, QStringLiteral("#a")};
    const QString key = QStringLiteral("k");
    const struct {
        Command command;
        const char* expected;
    } cases[] = {
        {Status{}, "GET /status"},
        {NewSession{{{key, 1}}}, R"(POST /session {"capabilities":{"alwaysMatch":{"k":1}}})"},
        {DeleteSession{}, "DELETE /session/s1"},
        {SetTimeouts{1, 2, 3}, R"(POST /session/s1/timeouts {"implicit":3,"pageLoad":2,"script":1})"},
        {SetWindowRect{1, 2, 3, 4}, R"(POST /session/s1/window/rect {"height":4,"width":3,"x":1,"y":2})"},
        {ExecuteScript{key, {1}, false}, R"(POST /session/s1/execute/sync {"args":[1],"script":"k"})"},
        {ExecuteScript{key, {}, true}, R"(POST /session/s1/execute/async {"args":[],"script":"k"})"},
        {FindElement{css}, R"(POST /session/s1/element {"using":"css selector","value":"#a"})"},
        {FindElements{{Using::XPath, key}, element},
         R"(POST /session/s1/element/e%2F1/elements {"using":"xpath","value":"k"})"},
        {FindElements{{Using::LinkText, key}}, R"(POST /session/s1/elements {"using":"link text","value":"k"})"},
        {ElementSendKeys{element, key}, R"(POST /session/s1/element/e%2F1/value {"text":"k"})"},
        {GetElementAttribute{element, QStringLiteral("data-ref")}, "GET /session/s1/element/e%2F1/attribute/data-ref"},
        {PerformActions{{1}}, R"(POST /session/s1/actions {"actions":[1]})"},
        {GetCurrentUrl{}, "GET /session/s1/url"},
        {GetActiveElement{}, "GET /session/s1/element/active"},
        {ElementClear{element}, "POST /session/s1/element/e%2F1/clear {}"},
        {GetElementText{element}, "GET /session/s1/element/e%2F1/text"},
        {ReleaseActions{}, "DELETE /session/s1/actions"},
        {ElementScreenshot{element}, "GET /session/s1/element/e%2F1/screenshot"},
        {AcceptAlert{}, "POST /session/s1/alert/accept {}"},
        {DismissAlert{}, "POST /session/s1/alert/dismiss {}"},
        {ChromeExecuteCdp{key, {}}, R"(POST /session/s1/goog/cdp/execute {"cmd":"k","params":{}})"},
    };
    for (const auto& c : cases) EXPECT_EQ(line(c.command), c.expected);
}

TEST(Command, TextStaysWhatItIs) {
    const QString text = QStringLiteral("\"quotes\" \\ '; alert(1) // \n\r\t \u2028 Grüße 🙂");
    const Request request = requestFor(ElementSendKeys{{QStringLiteral("e")}, text}, kSession);
    const QJsonDocument again = QJsonDocument::fromJson(QJsonDocument(request.body).toJson(QJsonDocument::Compact));
    EXPECT_EQ(again[QStringLiteral("text")].toString(), text);
}

TEST(Element, IsRecognisedInAnswers) {
    const Element element{QStringLiteral("e1")};
    EXPECT_EQ(elementFrom(toJson(element)), element);
    EXPECT_EQ(elementsFrom(QJsonArray{toJson(element), 5, QJsonObject{}, QJsonValue()}), std::vector{element});
    EXPECT_FALSE(elementFrom(QJsonValue(QStringLiteral("e1"))));
    EXPECT_TRUE(elementsFrom(QJsonValue()).empty());
}

TEST(Error, EveryNameIsReadBackAndForeignNamesAreKept) {
    std::set<std::string_view> names;
    for (int i = 0; i <= static_cast<int>(ErrorCode::UnsupportedOperation); ++i) {
        const auto code = static_cast<ErrorCode>(i);
        EXPECT_EQ(errorCode(errorName(code)), code);
        names.insert(errorName(code));
    }
    EXPECT_EQ(names.size(), 28u);
    EXPECT_FALSE(errorCode("tab crashed"));

    EXPECT_TRUE(isSessionGone({FailureKind::Remote, "", "invalid session id"}));
    EXPECT_FALSE(isSessionGone({FailureKind::Remote, "", "no such window"}));
    EXPECT_FALSE(isSessionGone({FailureKind::Transport, "", "timeout"}));
    // The same word means two things: the driver's time limit, and ours.
    EXPECT_FALSE(isTimeout({FailureKind::Remote, "", "timeout"}));
}

}  // namespace
}  // namespace kibo::webdriver
