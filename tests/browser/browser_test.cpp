#include "browser/browser.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include "browser/webdriver/error.h"
#include "platform/top_level_windows.h"
#include "raw_server.h"
#include "support/eventually.h"
#include "support/files.h"
#include "support/processes.h"
#include "support/virtual_display.h"

/// With the real browser and driver, headless, each test in a program folder of its own.
namespace kibo {
namespace {

using namespace webdriver;
using test::eventually;

class ShiftedClock : public SystemClock {
 public:
    qint64 monotonicMs() const override { return SystemClock::monotonicMs() + shiftMs; }
    qint64 shiftMs = 0;
};

class BrowserTest : public ::testing::Test {
 protected:
    BrowserTest() {
        settings_.Headless = QStringLiteral("Y");
        settings_.ChromeBinary = QStringLiteral("/nowhere/chrome");  // counts for a portable Chrome only
        settings_.StartAddress = QStringLiteral("data:text/html,<title>start</title><p id=a>text</p>");
    }
    void TearDown() override {
        browser_.quit();
        EXPECT_TRUE(isGone()) << "processes are left behind";
    }

    Result<void> open() { return browser_.open({.settings = settings_, .profile = QStringLiteral("1")}); }

    QJsonValue run(const char* script, QJsonArray arguments = {}) {
        const auto value = browser_.client().send(ExecuteScript{QString::fromUtf8(script), std::move(arguments)});
        EXPECT_TRUE(value) << value.failure().text;
        return value.valueOr({});
    }

    bool isGone() const {
        return eventually([this] { return test::processesNaming(folder_.path()).empty(); });
    }
    /// How many sessions are recorded for the next start of the profile.
    qsizetype sessionRecords() const {
        return QDir(profile_).entryList({QStringLiteral("kibo-session-*")}, QDir::Files | QDir::System).size();
    }

    QTemporaryDir folder_;
    const QString profile_ = folder_.filePath(QStringLiteral("profil/1"));
    Settings settings_;
    ShiftedClock clock_;
    Browser browser_{folder_.path(), clock_};
};

TEST_F(BrowserTest, OpensTheStartAddressAsTheSettingsSay) {
    settings_.Headless = QStringLiteral("N");
    settings_.Multi = QStringLiteral("Y");
    const QString profile = QStringLiteral("it's \"1\"");
    bool armed = false;
    const auto readProfile = [&] {
        EXPECT_FALSE(armed);
        settings_.Headless = QStringLiteral("Y");  // without it the browser finds no display here
    };
    const auto arm = [&] { armed = browser_.windowExists(); };
    const auto opened =
        browser_.open({.settings = settings_, .profile = profile, .readProfile = readProfile, .armStepMachine = arm});
    ASSERT_TRUE(opened) << opened.failure().text;
    EXPECT_TRUE(armed);
    EXPECT_EQ(run("return document.title").toString(), QStringLiteral("[it's \"1\"]"));
    EXPECT_EQ(run("return [outerWidth, outerHeight]").toArray(), QJsonArray({800, 700}));
    EXPECT_TRUE(run("return navigator.userAgent").toString().contains(QStringLiteral("Chrome/86.0.4240.111")));
    EXPECT_TRUE(QDir(folder_.filePath(QStringLiteral("profil/") + profile)).exists(QStringLiteral("Default")));

    const auto picture = browser_.screenshot();
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture.value().startsWith("\x89PNG"));
}

TEST_F(BrowserTest, QuitLeavesNothingAndTheNextSessionUsesTheSameClient) {
    Client& client = browser_.client();
    EXPECT_FALSE(browser_.windowExists());
    EXPECT_TRUE(isSessionGone(client.send(GetTitle{}).failure()));
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(open());
        EXPECT_TRUE(client.send(FindElement{{Using::Css, QStringLiteral("#a")}}));
        EXPECT_EQ(sessionRecords(), 1);
        browser_.quit();
        EXPECT_FALSE(browser_.isOpen());
        EXPECT_TRUE(isGone());
        EXPECT_EQ(sessionRecords(), 0);
    }

    ASSERT_TRUE(open());
    const auto driver = platform::children(platform::ownProcessId());
    ASSERT_EQ(driver.size(), 1u);
    ASSERT_TRUE(platform::terminate(driver[0].id, driver[0].startTime, 0));
    EXPECT_TRUE(isGone()) << "the browser outlives its driver";
    EXPECT_FALSE(browser_.windowExists());
}

TEST_F(BrowserTest, AWindowThatOpenedByItselfIsClosedAndNeverTakenForItsOwn) {
    ASSERT_TRUE(open());
    run("open('data:text/html,y', '', 'width=300,height=300')");
    EXPECT_EQ(browser_.closeStrayWindows().valueOr(-1), 1);
    EXPECT_EQ(run("return document.title").toString(), QStringLiteral("start"));
    run("open('data:text/html,x')");
    ASSERT_TRUE(browser_.client().send(CloseWindow{}));
    EXPECT_FALSE(browser_.windowExists());
}

