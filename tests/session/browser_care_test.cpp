#include "session/browser_care.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include "base/settings_file.h"
#include "browser/version_check.h"
#include "support/answering_dialogs.h"
#include "support/files.h"

namespace kibo::test {
namespace {

class BrowserCareTest : public testing::Test {
 protected:
    BrowserCare care() {
        return BrowserCare({.state = state,
                            .settings = settings,
                            .dialogs = dialogs,
                            .programFolder = folder.path(),
                            .settingsFile = folder.filePath(u"kibo.ini"_qs),
                            .hideWindow = [this](bool) { return browserWindow; },
                            .endSession = [this] { ++sessionsEnded; },
                            .cleanUp = targets,
                            .browserVersion = [] { return u"116.0.5845.141"_qs; },
                            .scriptFolder = folder.path()});
    }
    QString ini(const char* key) const {
        return ReadIni(u"kibo"_qs, QLatin1String(key), folder.filePath(u"kibo.ini"_qs));
    }

    GatewayState state;
    Settings settings;
    AnsweringDialogs dialogs;
    QTemporaryDir folder;
    CleanUpTargets targets;  // nothing: the usual ones would end other people's drivers
    bool browserWindow = false;
    int sessionsEnded = 0;
};

TEST_F(BrowserCareTest, writesOnlyWhatWasDone) {
    BrowserCare browserCare = care();
    browserCare.HideChrome_Click(true);
    EXPECT_EQ(ini("HideChrome"), QString()) << "there is no window to hide";
    browserWindow = true;
    browserCare.HideChrome_Click(true);
    EXPECT_EQ(ini("HideChrome"), u"Y"_qs);
    browserCare.cb_Profil_Change(u"2"_qs);
    settings.Multi = u"Y"_qs;
    browserCare.cb_Profil_Change(u"3"_qs);
    EXPECT_EQ(ini("Profil"), u"2"_qs) << "with several sessions the command line names it";
}

TEST_F(BrowserCareTest, newProfileGetsItsFolderAndABadNameIsAskedForAgain) {
    state.cb_Profil.items = QStringList{u"1"_qs};
    state.cb_Profil.text = u"1"_qs;
    dialogs.texts = {u"../x"_qs, u"1"_qs, u"  shop "_qs, std::nullopt};
    BrowserCare browserCare = care();
    browserCare.newProfile();
    EXPECT_EQ(dialogs.shown.size(), 2U) << "two names that can't be";
    EXPECT_TRUE(QDir(folder.filePath(u"profil/shop"_qs)).exists());
    EXPECT_EQ(state.cb_Profil.items.last(), u"shop"_qs);
    EXPECT_EQ(state.cb_Profil.text, u"shop"_qs);
    EXPECT_EQ(ini("Profil"), u"shop"_qs);
    browserCare.newProfile();
    EXPECT_EQ(state.cb_Profil.text, u"shop"_qs) << "cancelled";
}

TEST_F(BrowserCareTest, cleanerAsksFirstAndEndsTheSession) {
    const QString files = folder.filePath(u"files"_qs);
    QDir().mkpath(files);
    targets.folder = files.toStdString();
    dialogs.answers = {false};
    BrowserCare browserCare = care();
    browserCare.mn_cleaner_Click();
    EXPECT_EQ(sessionsEnded, 0);
    EXPECT_TRUE(QFile::exists(files));

    browserCare.mn_cleaner_Click();
    EXPECT_EQ(sessionsEnded, 1);
    EXPECT_FALSE(QFile::exists(files));
    EXPECT_EQ(dialogs.said(0), "Run Cleaner|This Process will Close Your WhatsApp Web\nAre You Sure??");
    EXPECT_EQ(dialogs.said(2), "Cleaner|Done!");
}

TEST_F(BrowserCareTest, versionBoxComesForAnotherMajorVersionOnlyAndDoesNotHoldUpTheStart) {
    const QString chrome = u"116.0.5845.141"_qs;
    EXPECT_FALSE(versionMismatch(u"ChromeDriver 116.0.5845.96 (1a39)"_qs, chrome));
    EXPECT_FALSE(versionMismatch(QString(), chrome));
    EXPECT_FALSE(versionMismatch(u"ChromeDriver 115.0"_qs, QString()));
    writtenScript(folder.filePath(u"cekver"_qs), "sleep 0.3\necho 'ChromeDriver 99.0.1 (x)' > \"$2/ver\"\n");
    dialogs.answers = {false};
    BrowserCare browserCare = care();
    browserCare.checkVersions();
    EXPECT_TRUE(dialogs.shown.empty());
    QTRY_COMPARE_WITH_TIMEOUT(dialogs.shown.size(), 1U, 20'000);
    EXPECT_EQ(dialogs.shown[0].buttons, MessageBox::Buttons::YesNo);
    EXPECT_EQ(dialogs.said(0),
              "Error Version of Chrome|Chromedriver (99) is different with Chrome (116) version..!\nPlease use same "
              "version to make Kibo work properly\n\nDownload the Chromedriver same as Chrome version you are using, "
              "and replace to C:\\Kibo\\App folder\n\nAre you want to update Chromedriver now ?");
}

}  // namespace
}  // namespace kibo::test
