#include <signal.h>

#include <QElapsedTimer>
#include <algorithm>
#include <iostream>
#include <map>
#include <set>

#include "platform/process.h"
#include "real_gateway.h"
#include "support/eventually.h"
#include "support/processes.h"

namespace kibo {
namespace {

const QString kAni = u"6281234567890"_qs;

class RealBrowser : public test::OnRealGateway<10> {
 protected:
    void SetUp() override {
        real->behave(R"({"chatOpenDelayMs": 0, "messageIds": "phone"})");  // as before the last test
        first = real->standIn.received().size();
        failed = real->state.failedCount;
    }

    /// What arrived since this test began, or the last `send`.
    std::vector<standin::ReceivedMessage> arrived() {
        auto all = real->standIn.received();
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(first));
        return all;
    }
    /// Whether this text arrived once in its chat, and nothing else did.
    bool sends(const QString& text) {
        first = real->standIn.received().size();
        real->queue(kAni, text);
        real->runQueue();
        real->standIn.waitForReceived(first + 1, std::chrono::milliseconds(500));
        const auto got = arrived();
        return got.size() == 1 && got[0].number == kAni.toStdString() && got[0].text == text.toStdString();
    }
    /// Ticks until the line says `step`.
    static bool says(const char* step) {
        return real->tickUntil([=] { return real->state.step == QLatin1String(step); });
    }
    int newFailures() const { return real->state.failedCount - failed; }
    static Result<QJsonValue> run(const QString& script) {
        return real->browser.client().send(webdriver::ExecuteScript{script, {}});
    }

