#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "chrome.h"
#include "standin/stand_in.h"

namespace kibo::standin {
namespace {

using nlohmann::json;
using test::Chrome;
using test::eventually;
namespace key = test::key;

constexpr const char* kBox = "//*[@id='main']//footer//div[@contenteditable='true']";
constexpr const char* kSend =
    "//*[@id='main']//footer//*[@data-icon='wds-ic-send-filled' or @data-testid='wds-ic-send-filled' or "
    "@data-icon='send']/ancestor-or-self::*[self::button or @role='button'][1]";
constexpr const char* kTitle = "(//*[@id='main']//header//span[@dir='auto'])[1]";
constexpr const char* kNotice =
    "//*[@data-testid='confirm-popup' or @role='dialog'][contains(.,'on WhatsApp') or contains(.,'url is invalid')]";
constexpr const char* kNewChat = "//*[@data-icon='new-chat-outline' or @data-testid='new-chat-outline']";
constexpr const char* kEntries =
    "//*[@id='pane-side']//*[@role='row' or @role='listitem']"
    "[not(ancestor::*[@role='row' or @role='listitem'])]";
constexpr const char* kAttach =
    "//*[@id='main']//footer//*[@data-testid='plus-rounded' or @data-icon='plus-rounded' or "
    "@data-icon='attach-menu-plus']/ancestor-or-self::*[self::button or @role='button' or self::span][1]";
constexpr const char* kMediaInput = "//input[@type='file'][contains(@accept,'image/') and contains(@accept,'video/')]";
constexpr const char* kDocumentInput = "//input[@type='file'][@accept='*' or not(@accept)]";
constexpr const char* kCaption =
    "//*[@data-testid='media-caption-input-container']/descendant-or-self::*[@contenteditable='true']";
constexpr const char* kSendFile =
    "(//div[@role='button'][starts-with(@aria-label,'Send')]"
    "[.//*[@data-icon='wds-ic-send-filled' or @data-testid='wds-ic-send-filled']])[last()]";
constexpr const char* kQr = "//div[@data-ref]";
constexpr const char* kQrReload = "//*[@data-ref]//button";
constexpr const char* kSearch = "//*[@id='side']//*[self::input or @contenteditable='true'][@data-tab='3']";
constexpr const char* kBanner = "//*[@data-testid='chat-butterbar']";
constexpr const char* kDialog = "//*[@role='dialog']";

/// The page in a real browser: one browser and one stand-in for all tests, each test on a freshly loaded page.
class PageTest : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        standIn_ = std::make_unique<StandIn>();
        chrome_ = std::make_unique<Chrome>();
    }
    static void TearDownTestSuite() {
        chrome_.reset();
        standIn_.reset();
    }

