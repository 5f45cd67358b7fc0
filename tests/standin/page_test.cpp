#include <QDir>
#include <algorithm>

#include "support/eventually.h"
#include "system/real_gateway.h"

namespace kibo {
namespace {

using namespace webdriver;
using test::eventually;

/// Chromium shows a last empty line by one more line break, as in every editable element.
constexpr const char* kEmpty = "\n";

/// The page as the gateway's own session and locators see it; each test on a freshly loaded page.
class StandInPage : public test::OnRealGateway<10> {
 protected:
    void SetUp() override {
        real->page->closeStrayTabs();
        EXPECT_TRUE(send(NavigateTo{QStringLiteral("about:blank")})) << "the former page must report no more";
        real->standIn.reset();
    }

    static Result<QJsonValue> send(const Command& command) { return real->browser.client().send(command); }
    static void load(const char* behaviour = "{}") {
        ASSERT_TRUE(real->standIn.updateBehaviour(
            R"({"readyDelayMs": 0, "chatOpenDelayMs": 0, "noticeDelayMs": 0, "previewDelayMs": 0, "uploadDelayMs": 0,
                "ackDelayMs": 0, "linkPreviewDelayMs": 0})"));
        ASSERT_TRUE(real->standIn.updateBehaviour(behaviour));
        ASSERT_TRUE(send(NavigateTo{real->settings.StartAddress}));
        ASSERT_TRUE(eventually([] { return look().newChatControls + look().qrCodes == 1; }));
    }
    static PageLook look() { return real->page->look(); }
    static std::string title() { return look().chat.title.toStdString(); }
    static std::string run(const char* script) {
        return send(ExecuteScript{QString::fromUtf8(script)})
            .valueOr(QStringLiteral("(failed)"))
            .toString()
            .toStdString();
    }
    static std::vector<Element> find(const QString& locator) {
        return elementsFrom(send(FindElements{{Using::XPath, locator}}).valueOr({}));
    }
    static std::vector<Element> all(const char* name) { return find(real->elements[QLatin1String(name)]); }
    static bool becomes(const char* name, std::size_t count) {
        return eventually([=] { return all(name).size() == count; });
    }
    /// The locators among `names` that don't find exactly one element.
    static std::string notOnce(const char* names) {
        QStringList wrong = QString::fromLatin1(names).split(u' ');
        wrong.removeIf([](const QString& name) { return becomes(qPrintable(name), 1); });
        return wrong.join(u' ').toStdString();
    }
    static void click(const char* name) { EXPECT_TRUE(send(ElementClick{all(name).at(0)})) << name; }
    static void keys(const char* name, const QString& text) {
        EXPECT_TRUE(send(ElementSendKeys{all(name).at(0), text})) << name;
    }
    static void type(const char* text) { EXPECT_TRUE(real->page->typeText(QString::fromUtf8(text))); }
    static void ask(const char* number) {
        const QString address = real->settings.ChatAddress + QLatin1String(number);
        EXPECT_TRUE(real->page->plantLink(address) && real->page->pointLink(address));
        EXPECT_TRUE(real->page->clickLink(address).has_value());
    }
    static void open(const char* number) {
        ask(number);
        ASSERT_TRUE(eventually([=] { return happened("chatOpened", number) > 0 && all("XX_ChatBox").size() == 1; }));
    }
    static int happened(const char* kind, const char* number) {
        const auto events = real->standIn.events();
        return static_cast<int>(std::count_if(events.begin(), events.end(), [=](const standin::PageEvent& event) {
            return event.kind == kind && event.number == number;
        }));
    }
    static std::string box() { return run("return document.querySelector('#main .box').innerText"); }
    static bool boxBecomes(const std::string& text) {
        return eventually([&] { return box() == text; });
    }
};

TEST_F(StandInPage, ShippedLocatorsFindTheirElementAndNoOther) {
    real->standIn.addContact("628111", "Ayu");
    load(R"({"banner": "Phone not connected"})");
    EXPECT_EQ(notOnce("XX_ReadMessage XX_ChatList XX_SearchBox XX_Info XX_OwnPicture"), "");
    EXPECT_TRUE(matchesNotice(real->elements[QStringLiteral("XXInfo1")], look().banner));
    EXPECT_EQ(all("XX_ChatBox").size() + all("XX_QR").size() + all("XX_InvalidNumber").size(), 0u);
    open("628111");
    EXPECT_EQ(notOnce("XX_To XX_PP XX_HeaderPicture"), "");
    EXPECT_EQ(all("XX_SendButton").size(), 0u) << "an empty box has no send button";
    type("text");
    EXPECT_EQ(notOnce("XX_SendButton"), "");
    EXPECT_EQ(all("XX_SendFileButton").size(), 0u);
    real->behave(R"({"updateNotice": true, "renameBox": true})");
    EXPECT_EQ(notOnce("XX_Update"), "");
    EXPECT_TRUE(becomes("XX_ChatBox", 0));
}

TEST_F(StandInPage, ChatsOpenInPlaceByAClickOnTheLinkItselfEachInItsOwnTime) {
    const QString dialog = QStringLiteral("//*[@role='dialog']");
    load();
    open("628100");
    real->behave(R"({"chatOpenDelayMs": 1500, "startingPopupMs": 0})");
    ask("628200");
    EXPECT_TRUE(eventually([&] { return find(dialog).size() == 1; }));
    EXPECT_EQ(title(), "+62 810-0") << "the old chat stays until the new one is there";
    EXPECT_TRUE(real->page->pressEscape());
    EXPECT_EQ(find(dialog).size(), 0u);
    EXPECT_EQ(all("XX_ChatBox").size(), 1u) << "one Escape closes one thing";
    real->behave(R"({"chatOpenDelayMs": 0})");
    open("628300");
    EXPECT_TRUE(eventually([] { return title() == "+62 820-0"; })) << "Escape closed the popup, not the opening";
    EXPECT_EQ(real->page->closeStrayTabs(), 0);

    run("const link = document.querySelector('#kirim a'); link.innerHTML = '<b>child</b>'; link.firstChild.click()");
    EXPECT_TRUE(eventually([] { return happened("tab", "628300") == 1; }));
    EXPECT_EQ(real->page->closeStrayTabs(), 1);
    real->behave(R"({"readyDelayMs": 60000})");
    EXPECT_TRUE(send(Refresh{}));
    ask("628100");
    EXPECT_TRUE(eventually([] { return happened("tab", "628100") == 1; })) << "before the application is ready";
}

TEST_F(StandInPage, BoxTakesEditsLateOrAtOnceAndADraftStaysWithItsChat) {
    load();
    open("628100");
    type("satu 😀\ndua");
    keys("XX_ChatBox", QStringLiteral(" tiga"));
    EXPECT_TRUE(boxBecomes("satu 😀\ndua tiga"));
    run("document.querySelector('#main .box span').firstChild.data = 'no'");
    EXPECT_EQ(box(), "satu 😀\ndua tiga") << "what scripts put into it is thrown away";
    EXPECT_TRUE(real->page->clearBox(Box::Message));
    EXPECT_TRUE(boxBecomes(kEmpty));
    type("b😀");
    keys("XX_ChatBox", QString(QChar(0xE003)));
    EXPECT_TRUE(boxBecomes("b")) << "Backspace takes a character beyond the BMP as one";
    EXPECT_TRUE(real->page->clearBox(Box::Message));
    EXPECT_TRUE(boxBecomes(kEmpty));

    real->behave(R"({"editDelayMs": 400, "hastyEnter": true, "reuseConversation": true, "contentLagMs": 400})");
    type("see https://example.org/x");
    EXPECT_EQ(box(), kEmpty);
    EXPECT_TRUE(boxBecomes("see https://example.org/x"));
    type(" draft");
    EXPECT_TRUE(real->page->pressEnter());
    ASSERT_TRUE(real->standIn.waitForReceived(1, std::chrono::seconds(5)));
    EXPECT_EQ(real->standIn.received()[0].text, "see https://example.org/x");
    EXPECT_TRUE(real->standIn.received()[0].linkPreview);
    EXPECT_TRUE(boxBecomes(" draft"));
    EXPECT_EQ(notOnce("XX_MessageRow"), "");

    ask("628200");
    EXPECT_TRUE(eventually([] { return title() == "+62 820-0"; }));
    EXPECT_EQ(box(), " draft") << "the box follows the title late";
    EXPECT_TRUE(boxBecomes(kEmpty));
    open("628100");
    EXPECT_TRUE(boxBecomes(" draft"));
}

TEST_F(StandInPage, LongListHoldsTheRowsInSightShowsNewsAndIsSearched) {
    for (int i = 0; i < 500; ++i) real->standIn.addContact(std::to_string(628100000 + i), "Name " + std::to_string(i));
    load();
    ASSERT_TRUE(eventually([] { return all("XX_ReadMessage").size() > 5; }));
    EXPECT_LT(all("XX_ReadMessage").size(), 40u);
    const QString last = QStringLiteral("//*[@id='pane-side']//span[@title='Name 499']");
    EXPECT_EQ(find(last).size(), 0u);
    run("document.getElementById('pane-side').scrollTop = 1e6");
    EXPECT_TRUE(eventually([&] { return find(last).size() == 1; }));
    run("document.getElementById('pane-side').scrollTop = 0");

    ASSERT_TRUE(real->standIn.act("incoming", R"({"number": "628100499", "text": "62815 is\nmy number"})"));
    const auto entry = [] { return run("return document.querySelector('#pane-side [role=row]').innerText"); };
    ASSERT_TRUE(eventually([&] { return entry().starts_with("Name 499\n"); }));
    EXPECT_TRUE(entry().ends_with("\n62815 is my number\n1")) << "title, time, preview, unread: " << entry();
    const auto listed = [] { return real->page->listChats().value_or(QList<ListedChat>()); };
    EXPECT_GT(listed().size(), 5);
    EXPECT_EQ(listed().value(0).title, QStringLiteral("Name 499"));
    EXPECT_EQ(listed().value(0).picture, QString());
    run("const row = document.querySelectorAll('#pane-side [role=row]')[1];"
        "row.classList.add('_2aBzC'); row.insertAdjacentHTML('beforeend', '<img "
        "src=\"data:,?t=s&amp;u=62815%40c.us\">')");
    ASSERT_EQ(listed().size(), 1) << "the older layout's rows come first";
    EXPECT_EQ(listed()[0].picture, QStringLiteral("data:,?t=s&u=62815%40c.us"));
    click("XX_SearchBox");
    type("name 499");
    EXPECT_TRUE(becomes("XX_ReadMessage", 1));
    EXPECT_TRUE(send(ElementClick{find(last).at(0)}));
    EXPECT_TRUE(eventually([&] { return entry().ends_with("\n62815 is my number"); })) << "read, so nothing unread";
}

TEST_F(StandInPage, LoginCodeExpiresIsReloadedAndLetsIn) {
    load(R"({"pictureNumber": true, "ownNumber": "6285500"})");
    EXPECT_TRUE(look().ownPicture.contains(QStringLiteral("&u=6285500%40c.us")));
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
    EXPECT_TRUE(eventually([] { return !real->standIn.behaviour().qrExpired; }));

    load(R"({"qrFirstMs": 50, "qrNextMs": 50, "qrCodes": 2})");
    EXPECT_TRUE(eventually([] { return look().qrReloads == 1; })) << "codes run out by themselves";
    ASSERT_TRUE(real->standIn.act("login"));
    EXPECT_TRUE(eventually([] { return look().newChatControls == 1; }));
}

}  // namespace
}  // namespace kibo
