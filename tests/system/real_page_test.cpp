#include "real_gateway.h"
#include "support/eventually.h"

namespace kibo {
namespace {

using namespace webdriver;
using test::eventually;

/// The page as the gateway's own session and locators see it; each test on a freshly loaded page.
class RealPage : public test::OnRealGateway<10> {
 protected:
    void SetUp() override {
        real->standIn.reset();
        real->behave(R"({"readyDelayMs": 0, "chatOpenDelayMs": 0})");
        ASSERT_TRUE(eventually([] { return look().newChatControls == 1; }));
    }
    static PageLook look() { return real->page->look(); }
    static std::string run(const char* script) {
        const ExecuteScript command{QString::fromUtf8(script)};
        return real->browser.client().send(command).valueOr(u"(failed)"_qs).toString().toStdString();
    }
    static bool becomes(const QString& name, int count) {
        return eventually([&] { return real->page->outline(real->elements[name]).valueOr({}).count == count; });
    }
    /// The locators among `names` that don't find exactly one element.
    static std::string notOnce(const char* names) {
        QStringList wrong = QString::fromLatin1(names).split(u' ');
        wrong.removeIf([](const QString& name) { return becomes(name, 1); });
        return wrong.join(u' ').toStdString();
    }
};

TEST_F(RealPage, ShippedLocatorsFindTheirElementAndNoOther) {
    real->standIn.addContact("628111", "Ayu");
    real->behave(R"({"banner": "Phone not connected"})");
    EXPECT_EQ(notOnce("XX_ReadMessage XX_ChatList XX_SearchBox XX_Info XX_OwnPicture"), "");
    EXPECT_TRUE(matchesNotice(real->elements[u"XXInfo1"_qs], look().banner));
    for (const char* name : {"XX_ChatBox", "XX_QR", "XX_InvalidNumber"}) EXPECT_TRUE(becomes(QLatin1String(name), 0));
    const QString address = real->settings.ChatAddress + u"628111"_qs;
    EXPECT_TRUE(real->page->plantLink(address) && real->page->clickLink(address));
    EXPECT_EQ(notOnce("XX_ChatBox XX_To XX_PP XX_HeaderPicture"), "");
    EXPECT_TRUE(becomes(u"XX_SendButton"_qs, 0)) << "an empty box has no send button";
    EXPECT_TRUE(real->page->lookAtChat(true) && real->page->typeText(u"text"_qs));
    EXPECT_EQ(notOnce("XX_SendButton"), "");
    EXPECT_TRUE(becomes(u"XX_SendFileButton"_qs, 0));
    EXPECT_TRUE(real->page->pressEnter());
    EXPECT_EQ(notOnce("XX_MessageRow"), "");
    real->behave(R"({"updateNotice": true, "renameBox": true})");
    EXPECT_EQ(notOnce("XX_Update"), "");
    EXPECT_TRUE(becomes(u"XX_ChatBox"_qs, 0));
    real->tick();
    EXPECT_TRUE(real->state.pageNotice.contains(u"update"_qs)) << real->state.pageNotice.toStdString();
}

TEST_F(RealPage, WhatRunsInThePageIsHiddenPutBackWhereItLacksAndLeavesNothing) {
    const auto traces = [] {
        return run(
            "return Object.getOwnPropertySymbols(window).length + ' ' +"
            " Object.keys(window).filter((name) => /kibo/i.test(name)).length + ' ' +"
            " document.querySelectorAll('#kirim').length");
    };
    EXPECT_TRUE(real->page->plantLink(real->settings.ChatAddress + u"628111"_qs));
    EXPECT_EQ(traces(), "1 0 1");
    run("delete window[Object.getOwnPropertySymbols(window)[0]]");
    EXPECT_EQ(look().newChatControls, 1);
    EXPECT_EQ(traces(), "1 0 1");
    EXPECT_TRUE(real->browser.client().send(page_module::leave()).ok());
    EXPECT_EQ(traces(), "0 0 0");
    EXPECT_EQ(look().newChatControls, 1) << "and back again";
}

TEST_F(RealPage, ReportHoldsTheStructureAndNothingThatThePageSays) {
    real->standIn.addContact("628155551234", "Zaenab Secret");
    real->standIn.addContact("120363000000000001", "Secret Club");
    for (const char* message : {R"({"number": "628155551234", "text": "a secret 46464646"})",
                                R"({"number": "120363000000000001", "member": "Budi Secret", "text": "secret"})",
                                R"({"number": "628777767890", "text": "https://secret.example/46464646"})"})
        ASSERT_TRUE(real->standIn.act("incoming", message));
    const QString address = real->settings.ChatAddress + u"628155551234"_qs;
    ASSERT_TRUE(eventually([] { return real->page->listChats().value_or(QList<ListedChat>()).size() == 3; }));
    EXPECT_TRUE(real->page->plantLink(address) && real->page->clickLink(address));
    ASSERT_TRUE(becomes(u"XX_ChatBox"_qs, 1));
    EXPECT_TRUE(real->page->lookAtChat(true) && real->page->typeText(u"my secret"_qs));
    run("document.querySelector('#pane-side').insertAdjacentHTML('beforeend', '<div role=\"Secret\" id=\"s46464646\" "
        "class=\"secret\" data-testid=\"secret 1\" data-icon=\"chat 628155551234\" data-46464646=\"46464646\" "
        "data-n=\"46464646\" style=\"background: url(/secret)\" onclick=\"secret()\" lang=\"secret\"><img "
        "alt=\"Secret\" src=\"https://p/secret?u=628155551234\" title=\"Secret\" aria-label=\"Secret 46464646\">"
        "<input value=\"secret\" placeholder=\"Secret\"><!-- secret 46464646 --><script>\"secret\"</script></div>')");
    const Result<QString> report = real->page->report();
    ASSERT_TRUE(report.ok()) << report.failure().text;
    const QString text = report.value();
    for (const char* known :
         {"secret", "zaenab", "budi", "46464646", "628155551234", "55551234", "5555-1234", "767890"})
        EXPECT_FALSE(text.contains(QLatin1String(known), Qt::CaseInsensitive)) << known << '\n' << text.toStdString();
    for (const char* part : {"\nXX_ReadMessage 3\n", "\nXX_EntryTitle 3\n", "data-testid=icon-unread-count",
                             "data-icon=new-chat-outline", "title=text(13)", "\"number(", "alt=text(6) src=address("})
        EXPECT_TRUE(text.contains(QLatin1String(part))) << part << '\n' << text.toStdString();
}

TEST_F(RealPage, ChatsInSightAreListedInEitherLayout) {
    for (int i = 0; i < 500; ++i) real->standIn.addContact(std::to_string(628100000 + i), "Name " + std::to_string(i));
    ASSERT_TRUE(real->standIn.act("incoming", R"({"number": "628100499", "text": "hello"})"));
    const auto listed = [] { return real->page->listChats().value_or(QList<ListedChat>()); };
    ASSERT_TRUE(eventually([&] { return listed().value(0).title == u"Name 499"_qs; }));
    EXPECT_EQ(listed()[0].picture, QString());
    EXPECT_TRUE(listed().size() > 5 && listed().size() < 40) << "the page holds the rows in sight: " << listed().size();
    run("const row = document.querySelectorAll('#pane-side [role=row]')[1];"
        "row.classList.add('_2aBzC');"
        "row.insertAdjacentHTML('beforeend', '<img src=\"data:,?t=s&amp;u=62815%40c.us\">')");
    ASSERT_EQ(listed().size(), 1) << "the older layout's rows come first";
    EXPECT_EQ(listed()[0].picture, u"data:,?t=s&u=62815%40c.us"_qs);
}

TEST_F(RealPage, TicksAreReadWhateverTheirIconsAreCalled) {
    const auto shown = [] {
        // It is not looked for them at every look, but at the first one with other locators.
        real->elements.set(u"XX_QR"_qs, real->elements[u"XX_QR"_qs]);
        const auto list = real->page->watchChatList({});
        const auto chat = real->page->lookAtChat(true);
        if (!list || list->ticks.size() != 1 || !chat || chat->ticks.isEmpty()) return std::pair(-1, -1);
        const EntryTick& entry = list->ticks[0];
        const bool known = entry.title == u"Ayu"_qs && entry.preview == u"two lines"_qs;
        return std::pair(known ? entry.ticks : -1, chat->ticks.last().ticks);
    };
    real->standIn.addContact("628111", "Ayu");
    ASSERT_TRUE(real->standIn.act("incoming", R"({"number": "628222", "text": "two lines"})"));
    const QString address = real->settings.ChatAddress + u"628111"_qs;
    EXPECT_TRUE(real->page->plantLink(address) && real->page->clickLink(address));
    for (const char* style : {"colour", "ack", "title"}) {
        real->behave((R"({"ackDelayMs": 0, "ownTicks": 1, "tickStyle": ")" + std::string(style) + "\"}").c_str());
        ASSERT_TRUE(eventually([] { return real->page->lookAtChat(true).value_or(ChatLook()).boxFocused; }));
        EXPECT_TRUE(real->page->typeText(u"two\nlines"_qs) && real->page->pressEnter());
        for (int ticks = 1; ticks <= 3; ++ticks) {
            EXPECT_TRUE(eventually([&] { return shown() == std::pair(ticks, ticks); }))
                << style << ' ' << ticks << ": " << shown().first << ' ' << shown().second;
            ASSERT_TRUE(real->standIn.act(
                "ticks", R"({"number": "628111", "ticks": )" + std::to_string(std::min(ticks + 1, 3)) + "}"));
        }
    }
}

TEST_F(RealPage, LoginCodeIsPublishedReloadedWhenItExpiresAndLetsIn) {
    real->behave(R"({"pictureNumber": true, "ownNumber": "6285500"})");
    EXPECT_TRUE(look().ownPicture.contains(u"&u=6285500%40c.us"_qs));
    ASSERT_TRUE(real->database.execute(u"insert into web_user (id, qr) values ('1', '')"_qs));
    const auto published = [] { return real->database.OpenRecordset(u"select qr from web_user"_qs).field(0); };
    ASSERT_TRUE(real->standIn.act("logout"));
    ASSERT_TRUE(eventually([] { return look().qrCodes == 1; }));
    EXPECT_EQ(look().newChatControls + look().qrReloads, 0);
    EXPECT_EQ(run("return document.title"), real->browser.pageTitle().toStdString())
        << "known among several while it waits";
    const QString before = look().qrData;
    real->tick();
    EXPECT_EQ(published(), before);
    EXPECT_EQ(real->state.status.background, colour::kRed);
    ASSERT_TRUE(real->standIn.act("expireQr"));
    ASSERT_TRUE(eventually([] { return look().qrReloads == 1; }));
    EXPECT_EQ(look().qrData, before);
    real->gateway->machine.Timer_KIBO_Timer();
    EXPECT_EQ(published(), u"wait"_qs) << "an expired code is not offered to be scanned";
    real->tick();
    EXPECT_EQ(look().qrReloads, 0);
    EXPECT_EQ(published(), look().qrData);
    EXPECT_NE(published(), before);
    ASSERT_TRUE(real->standIn.act("login"));
    EXPECT_TRUE(real->becomesReady());
    EXPECT_EQ(real->state.status.background, colour::kGreen);
}

// A misspelt disturbance would disturb nothing, and its test would pass.
TEST_F(RealPage, BehavioursThatDoNotExistAreRefusedAsAWhole) {
    for (const char* wrong : {R"({"banner": "x", "noSuchKey": 1})", R"({"banner": "x", "loggedIn": "yes"})",
                              R"({"banner": "x", "sendDelayMs": -1})", "{broken"})
        EXPECT_FALSE(real->standIn.updateBehaviour(wrong)) << wrong;
    EXPECT_EQ(real->standIn.behaviour().banner, "");
}

}  // namespace
}  // namespace kibo