    void SetUp() override {
        chrome().closeOtherTabs();
        loaded_ = false;
        chrome().go("about:blank");  // no page of an earlier test reports into this one
        standIn().reset();
        change(R"({"readyDelayMs": 0, "chatOpenDelayMs": 0, "noticeDelayMs": 0, "previewDelayMs": 0,
                   "uploadDelayMs": 0, "ackDelayMs": 0, "linkPreviewDelayMs": 0})");
    }

    static Chrome& chrome() { return *chrome_; }
    static StandIn& standIn() { return *standIn_; }

    /// For the page that is open too, if there is one.
    static void change(const std::string& behaviour) {
        const auto changed = standIn().updateBehaviour(behaviour);
        ASSERT_TRUE(changed) << changed.failure().text;
        ASSERT_TRUE(!loaded_ || standIn().waitUntilPageKnows(std::chrono::seconds(5)));
    }
    static void load() {
        loaded_ = true;
        chrome().go(standIn().address());
        ASSERT_TRUE(eventually([] { return chrome().count(kNewChat) == 1 || chrome().count(kQr) == 1; }));
    }
    /// Plants a link to the chat the way programs do, outside the page's own element.
    static void plant(const std::string& number, const std::string& label = "chat") {
        chrome().run(
            "document.getElementById('link')?.remove(); const link = document.createElement('a'); link.id = 'link';"
            "link.href = '" +
            standIn().chatAddress() + number +
            "'; link.target = '_blank';"
            "link.style = 'position:fixed;z-index:9'; link.innerHTML = '" +
            label + "'; document.body.append(link);");
    }
    static void ask(const std::string& number) {
        plant(number);
        chrome().run("document.getElementById('link').click()");
    }
    static void open(const std::string& number) {
        ask(number);
        ASSERT_TRUE(eventually([&] { return happened("chatOpened", number) && chrome().count(kBox) == 1; }));
    }
    static size_t happened(const std::string& kind, const std::string& number = "") {
        const auto events = standIn().events();
        return static_cast<size_t>(std::count_if(events.begin(), events.end(), [&](const PageEvent& event) {
            return event.kind == kind && (number.empty() || event.number == number);
        }));
    }
    static std::string title() {
        return chrome().run("return document.querySelector('#main header span[dir=auto]')?.innerText ?? ''");
    }
    static std::string box() {
        return chrome().run("return document.querySelector('#main .box')?.innerText ?? '(none)'");
    }
    static bool boxBecomes(const std::string& text) {
        return eventually([&] { return box() == text; });
    }

    static inline bool loaded_ = false;
    static inline std::unique_ptr<StandIn> standIn_;
    static inline std::unique_ptr<Chrome> chrome_;
};

/// Chromium shows a last empty line by one more line break, as in every editable element.
const std::string kEmpty = "\n";