    size_t first = 0;
    int failed = 0;
};

TEST_F(RealBrowser, TextsArriveAsWritten) {
    const QString texts[] = {
        u"plain"_qs,
        u"several\nlines\n\nand one empty"_qs,
        u"quotes ' \" ` \\ <b>&amp;</b> ${x} %41"_qs,
        u"emoji 😀👩‍👩‍👧🇮🇩 and é ﷺ"_qs,
        u"مرحبا بالعالم — שלום"_qs,
        u"  inner   blanks  "_qs,
        QString(65'000, QLatin1Char('x')),
    };
    for (const QString& text : texts) real->queue(kAni, text);
    real->runQueue();
    real->standIn.waitForReceived(first + std::size(texts), std::chrono::seconds(5));
    const auto got = arrived();
    ASSERT_EQ(got.size(), std::size(texts)) << newFailures() << real->lastReason();
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_EQ(QString::fromStdString(got[i].text).trimmed(), texts[i].trimmed()) << i;
    EXPECT_EQ(newFailures(), 0);
}

TEST_F(RealBrowser, MessageTakesFewCommands) {
    const auto commandsOfOneTick = [] {
        const quint64 before = real->browser.client().commandsSent();
        real->gateway->machine.Timer_KIBO_Timer();
        return real->browser.client().commandsSent() - before;
    };
    EXPECT_TRUE(sends(u"warm"_qs));
    for (const char* text : {"first", "second"}) real->queue(kAni, QString::fromLatin1(text));
    EXPECT_LE(commandsOfOneTick(), 9u) << "the first one's number was not known before";
    EXPECT_LE(commandsOfOneTick(), 8u);
    EXPECT_LE(commandsOfOneTick(), 2u) << "with nothing to do";
    EXPECT_EQ(newFailures(), 0) << real->lastReason();
}

TEST_F(RealBrowser, NumberThatIsNotKnownFailsInEitherWording) {
    for (const char* behaviour : {R"({"unknownNumbers": ["6280000000000"]})", R"({"unknownText": "old"})"}) {
        real->behave(behaviour);
        real->queue(u"6280000000000"_qs, u"x"_qs);
        real->runQueue();
        EXPECT_EQ(real->lastReason(), "the number is not on WhatsApp") << behaviour;
    }
    EXPECT_TRUE(sends(u"and goes on"_qs));
    EXPECT_EQ(newFailures(), 2);
}

TEST_F(RealBrowser, DisturbancesCostAtMostTheirOwnMessage) {
    const char* const disturbances[] = {
        R"({"strayTab": 1})",
        R"({"loseFocus": 1})",
        R"({"swallowEnter": 1})",
        R"({"reloadAfterOpen": 1})",
        R"({"editDelayMs": 120, "sendDelayMs": 400})",
        R"({"reuseConversation": true})",
        R"({"messageIds": "none", "editDelayMs": 0, "sendDelayMs": 0})",
        R"({"chatOpenDelayMs": 120, "startingPopup": true, "reuseConversation": false, "messageIds": "phone"})",
    };
    for (const char* disturbance : disturbances) {
        real->behave(disturbance);
        const int failedBefore = newFailures();
        const bool sent = sends(QString::fromLatin1(disturbance));
        EXPECT_NE(sent, newFailures() > failedBefore) << disturbance;
        EXPECT_TRUE(sent || arrived().empty()) << disturbance;
    }
    EXPECT_LE(newFailures(), 3);
    const standin::Behaviour left = real->standIn.behaviour();
    EXPECT_EQ(left.strayTab + left.loseFocus + left.swallowEnter + left.reloadAfterOpen, 0) << "not disturbed at all";
    real->behave(R"({"chatOpenDelayMs": 0})");
    real->tick();
    EXPECT_EQ(real->browser.closeStrayWindows().valueOr(-1), 0) << "stray tabs have been closed";
}

TEST_F(RealBrowser, HungPageCostsALoggedSkip) {
    real->behave(R"({"frozenMs": 4500})");
    QElapsedTimer timer;
    timer.start();
    real->gateway->machine.Timer_KIBO_Timer();
    EXPECT_LT(timer.elapsed(), 6000);
    for (int i = 0; i < 100 && real->state.step != u"Queue empty"_qs; ++i) {
        real->tick();
        real->clock.SystemClock::wait(100);
    }
    EXPECT_TRUE(sends(u"alive again"_qs)) << real->lastReason();
}

// The page opens chats after 0 to 6 s (in tests all times are a tenth), each opening on its own, so that chats come up
// under later messages; most are saved contacts whose chats show a name only.
TEST_F(RealBrowser, NoTextEverReachesAnotherChat) {
    real->behave(qPrintable(QStringLiteral(R"({"chatOpenDelayMs": {"min": 0, "max": %1}, "messageIds": "none"})")
                                .arg(6000 / test::RealGateway::speed(10))));
    std::map<std::string, std::string> numberOf;
    for (int i = 0; i < 100; ++i) {
        const int contact = i % 25;
        const bool isSaved = contact % 4 != 0;
        const QString number = u"62855000%1"_qs.arg(contact, 4, 10, QLatin1Char('0'));
        const QString name = u"Contact %1"_qs.arg(contact), text = u"message %1"_qs.arg(i);
        if (isSaved) real->standIn.addContact(number.toStdString(), name.toStdString());
        numberOf[text.toStdString()] = number.toStdString();
        // Every third one to a saved contact goes by name.
        const bool byName = isSaved && i % 3 == 0;
        real->queue(byName ? name : number, text, byName ? 2 : 0);
    }
    real->runQueue(20'000);
    real->standIn.waitForReceived(first + 100 - static_cast<size_t>(newFailures()), std::chrono::seconds(3));
    std::set<std::string> seen;
    for (const auto& message : arrived()) {
        EXPECT_EQ(message.number, numberOf[message.text]) << message.text;
        EXPECT_TRUE(seen.insert(message.text).second) << "twice: " << message.text;
    }
    EXPECT_EQ(static_cast<int>(seen.size()) + newFailures(), 100);
    EXPECT_GT(seen.size(), 20u);
    std::cout << "sent " << seen.size() << ", marked as failed " << newFailures() << std::endl;
}

TEST_F(RealBrowser, WhatStandsInThePageSPlaceIsNamedAndPutRight) {
    real->behave(R"({"openElsewhere": true})");
    real->gateway->machine.Timer_KIBO_Timer();
    EXPECT_TRUE(real->state.step.contains(u"open in another window"_qs)) << real->state.step.toStdString();
    EXPECT_TRUE(real->becomesReady()) << real->state.step.toStdString();

    ASSERT_TRUE(real->standIn.updateBehaviour(R"({"errorPage": 1})").ok());
    real->page->openStartPage();
    EXPECT_TRUE(says("The page shows an error, trying again"));
    EXPECT_TRUE(real->becomesReady()) << real->state.step.toStdString();

    // Another name of this computer is another site, as after a redirect.
    const QString elsewhere = QString(real->settings.StartAddress).replace(u"127.0.0.1"_qs, u"localhost"_qs);
    EXPECT_TRUE(real->browser.client().send(webdriver::NavigateTo{elsewhere}).ok());
    real->standIn.updateBehaviour(R"({"loggedIn": false})").ok();
    EXPECT_TRUE(says("The browser shows another page, localhost, trying again"));
    real->standIn.updateBehaviour(R"({"loggedIn": true})").ok();
    EXPECT_TRUE(real->becomesReady()) << real->state.step.toStdString();
    EXPECT_TRUE(sends(u"after all that"_qs)) << real->lastReason();
}

TEST_F(RealBrowser, OutlinesWhatALocatorFindsForAWhile) {
    const auto frames = [] {
        return run(u"return document.querySelectorAll('#kibo-outline > div').length"_qs).valueOr(-1).toInt();
    };
    const auto list = real->page->outline(u"//*[@id='pane-side']"_qs);
    ASSERT_TRUE(list.ok()) << list.failure().text;
    EXPECT_TRUE(list.value().count == 1 && list.value().visible == 1);
    EXPECT_EQ(frames(), 1);
    EXPECT_TRUE(test::eventually([&] { return frames() == 0; }));
    const auto hidden = real->page->outline(u"head > title"_qs);
    ASSERT_TRUE(hidden.ok());
    EXPECT_TRUE(hidden.value().count == 1 && hidden.value().visible == 0);
    for (const char* wrong : {"//[", "div[", "count(//div)"}) {
        const auto refused = real->page->outline(QString::fromLatin1(wrong));
        ASSERT_TRUE(refused.ok()) << refused.failure().text;
        EXPECT_FALSE(refused.value().understood) << wrong;
    }

    // A locator that changes counts at once.
    const QString saved = real->elements[u"XX_NewChat"_qs];
    real->elements.set(u"XX_NewChat"_qs, u"#nowhere"_qs);
    EXPECT_EQ(real->page->look().newChatControls, 0);
    real->elements.set(u"XX_NewChat"_qs, saved);
}

// The last one: it ends the session, again and again.
TEST_F(RealBrowser, LostSessionIsNoticedWithinOneTickAndTheProfileKeepsItsLogin) {
    const auto driver = [] {
        const auto children = platform::children(platform::ownProcessId());
        const auto found = std::find_if(children.begin(), children.end(), [](const platform::Process& child) {
            return platform::executablePath(child.id).ends_with("/chromedriver");
        });
        return found == children.end() ? platform::Process{} : *found;
    };
    const std::pair<const char*, std::function<void()>> losses[] = {
        {"driver killed", [&] { ::kill(static_cast<pid_t>(driver().id), SIGKILL); }},
        {"browser killed",
         [&] {
             for (const auto& browser : platform::children(driver().id))
                 ::kill(static_cast<pid_t>(browser.id), SIGKILL);
         }},
        {"page crashed", [] { (void)real->browser.client().send(webdriver::NavigateTo{u"chrome://crash"_qs}); }},
    };
    EXPECT_TRUE(run(u"localStorage.setItem('login', 'kept')"_qs).ok());
    real->clock.SystemClock::wait(7000);  // the browser writes it down after five seconds
    for (const auto& [what, lose] : losses) {
        SCOPED_TRACE(what);
        ASSERT_NE(driver().id, 0);
        lose();
        real->clock.SystemClock::wait(300);  // the system takes a moment to tell
        real->state.Timer_KIBO.setEnabled(true);
        real->gateway->machine.Timer_KIBO_Timer();
        EXPECT_EQ(real->state.waurl.text, u"!!"_qs);
        EXPECT_EQ(real->state.status.caption, u"Not Connect"_qs);
        EXPECT_FALSE(real->state.Timer_KIBO.enabled() || real->browser.isOpen());
        EXPECT_TRUE(test::eventually([] { return test::processesNaming(real->folder.path()).empty(); }));

        real->state.waurl.text.clear();
        const auto opened = real->browser.open({real->settings, real->settings.Profil});
        ASSERT_TRUE(opened.ok()) << opened.failure().text;
        EXPECT_TRUE(real->becomesReady());
        const auto login = run(u"return localStorage.getItem('login')"_qs);
        EXPECT_EQ(login.valueOr({}).toString(), u"kept"_qs) << "the profile is the same";
        EXPECT_TRUE(sends(u"again %1"_qs.arg(QLatin1String(what)))) << real->lastReason();
    }
}

}  // namespace
}  // namespace kibo