TEST_F(BrowserTest, AnIncognitoSessionUsesNoProfileAndADriverThatRunsStays) {
    settings_.Incognito = QStringLiteral("Y");
    DriverProcess driver(QStringLiteral("chromedriver"));
    const auto address = driver.start();
    ASSERT_TRUE(address);
    settings_.ChromeDriver = QString::fromLatin1(address.value());
    ASSERT_TRUE(open());
    EXPECT_TRUE(browser_.windowExists());
    EXPECT_FALSE(QDir(folder_.filePath(QStringLiteral("profil"))).exists());
    browser_.quit();
    EXPECT_TRUE(QDir(folder_.path()).isEmpty());

    settings_.Incognito.clear();
    ASSERT_TRUE(open());
    browser_.quit();
    EXPECT_TRUE(isGone());
    EXPECT_TRUE(driver.isRunning());
}

TEST_F(BrowserTest, APageThatHangsCostsItsLimitsAndIsGivenUpAfterAMinute) {
    ASSERT_TRUE(open());
    EXPECT_TRUE(browser_.windowExists());
    const auto script = browser_.client().send(ExecuteScript{QStringLiteral("for (;;) {}")});
    ASSERT_FALSE(script);
    EXPECT_TRUE(isError(script.failure(), ErrorCode::ScriptTimeout)) << script.failure().text;
    // The driver itself is well: a page that only hangs its scripts is given up all the same.
    EXPECT_TRUE(browser_.windowExists());
    clock_.shiftMs += 61'000;
    EXPECT_FALSE(browser_.windowExists());

    // This keeps the driver busy too.
    const auto element = browser_.client().send(FindElement{{Using::Css, QStringLiteral("#a")}});
    ASSERT_FALSE(element);
    EXPECT_TRUE(isTimeout(element.failure())) << element.failure().text;
    EXPECT_FALSE(browser_.windowExists());

    test::RawServer silent([](int) { return test::RawServer::Reply{}; });
    settings_.StartAddress = QString::fromStdString(silent.address());
    ASSERT_TRUE(open()) << "a new session takes its place; a server that doesn't answer doesn't hold the start-up";
    EXPECT_TRUE(browser_.windowExists());
}

TEST_F(BrowserTest, OpensAProfileWhoseSettingsAKillHasCutShort) {
    ASSERT_TRUE(QDir().mkpath(profile_ + QStringLiteral("/Default")));
    for (const char* content : {"", "{\"half"}) {
        for (const char* name : {"/Default/Preferences", "/Local State"}) {
            test::written(profile_ + QLatin1String(name), content);
        }
        const auto opened = open();
        EXPECT_TRUE(opened) << opened.failure().text;
        browser_.quit();
    }
}

TEST_F(BrowserTest, ARefusedStartSaysWhyAndLeavesNothing) {
    QProcess other;  // stands for a gateway that came first on this profile
    other.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(other.waitForStarted());
    ASSERT_TRUE(QDir().mkpath(profile_));
    const platform::Process gateway{other.processId(), platform::processStartTime(other.processId())};
    ASSERT_TRUE(SessionRecords(profile_).write({gateway, {}, {}}));
    auto refused = open();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.failure().kind, FailureKind::InvalidArgument);
    other.kill();
    ASSERT_TRUE(other.waitForFinished());

    settings_.ChromePortable = QStringLiteral("Y");
    refused = open();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.failure().code, errorName(ErrorCode::SessionNotCreated)) << refused.failure().text;
    EXPECT_NE(refused.failure().text.find("/nowhere/chrome"), std::string::npos) << refused.failure().text;
    EXPECT_FALSE(browser_.isOpen());
    EXPECT_EQ(sessionRecords(), 0);
}

TEST_F(BrowserTest, HidesItsOwnWindowAndNoOther) {
    const test::VirtualDisplay display;
    settings_.Headless = QStringLiteral("N");
    // The operator's own browser, of another process.
    const test::XClient other;
    const xcb_window_t otherWindow = other.addWindow(other.root(), "WhatsApp - Chromium");
    settings_.StartAddress = QStringLiteral("data:text/html,<title>Loading</title>");
    ASSERT_TRUE(browser_.open({.settings = settings_, .profile = QStringLiteral("1"), .hideWindow = true}));
    const auto isShown = [](const char* title, bool wanted) {
        const auto window = platform::FindWindowByTitle(title);
        return window && test::XClient().isViewable(static_cast<xcb_window_t>(*window)) == wanted;
    };
    run("document.title = '(1) WhatsApp'");
    EXPECT_TRUE(eventually([&] {
        browser_.hideWhenTitled();
        return isShown("(1) WhatsApp - ", false);
    })) << "the wish counts until it is fulfilled";
    EXPECT_TRUE(browser_.hideWindow(false)) << "a hidden window is found too";
    browser_.hideWhenTitled();
    EXPECT_TRUE(isShown("(1) WhatsApp - ", true)) << "and no longer";
    EXPECT_TRUE(other.isViewable(otherWindow));

    run("document.title = '[1]'");  // as the gateway keeps it once connected
    EXPECT_TRUE(eventually([this] { return browser_.hideWindow(false); }));
    run("document.title = 'another page'");
    EXPECT_TRUE(eventually([this] { return !browser_.hideWindow(true); }));
    browser_.quit();
}

}  // namespace
}  // namespace kibo
