#include "support/eventually.h"
#include "system/real_gateway.h"

namespace kibo {
namespace {

using namespace webdriver;
using test::eventually;

/// The page as the gateway's own session and locators see it; each test on a freshly loaded page.
class StandInPage : public test::OnRealGateway<10> {
 protected:
    void SetUp() override {
        EXPECT_TRUE(send(NavigateTo{u"about:blank"_qs})) << "the former page must report no more";
        real->standIn.reset();
    }

    static Result<QJsonValue> send(const Command& command) { return real->browser.client().send(command); }
    static void load(const char* behaviour = "{}") {
        ASSERT_TRUE(real->standIn.updateBehaviour(R"({"readyDelayMs": 0, "chatOpenDelayMs": 0})"));
        ASSERT_TRUE(real->standIn.updateBehaviour(behaviour));
        ASSERT_TRUE(send(NavigateTo{real->settings.StartAddress}));
        ASSERT_TRUE(eventually([] { return look().newChatControls + look().qrCodes == 1; }));
    }
    static PageLook look() { return real->page->look(); }
    static std::string run(const char* script) {
        return send(ExecuteScript{QString::fromUtf8(script)}).valueOr(u"(failed)"_qs).toString().toStdString();
    }
    static bool becomes(const QString& name, std::size_t count) {
        return eventually([&] {
            const FindElements find{{Using::XPath, real->elements[name]}};
            return elementsFrom(send(find).valueOr({})).size() == count;
        });
    }
    /// The locators among `names` that don't find exactly one element.
    static std::string notOnce(const char* names) {
        QStringList wrong = QString::fromLatin1(names).split(u' ');
        wrong.removeIf([](const QString& name) { return becomes(name, 1); });
        return wrong.join(u' ').toStdString();
    }
    static void type(const char* text) { EXPECT_TRUE(real->page->typeText(QString::fromUtf8(text))); }
};

TEST_F(StandInPage, ShippedLocatorsFindTheirElementAndNoOther) {
    real->standIn.addContact("628111", "Ayu");
    load(R"({"banner": "Phone not connected"})");
    EXPECT_EQ(notOnce("XX_ReadMessage XX_ChatList XX_SearchBox XX_Info XX_OwnPicture"), "");
    EXPECT_TRUE(matchesNotice(real->elements[u"XXInfo1"_qs], look().banner));
    for (const char* name : {"XX_ChatBox", "XX_QR", "XX_InvalidNumber"}) EXPECT_TRUE(becomes(QLatin1String(name), 0));
    const QString address = real->settings.ChatAddress + u"628111"_qs;
    EXPECT_TRUE(real->page->plantLink(address) && real->page->clickLink(address));
    EXPECT_EQ(notOnce("XX_ChatBox XX_To XX_PP XX_HeaderPicture"), "");
    EXPECT_TRUE(becomes(u"XX_SendButton"_qs, 0)) << "an empty box has no send button";
    EXPECT_TRUE(real->page->lookAtChat(true));
    type("text");
    EXPECT_EQ(notOnce("XX_SendButton"), "");
    EXPECT_TRUE(becomes(u"XX_SendFileButton"_qs, 0));
    EXPECT_TRUE(real->page->pressEnter());
    EXPECT_EQ(notOnce("XX_MessageRow"), "");
    real->behave(R"({"updateNotice": true, "renameBox": true})");
    EXPECT_EQ(notOnce("XX_Update"), "");
    EXPECT_TRUE(becomes(u"XX_ChatBox"_qs, 0));
}

TEST_F(StandInPage, ChatsInSightAreListedInEitherLayout) {
    for (int i = 0; i < 500; ++i) real->standIn.addContact(std::to_string(628100000 + i), "Name " + std::to_string(i));
    load();
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

TEST_F(StandInPage, LoginCodeExpiresIsReloadedAndLetsIn) {
    load(R"({"pictureNumber": true, "ownNumber": "6285500"})");
    EXPECT_TRUE(look().ownPicture.contains(u"&u=6285500%40c.us"_qs));
    ASSERT_TRUE(real->standIn.act("logout"));
    ASSERT_TRUE(eventually([] { return look().qrCodes == 1; }));
    EXPECT_EQ(look().newChatControls + look().qrReloads, 0);
    EXPECT_EQ(run("return document.title"), real->browser.pageTitle().toStdString())
        << "known among several while it waits";
    const QString before = look().qrData;
    ASSERT_TRUE(real->standIn.act("expireQr"));
    ASSERT_TRUE(eventually([] { return look().qrReloads == 1; }));
    EXPECT_EQ(look().qrData, before);
    EXPECT_TRUE(real->page->clickQrReload());
    EXPECT_NE(look().qrData, before);
    EXPECT_EQ(look().qrReloads, 0);
    ASSERT_TRUE(real->standIn.act("login"));
    EXPECT_TRUE(eventually([] { return look().newChatControls == 1; }));
}

}  // namespace
}  // namespace kibo
