#include <signal.h>

#include <QElapsedTimer>
#include <algorithm>
#include <iostream>

#include "platform/process.h"
#include "real_gateway.h"
#include "support/eventually.h"
#include "support/processes.h"

namespace kibo {
namespace {

const QString kAni = QStringLiteral("6281234567890");

class RealBrowser : public test::OnRealGateway<10> {
 protected:
    void SetUp() override {
        real->behave(R"({"chatOpenDelayMs": 0, "messageIds": "phone"})");  // as before the last test
        first = real->standIn.received().size();
        failed = real->state.failedCount;
    }

    /// Texts that reached `number` since this test began.
    QStringList arrived(const QString& number = kAni) {
        QStringList texts;
        const auto all = real->standIn.received();
        for (size_t i = first; i < all.size(); ++i)
            if (all[i].number == number.toStdString()) texts.append(QString::fromStdString(all[i].text));
        return texts;
    }
    QStringList send(const QString& text) {
        real->queue(kAni, text);
        real->runQueue();
        real->standIn.waitForReceived(first + 1, std::chrono::milliseconds(300));
        return arrived();
    }
    /// Ticks until the line says `step`.
    static bool tickUntil(const QString& step) {
        for (int i = 0; i < 300 && real->state.step != step; ++i) real->tick();
        return real->state.step == step;
    }
    int newFailures() const { return real->state.failedCount - failed; }
    QString lastReason() const { return real->state.ms2.text(real->state.ms2.rowCount() - 1, 3); }