class TemporaryFile {
 public:
    TemporaryFile(const std::string& name, const std::string& content)
        : path_(std::filesystem::temp_directory_path() / (std::to_string(getpid()) + "-" + name)) {
        std::ofstream(path_, std::ios::binary) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    std::string path() const { return path_.string(); }
    std::string name() const { return path_.filename().string(); }

 private:
    std::filesystem::path path_;
};

TEST_F(PageTest, EveryLocatorFindsItsElementAndNoOther) {
    standIn().addContact("628111", "Ayu");
    change(R"({"banner": "Phone not connected", "unknownNumbers": ["628999"]})");
    load();
    EXPECT_EQ(chrome().count(kEntries), 1u);
    EXPECT_EQ(chrome().count("//*[@id='pane-side']"), 1u);
    EXPECT_EQ(chrome().count(kSearch), 1u);
    EXPECT_EQ(chrome().count(kBanner), 1u);
    EXPECT_EQ(chrome().count("//*[@data-testid='navbar-item-profile-photo']//img"), 1u);
    EXPECT_EQ(chrome().count(kBox), 0u);
    EXPECT_EQ(chrome().count(kQr), 0u);

    open("628111");
    EXPECT_EQ(chrome().count(kTitle), 1u);
    EXPECT_EQ(chrome().count("//*[@id='main']//header//img"), 1u);
    EXPECT_EQ(chrome().count(kSend), 0u) << "an empty box has no send button";
    chrome().insertText("text");
    EXPECT_TRUE(eventually([] { return chrome().count(kSend) == 1; }));
    EXPECT_EQ(chrome().count(kSendFile), 0u);

    chrome().click(kAttach);
    EXPECT_EQ(chrome().count(kMediaInput), 1u);
    EXPECT_EQ(chrome().count(kDocumentInput), 1u);
    EXPECT_EQ(chrome().count("//input[@type='file']"), 3u) << "and one that makes stickers";

    ask("628999");
    EXPECT_TRUE(eventually([] { return chrome().count(kNotice) == 1; }));
    chrome().click(std::string(kNotice) + "//button[normalize-space(.)='OK']");
    EXPECT_EQ(chrome().count(kNotice), 0u);

    change(R"({"updateNotice": true})");
    EXPECT_TRUE(
        eventually([] { return chrome().count(std::string(kBanner) + "//button[contains(.,'Refresh')]") == 1; }));
    change(R"({"loggedIn": false})");
    EXPECT_TRUE(eventually([] { return chrome().count(kQr) == 1; }));
    EXPECT_EQ(chrome().count(kNewChat), 0u);
    EXPECT_EQ(chrome().count(kQrReload), 0u);
}

TEST_F(PageTest, OnlyAClickOnTheLinkItselfOpensTheChatInPlace) {
    standIn().addContact("628111", "Ayu");
    load();
    plant("628111");
    chrome().click("//a[@id='link']");
    EXPECT_TRUE(eventually([] { return title() == "Ayu"; }));
    EXPECT_EQ(chrome().tabs(), 1u);
    ask("6281200000001");
    EXPECT_TRUE(eventually([] { return title() == "+62 812-0000-0001"; })) << "an unsaved number is its own title";
    EXPECT_EQ(chrome().tabs(), 1u);

    plant("628111", "<b>child</b>");
    chrome().run("document.querySelector('#link b').click()");
    EXPECT_TRUE(eventually([] { return happened("tab", "628111") == 1; }));
    EXPECT_EQ(chrome().tabs(), 2u);
    EXPECT_EQ(title(), "+62 812-0000-0001");

    chrome().closeOtherTabs();
    change(R"({"readyDelayMs": 60000})");
    chrome().go(standIn().address());
    ask("628111");
    EXPECT_TRUE(eventually([] { return happened("tab", "628111") == 2; })) << "before the application is ready";
}

TEST_F(PageTest, OpeningsEndInTheOrderOfTheirDelays) {
    load();
    open("628100");
    change(R"({"chatOpenDelayMs": 1500})");
    ask("628200");
    EXPECT_TRUE(eventually([] { return happened("startingPopup", "628200") == 1; }));
    EXPECT_EQ(chrome().count(kDialog), 1u);
    EXPECT_EQ(chrome().count(kNotice), 0u);
    EXPECT_EQ(title(), "+62 810-0") << "the old chat stays until the new one is there";
    chrome().press({key::kEscape});
    EXPECT_EQ(chrome().count(kDialog), 0u);

    change(R"({"chatOpenDelayMs": 0})");
    open("628300");
    EXPECT_EQ(title(), "+62 830-0");
    EXPECT_TRUE(eventually([] { return title() == "+62 820-0"; })) << "Escape closed the popup, not the opening";
}

TEST_F(PageTest, CancelEndsAnOpening) {
    change(R"({"chatOpenDelayMs": 1000, "startingPopupMs": 0})");
    load();
    ask("628300");
    EXPECT_TRUE(eventually([] { return chrome().count(kDialog) == 1; }));
    chrome().click(std::string(kDialog) + "//button[.='Cancel']");
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    EXPECT_EQ(happened("chatOpened", "628300"), 0u);
}

TEST_F(PageTest, AnUnknownNumberGetsTheNoticeInTheWordsAskedFor) {
    change(R"({"unknownPrefix": "6289"})");
    load();
    open("628100");
    ask("6289912345678");
    EXPECT_TRUE(eventually([] { return chrome().count(kNotice) == 1; }));
    EXPECT_EQ(chrome().run("return document.querySelector('[role=dialog]').firstChild.innerText"),
              "The number +62 899-1234-5678 isn't on WhatsApp.");
    chrome().press({key::kEscape});
    EXPECT_EQ(chrome().count(kNotice), 0u);
    EXPECT_EQ(chrome().count(kBox), 1u) << "one Escape closes one thing";
    chrome().press({key::kEscape});
    EXPECT_EQ(chrome().count(kBox), 0u);
    EXPECT_EQ(happened("notice", "6289912345678"), 1u);
    EXPECT_EQ(happened("chatClosed", "628100"), 1u);
}

TEST_F(PageTest, TheBoxTakesEditsAndThrowsAwayWhatScriptsPutIntoIt) {
    load();
    open("628111");
    EXPECT_EQ(box(), kEmpty);
    chrome().insertText("satu \xF0\x9F\x98\x80\ndua");
    EXPECT_TRUE(boxBecomes("satu \xF0\x9F\x98\x80\ndua"));
    chrome().press({key::kShift, key::kEnter});
    chrome().sendKeys(kBox, "tiga");
    EXPECT_TRUE(boxBecomes("satu \xF0\x9F\x98\x80\ndua\ntiga"));
    chrome().run("const box = document.querySelector('#main .box'); box.innerHTML = '<p>no</p>'");
    EXPECT_EQ(box(), "satu \xF0\x9F\x98\x80\ndua\ntiga");
    chrome().run("document.querySelector('#main .box span').firstChild.data = 'no'");
    EXPECT_EQ(box(), "satu \xF0\x9F\x98\x80\ndua\ntiga");

    chrome().press({key::kControl, "a"});
    chrome().press({key::kBackspace});
    EXPECT_TRUE(boxBecomes(kEmpty));
    chrome().run(
        "const data = new DataTransfer(); data.setData('text/plain', 'a\\r\\nb\xF0\x9F\x98\x80');"
        "document.querySelector('#main .box').dispatchEvent(new ClipboardEvent('paste', "
        "{clipboardData: data, bubbles: true, cancelable: true}))");
    EXPECT_TRUE(boxBecomes("a\nb\xF0\x9F\x98\x80"));
    chrome().press({key::kBackspace});
    EXPECT_TRUE(boxBecomes("a\nb")) << "a character beyond the BMP goes as one";
    chrome().run("document.execCommand('insertText', false, 'c')");
    EXPECT_TRUE(boxBecomes("a\nbc"));
    EXPECT_TRUE(standIn().received().empty());
}

TEST_F(PageTest, EditsShowLateAndAHastyEnterOvertakesThem) {
    change(R"({"editDelayMs": 400, "hastyEnter": true})");
    load();
    open("628111");
    chrome().insertText("one");
    EXPECT_EQ(box(), kEmpty);
    EXPECT_TRUE(boxBecomes("one"));
    chrome().insertText(" two");
    chrome().press({key::kEnter});
    ASSERT_TRUE(standIn().waitForReceived(1, std::chrono::seconds(5)));
    EXPECT_EQ(standIn().received()[0].text, "one");
}

TEST_F(PageTest, MessagesReachTheServerInOrderAndSurviveAReload) {
    standIn().addContact("628111", "Ayu");
    load();
    open("628111");
    for (const char* text : {"one", "two\nlines", "see https://example.org/x"}) {
        chrome().insertText(text);
        ASSERT_TRUE(boxBecomes(text));
        chrome().press({key::kEnter});
        ASSERT_TRUE(boxBecomes(kEmpty));
    }
    ASSERT_TRUE(standIn().waitForReceived(3, std::chrono::seconds(5)));
    const auto received = standIn().received();
    EXPECT_EQ(received[0].text, "one");
    EXPECT_EQ(received[1].text, "two\nlines");
    EXPECT_TRUE(received[2].linkPreview);
    EXPECT_EQ(received[0].name, "Ayu");

    const auto ids = "//*[starts-with(@data-id,'true_628111@c.us_3EB0')][contains(@class,'message-out')]";
    EXPECT_EQ(chrome().count(ids), 3u);
    EXPECT_TRUE(eventually([] { return chrome().count("//*[@id='main']//*[@data-icon='msg-dblcheck']") == 3; }));
    load();
    open("628111");
    EXPECT_EQ(chrome().count(ids), 3u);
    change(R"({"messageIds": "none"})");
    EXPECT_TRUE(eventually([] { return chrome().count("//*[@data-id]") == 0; }));
}

TEST_F(PageTest, ADraftStaysWithItsChat) {
    change(R"({"reuseConversation": true, "contentLagMs": 400})");
    load();
    open("628100");
    chrome().insertText("draft");
    EXPECT_TRUE(boxBecomes("draft"));
    ask("628200");
    EXPECT_TRUE(eventually([] { return title() == "+62 820-0"; }));
    EXPECT_EQ(box(), "draft") << "the box follows the title late";
    EXPECT_TRUE(boxBecomes(kEmpty));
    ask("628100");
    EXPECT_TRUE(boxBecomes("draft"));
}

TEST_F(PageTest, EachDisturbanceHappensAsOftenAsAsked) {
    change(R"({"swallowEnter": 1, "loseFocus": 1, "reloadAfterOpen": 1})");
    load();
    ask("628111");
    EXPECT_TRUE(eventually([] { return happened("ready") == 2; })) << "reloaded instead of opening";
    open("628111");
    EXPECT_TRUE(eventually([] { return happened("focusLost") == 1; }));
    EXPECT_TRUE(eventually([] { return chrome().run("return document.activeElement.dataset.tab") == "3"; }));
    chrome().click(kBox);
    chrome().insertText("text");
    EXPECT_TRUE(boxBecomes("text"));
    chrome().press({key::kEnter});
    EXPECT_TRUE(eventually([] { return happened("enterSwallowed") == 1; }));
    EXPECT_TRUE(standIn().received().empty());
    chrome().press({key::kEnter});
    EXPECT_TRUE(standIn().waitForReceived(1, std::chrono::seconds(5)));
    EXPECT_EQ(
        standIn().behaviour().swallowEnter + standIn().behaviour().loseFocus + standIn().behaviour().reloadAfterOpen,
        0);

    change(R"({"strayTab": 1, "renameBox": true})");
    EXPECT_TRUE(eventually([] { return chrome().count(kBox) == 0; }));
    chrome().click(kTitle);
    EXPECT_TRUE(eventually([] { return chrome().tabs() == 2; }));
    chrome().click(kTitle);
    EXPECT_EQ(chrome().tabs(), 2u);
}

TEST_F(PageTest, ChosenFilesGoOutWithTheirCaption) {
    const TemporaryFile image("p.png", "not really a picture"), document("bill.pdf", "%PDF");
    load();
    open("628111");
    chrome().click(kAttach);
    chrome().sendKeys(kMediaInput, image.path());
    ASSERT_TRUE(eventually([] { return chrome().count(kSendFile) == 1; }));
    chrome().insertText("a caption");
    EXPECT_TRUE(eventually(
        [] { return chrome().run("return document.querySelector('.caption .box').innerText") == "a caption"; }));
    chrome().click(kSendFile);
    ASSERT_TRUE(standIn().waitForReceived(1, std::chrono::seconds(5)));
    EXPECT_EQ(chrome().count(kCaption), 0u);

    chrome().click(kAttach);
    chrome().sendKeys(kDocumentInput, document.path());
    ASSERT_TRUE(eventually([] { return chrome().count(kCaption) == 1; }));
    chrome().press({key::kEnter});
    ASSERT_TRUE(standIn().waitForReceived(2, std::chrono::seconds(5)));
    const auto received = standIn().received();
    EXPECT_EQ(received[0].kind, "image");
    EXPECT_EQ(received[0].caption, "a caption");
    EXPECT_EQ(received[0].fileName, image.name());
    EXPECT_EQ(received[1].kind, "document");
    EXPECT_EQ(received[1].fileSize, 4);

    chrome().click(kAttach);
    chrome().sendKeys(kDocumentInput, document.path());
    ASSERT_TRUE(eventually([] { return chrome().count(kCaption) == 1; }));
    chrome().press({key::kEscape});
    EXPECT_EQ(chrome().count(kCaption), 0u);
    chrome().insertText("back in the box");
    EXPECT_TRUE(boxBecomes("back in the box"));
}

TEST_F(PageTest, TheListShowsNewsAndTheSearchNarrowsIt) {
    standIn().addContact("628111", "Ayu");
    standIn().addContact("628222", "Budi");
    load();
    ASSERT_TRUE(standIn().act("incoming", R"({"number": "628222", "text": "62815 is\nmy number"})"));
    const auto firstEntry = [] {
        return chrome().run("return document.querySelector('#pane-side [role=row]').innerText");
    };
    ASSERT_TRUE(eventually([&] { return firstEntry().get<std::string>().rfind("Budi\n", 0) == 0; }));
    const std::string entry = firstEntry();
    EXPECT_EQ(entry.substr(entry.find('\n', 5)), "\n62815 is my number\n1") << "title, time, preview, unread";
    EXPECT_EQ(chrome().count("//*[@data-testid='icon-unread-count' or contains(@aria-label,'unread')]"), 1u);

    chrome().click(kSearch);
    chrome().insertText("ayu");
    EXPECT_TRUE(eventually([] { return chrome().count(kEntries) == 1; }));
    chrome().press({key::kEscape});
    EXPECT_TRUE(eventually([] { return chrome().count(kEntries) == 2; }));
    chrome().click(std::string(kEntries) + "[.//span[@title='Budi']]");
    EXPECT_TRUE(eventually([] { return title() == "Budi"; }));
    EXPECT_TRUE(eventually([] { return chrome().count("//*[@data-testid='icon-unread-count']") == 0; }));
}

TEST_F(PageTest, ALongListHoldsOnlyTheRowsInSight) {
    for (int i = 0; i < 500; ++i) standIn().addContact(std::to_string(628100000 + i), "Name " + std::to_string(i));
    load();
    ASSERT_TRUE(eventually([] { return chrome().count(kEntries) > 5; }));
    EXPECT_LT(chrome().count(kEntries), 40u);
    chrome().run("document.getElementById('pane-side').scrollTop = 1e6");
    EXPECT_TRUE(eventually([] { return chrome().count("//*[@id='pane-side']//span[@title='Name 499']") == 1; }));
    EXPECT_EQ(chrome().count("//*[@id='pane-side']//span[@title='Name 0']"), 0u);
}

TEST_F(PageTest, LoggingOutShowsACodeThatExpiresAndReloads) {
    change(R"({"pictureNumber": true, "ownNumber": "6285500"})");
    load();
    const auto photo = chrome().run("return document.querySelector('[data-testid=navbar-item-profile-photo] img').src");
    EXPECT_NE(photo.get<std::string>().find("&u=6285500%40c.us"), std::string::npos);

    ASSERT_TRUE(standIn().act("logout"));
    ASSERT_TRUE(eventually([] { return chrome().count(kQr) == 1; }));
    ASSERT_TRUE(standIn().act("expireQr"));
    ASSERT_TRUE(eventually([] { return chrome().count(kQrReload) == 1; }));
    const auto code = [] {
        return chrome().run("return document.querySelector('[data-ref]').dataset.ref").get<std::string>();
    };
    const std::string before = code();
    chrome().click(kQrReload);
    EXPECT_NE(code(), before);
    EXPECT_EQ(chrome().count(kQrReload), 0u);
    EXPECT_TRUE(eventually([] { return happened("qrReloaded") == 1 && !standIn().behaviour().qrExpired; }));

    change(R"({"qrFirstMs": 50, "qrNextMs": 50, "qrCodes": 2})");
    load();
    EXPECT_TRUE(eventually([] { return chrome().count(kQrReload) == 1; })) << "codes run out by themselves";
    ASSERT_TRUE(standIn().act("login"));
    EXPECT_TRUE(eventually([] { return chrome().count(kNewChat) == 1; }));
}

}  // namespace
}  // namespace kibo::standin
