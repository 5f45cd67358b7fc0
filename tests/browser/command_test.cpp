#include "browser/webdriver/command.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <string>

#include "browser/webdriver/error.h"

namespace kibo::webdriver {
namespace {

const QString kSession = QStringLiteral("s1");

std::string line(const Command& command) {
    const Request request = requestFor(command, kSession);
    const QByteArray body = QJsonDocument(request.body).toJson(QJsonDocument::Compact);
    return (request.path + ' ' + body).toStdString();
}

// What the gateway sends is proved by the browser tests; here is what JSON and paths could spoil.
TEST(Command, PartsAreNamedInOrderAndEscaped) {
    const Element element{QStringLiteral("e/1")};
    const QString text = QStringLiteral("\"quotes\" \\ '; alert(1) // \n\r\t \u2028 Grüße 🙂");
    EXPECT_EQ(line(SetTimeouts{1, 2, 3}), R"(/session/s1/timeouts {"implicit":3,"pageLoad":2,"script":1})");
    EXPECT_EQ(line(FindElements{{Using::LinkText, QStringLiteral("k")}, element}),
              R"(/session/s1/element/e%2F1/elements {"using":"link text","value":"k"})");
    const Request request = requestFor(ElementSendKeys{element, text}, kSession);
    const QJsonDocument again = QJsonDocument::fromJson(QJsonDocument(request.body).toJson(QJsonDocument::Compact));
    EXPECT_EQ(again[QStringLiteral("text")].toString(), text);
    EXPECT_EQ(elementsFrom(QJsonArray{toJson(element), 5, QJsonObject{}, QJsonValue()}), std::vector{element});
}

TEST(Error, ATimeOutAndALostSessionAreOurs) {
    EXPECT_FALSE(errorCode("tab crashed"));
    EXPECT_TRUE(isSessionGone({FailureKind::Remote, "", "invalid session id"}));
    EXPECT_FALSE(isSessionGone({FailureKind::Remote, "", "no such window"}));
    EXPECT_FALSE(isSessionGone({FailureKind::Transport, "", "timeout"}));
    // The same word means two things: the driver's time limit, and ours.
    EXPECT_FALSE(isTimeout({FailureKind::Remote, "", "timeout"}));
}

}  // namespace
}  // namespace kibo::webdriver