    size_t first = 0;
    int failed = 0;
};

TEST_F(RealBrowser, TextsArriveAsWritten) {
    const QString texts[] = {
        QStringLiteral("plain"),
        QStringLiteral("several\nlines\n\nand one empty"),
        QStringLiteral("quotes ' \" ` \\ <b>&amp;</b> ${x} %41"),
        QString::fromUtf8("emoji 😀👩‍👩‍👧🇮🇩 and é ﷺ"),
        QString::fromUtf8("مرحبا بالعالم — שלום"),
        QStringLiteral("  inner   blanks  "),
        QString(65'000, QLatin1Char('x')),
    };
    for (const QString& text : texts) real->queue(kAni, text);
    real->runQueue();
    real->standIn.waitForReceived(first + std::size(texts), std::chrono::seconds(5));
    const QStringList got = arrived();
    ASSERT_EQ(got.size(), static_cast<qsizetype>(std::size(texts))) << newFailures() << lastReason().toStdString();
    for (qsizetype i = 0; i < got.size(); ++i) EXPECT_EQ(got[i].trimmed(), texts[i].trimmed()) << i;
    EXPECT_EQ(newFailures(), 0);
}

TEST_F(RealBrowser, MessageTakesFewCommands) {
    const auto commandsOfOneTick = [] {
        const quint64 before = real->browser.client().commandsSent();
        real->gateway->machine.Timer_KIBO_Timer();
        return real->browser.client().commandsSent() - before;
    };
    send(QStringLiteral("warm"));
    for (const char* text : {"first", "second"}) real->queue(kAni, QString::fromLatin1(text));
    EXPECT_LE(commandsOfOneTick(), 9u) << "the first one's number was not known before";
    EXPECT_LE(commandsOfOneTick(), 8u);
    EXPECT_LE(commandsOfOneTick(), 2u) << "with nothing to do";
    EXPECT_EQ(newFailures(), 0) << lastReason().toStdString();
}

TEST_F(RealBrowser, NumberThatIsNotKnownFailsInEitherWording) {
    for (const char* wording : {"new", "old"}) {
        real->behave(qPrintable(QStringLiteral(R"({"unknownNumbers": ["6280000000000"], "unknownText": "%1"})")
                                    .arg(QString::fromLatin1(wording))));
        real->queue(QStringLiteral("6280000000000"), QStringLiteral("x"));
        real->runQueue();
        EXPECT_EQ(lastReason(), QStringLiteral("the number is not on WhatsApp")) << wording;
    }
    EXPECT_EQ(send(QStringLiteral("and goes on")).size(), 1);
    EXPECT_EQ(newFailures(), 2);
}

TEST_F(RealBrowser, DisturbancesCostAtMostTheirOwnMessage) {
    struct {
        const char* behaviour;
        const char* what;
    } const disturbances[] = {
        {R"({"strayTab": 1})", "a tab of the page's own"},
        {R"({"loseFocus": 1})", "focus jumps away"},
        {R"({"swallowEnter": 1})", "Enter is ignored"},
        {R"({"reloadAfterOpen": 1})", "page reloads in the middle"},
        {R"({"editDelayMs": 120, "sendDelayMs": 400})", "slow editor"},
        {R"({"reuseConversation": true})", "conversation element stays"},
        {R"({"messageIds": "none", "editDelayMs": 0, "sendDelayMs": 0})", "nothing names the chat"},
        {R"({"chatOpenDelayMs": {"min": 120, "max": 120}, "startingPopup": true, "reuseConversation": false, "messageIds": "phone"})",
         "slow chat"},
    };
    int sent = 0;
    for (const auto& disturbance : disturbances) {
        real->behave(disturbance.behaviour);
        const size_t before = real->standIn.received().size();
        const int failedBefore = real->state.failedCount;
        const QString text = QString::fromLatin1(disturbance.what);
        real->queue(kAni, text);
        real->runQueue();
        real->standIn.waitForReceived(before + 1, std::chrono::milliseconds(500));
        const auto all = real->standIn.received();
        const bool marked = real->state.failedCount > failedBefore;
        EXPECT_EQ(all.size() - before, marked ? 0u : 1u) << disturbance.what;
        if (all.size() > before) {
            EXPECT_EQ(all.back().number, kAni.toStdString()) << disturbance.what;
            EXPECT_EQ(all.back().text, disturbance.what);
            ++sent;
        }
    }
    EXPECT_GE(sent, 5);
    const standin::Behaviour left = real->standIn.behaviour();
    EXPECT_EQ(left.strayTab + left.loseFocus + left.swallowEnter + left.reloadAfterOpen, 0) << "not disturbed at all";
    real->behave(R"({"chatOpenDelayMs": {"min": 0, "max": 0}})");
    real->tick();
    EXPECT_EQ(real->browser.closeStrayWindows().valueOr(-1), 0) << "stray tabs have been closed";
}

TEST_F(RealBrowser, HungPageCostsALoggedSkip) {
    real->behave(R"({"frozenMs": 4500})");
    QElapsedTimer timer;
    timer.start();
    real->gateway->machine.Timer_KIBO_Timer();
    EXPECT_LT(timer.elapsed(), 6000);
    for (int i = 0; i < 100 && real->state.step != QStringLiteral("Queue empty"); ++i) {
        real->tick();
        real->clock.SystemClock::wait(100);
    }
    EXPECT_EQ(send(QStringLiteral("alive again")).size(), 1) << lastReason().toStdString();
}

// The page opens chats after 0 to 6 s (in tests all times are a tenth), each opening on its own, so that chats come up
// under later messages; most are saved contacts whose chats show a name only.
TEST_F(RealBrowser, NoTextEverReachesAnotherChat) {
    real->behave(qPrintable(QStringLiteral(R"({"chatOpenDelayMs": {"min": 0, "max": %1}, "messageIds": "none"})")
                                .arg(6000 / test::RealGateway::speed(10))));
    for (int i = 0; i < 25; ++i) {
        if (i % 4)
            real->standIn.addContact(QStringLiteral("62855000%1").arg(i, 4, 10, QLatin1Char('0')).toStdString(),
                                     "Contact " + std::to_string(i));
    }
    QHash<QString, QString> numberOf;
    for (int i = 0; i < 100; ++i) {
        const QString number = QStringLiteral("62855000%1").arg(i % 25, 4, 10, QLatin1Char('0'));
        const QString text = QStringLiteral("message %1").arg(i);
        numberOf[text] = number;
        // Every third one to a saved contact goes by name.
        const int contact = i % 25;
        const bool byName = contact % 4 && i % 3 == 0;
        real->queue(byName ? QStringLiteral("Contact %1").arg(contact) : number, text, byName ? 2 : 0);
    }
    real->runQueue(20'000);
    real->standIn.waitForReceived(first + 100 - static_cast<size_t>(newFailures()), std::chrono::seconds(3));
    const auto all = real->standIn.received();
    QSet<QString> seen;
    for (size_t i = first; i < all.size(); ++i) {
        const QString text = QString::fromStdString(all[i].text);
        EXPECT_EQ(all[i].number, numberOf.value(text).toStdString()) << all[i].text;
        EXPECT_FALSE(seen.contains(text)) << "twice: " << all[i].text;
        seen.insert(text);
    }
    EXPECT_EQ(seen.size() + newFailures(), 100);
    EXPECT_GT(seen.size(), 20);
    std::cout << "sent " << seen.size() << ", marked as failed " << newFailures() << std::endl;
}

TEST_F(RealBrowser, WhatStandsInThePageSPlaceIsNamedAndPutRight) {
    const auto ready = [] { return real->state.status.caption == QStringLiteral("Ready"); };
    const auto awaitReady = [&] {
        for (int i = 0; i < 300 && !ready(); ++i) real->tick();
        EXPECT_TRUE(ready()) << real->state.step.toStdString();
    };
    real->behave(R"({"openElsewhere": true})");
    real->gateway->machine.Timer_KIBO_Timer();
    EXPECT_TRUE(real->state.step.contains(QStringLiteral("open in another window"))) << real->state.step.toStdString();
    awaitReady();

    ASSERT_TRUE(real->standIn.updateBehaviour(R"({"errorPage": 1})").ok());
    real->page->openStartPage();
    EXPECT_TRUE(tickUntil(QStringLiteral("The page shows an error, trying again")));
    awaitReady();

    // Another name of this computer is another site, as after a redirect.
    const QString elsewhere =
        QString(real->settings.StartAddress).replace(QStringLiteral("127.0.0.1"), QStringLiteral("localhost"));
    EXPECT_TRUE(real->browser.client().send(webdriver::NavigateTo{elsewhere}).ok());
    real->standIn.updateBehaviour(R"({"loggedIn": false})").ok();
    EXPECT_TRUE(tickUntil(QStringLiteral("The browser shows another page, localhost, trying again")));
    real->standIn.updateBehaviour(R"({"loggedIn": true})").ok();
    awaitReady();
    EXPECT_EQ(send(QStringLiteral("after all that")).size(), 1) << lastReason().toStdString();
}

TEST_F(RealBrowser, ChangedMessageBoxHoldsTheQueue) {
    real->behave(R"({"renameBox": true})");
    real->queue(kAni, QStringLiteral("kept"));
    EXPECT_TRUE(tickUntil(QStringLiteral("Page changed: XX_ChatBox")));
    EXPECT_EQ(real->count("select count(*) from outbox"), 1);
    real->behave(R"({"renameBox": false})");
    real->runQueue();
    real->standIn.waitForReceived(first + 1, std::chrono::seconds(1));
    EXPECT_EQ(arrived(), QStringList(QStringLiteral("kept")));
    EXPECT_EQ(newFailures(), 0);
}

TEST_F(RealBrowser, OutlinesWhatALocatorFindsForAWhile) {
    const auto frames = [] {
        const auto answer = real->browser.client().send(webdriver::ExecuteScript{
            QStringLiteral("return document.querySelectorAll('#kibo-outline > div').length"), {}});
        return answer ? answer.value().toInt() : -1;
    };
    const auto list = real->page->outline(QStringLiteral("//*[@id='pane-side']"));
    ASSERT_TRUE(list.ok()) << list.failure().text;
    EXPECT_EQ(list.value().count, 1);
    EXPECT_EQ(list.value().visible, 1);
    EXPECT_EQ(frames(), 1);
    for (int i = 0; i < 100 && frames() > 0; ++i) SystemClock().wait(100);
    EXPECT_EQ(frames(), 0);

    const auto input = real->page->outline(QStringLiteral("head > title"));
    ASSERT_TRUE(input.ok());
    EXPECT_EQ(input.value().count, 1);
    EXPECT_EQ(input.value().visible, 0);
    for (const char* wrong : {"//[", "div[", "count(//div)"}) {
        const auto refused = real->page->outline(QString::fromLatin1(wrong));
        ASSERT_TRUE(refused.ok()) << refused.failure().text;
        EXPECT_FALSE(refused.value().understood) << wrong;
    }

    // A locator that changes counts at once.
    const QString saved = real->elements[QStringLiteral("XX_NewChat")];
    real->elements.set(QStringLiteral("XX_NewChat"), QStringLiteral("#nowhere"));
    EXPECT_EQ(real->page->look().newChatControls, 0);
    real->elements.set(QStringLiteral("XX_NewChat"), saved);
    EXPECT_EQ(real->page->look().newChatControls, 1);
}

// The last one: it ends the session, again and again.
TEST_F(RealBrowser, LostSessionIsNoticedWithinOneTickAndTheProfileKeepsItsLogin) {
    const auto processes = [] { return test::processesNaming(real->folder.path()); };
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
        {"page crashed",
         [] { (void)real->browser.client().send(webdriver::NavigateTo{QStringLiteral("chrome://crash")}); }},
    };
    EXPECT_TRUE(real->browser.client()
                    .send(webdriver::ExecuteScript{QStringLiteral("localStorage.setItem('login', 'kept')"), {}})
                    .ok());
    real->clock.SystemClock::wait(7000);  // the browser writes it down after five seconds
    for (const auto& [what, lose] : losses) {
        SCOPED_TRACE(what);
        ASSERT_NE(driver().id, 0);
        lose();
        real->clock.SystemClock::wait(300);  // the system takes a moment to tell
        real->state.Timer_KIBO.setEnabled(true);
        real->gateway->machine.Timer_KIBO_Timer();
        EXPECT_EQ(real->state.waurl.text, QStringLiteral("!!"));
        EXPECT_EQ(real->state.status.caption, QStringLiteral("Not Connect"));
        EXPECT_FALSE(real->state.Timer_KIBO.enabled());
        EXPECT_FALSE(real->browser.isOpen());
        EXPECT_TRUE(test::eventually([&] { return processes().empty(); })) << processes().size() << " processes left";

        real->state.waurl.text.clear();
        const auto opened = real->browser.open({real->settings, real->settings.Profil});
        ASSERT_TRUE(opened.ok()) << opened.failure().text;
        for (int i = 0; i < 300 && real->state.status.caption != QStringLiteral("Ready"); ++i) real->tick();
        const auto login = real->browser.client().send(
            webdriver::ExecuteScript{QStringLiteral("return localStorage.getItem('login')"), {}});
        EXPECT_EQ(login.valueOr({}).toString(), QStringLiteral("kept")) << "the profile is the same";
        EXPECT_EQ(send(QStringLiteral("again %1").arg(QLatin1String(what))).size(), 1) << lastReason().toStdString();
        first = real->standIn.received().size();
    }
}

}  // namespace
}  // namespace kibo
