#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <array>

#include "app/form_load.h"
#include "app/gateway_application.h"
#include "base/log.h"
#include "base/settings_file.h"
#include "session/close_all.h"
#include "session/profile_settings.h"
#include "support/files.h"
#include "support/manual_clock.h"
#include "support/stores.h"
#include "support/window_fixture.h"
#include "widgets/qt_dialogs.h"

namespace kibo::test {
namespace {

/// A program folder with real stores; each test takes away or changes what it is about.
class ProgramFolder : public WindowFixture {
 protected:
    void SetUp() override {
        createStores(folder.path());
        set("DB", "UseMDB", "Y");
    }
    void set(const char* section, const char* key, const char* value) const {
        WriteIni(QLatin1String(section), QLatin1String(key), QLatin1String(value), file("kibo.ini"));
    }
    QString ini(const char* key) const { return ReadIni(QStringLiteral("kibo"), QLatin1String(key), file("kibo.ini")); }
    QString file(const char* name) const { return folder.filePath(QLatin1String(name)); }
    QString shown(std::size_t i) const { return i < dialogs.shown.size() ? dialogs.shown[i].text : QString(); }

    QTemporaryDir folder;
};

using StartUpTest = ProgramFolder;

TEST_F(StartUpTest, showsTheWindowWhenAllIsWell) {
    set("kibo", "Profil", "7");
    set("kibo", "DummyContact", "6281");
    QDir(folder.path()).mkpath(QStringLiteral("profil/2"));
    GatewayApplication application(dialogs, folder.path(), {});
    ASSERT_TRUE(application.start());
    EXPECT_TRUE(dialogs.shown.empty()) << shown(0).toStdString();
    EXPECT_TRUE(application.window()->isVisible());
    EXPECT_EQ(application.state().cb_Profil.items.join(u' ').toStdString(), "2 7");
    EXPECT_EQ(application.state().cb_Profil.text, QStringLiteral("7"));
    EXPECT_EQ(application.state().txt_DUMMY.text, QStringLiteral("6281"));
    EXPECT_FALSE(application.state().dboff.visible);
}

TEST_F(StartUpTest, aCrashOfTheLastRunIsToldOnce) {
    written(file("kibo.crash"), "signal 11 SIGSEGV, at address 0x0\n  process 7\n  kibo+0x1234\n");
    const StartUp startUp(dialogs, folder.path());
    for (int times : {1, 1}) {
        startUp.reportCrash();
        EXPECT_EQ(log::newestLines().filter(QStringLiteral("crashed (signal 11 SIGSEGV")).size(), times);
    }
    EXPECT_TRUE(QFile::exists(file("kibo.crash.old")));
}

TEST_F(StartUpTest, asksWhetherToGoOnWithoutADatabase) {
    QFile::remove(file("kb.mdb"));
    dialogs.answers = {false, true};
    EXPECT_FALSE(GatewayApplication(dialogs, folder.path(), {}).start());
    ASSERT_EQ(dialogs.shown.size(), 1U);
    EXPECT_EQ(dialogs.shown[0].icon, MessageBox::Icon::Critical);
    EXPECT_EQ(dialogs.shown[0].buttons, MessageBox::Buttons::YesNo);
    EXPECT_EQ(dialogs.said(0).find("Connection Error|Connection cannot be made, \n"), 0U) << dialogs.said(0);
    EXPECT_TRUE(shown(0).contains(QStringLiteral("kb.mdb")));
    EXPECT_TRUE(
        dialogs.said(0).ends_with("\nPlease recheck the parameters of the server name, User ID and password entered."
                                  "\nAre you want to Edit Config ?"));

    GatewayApplication application(dialogs, folder.path(), {});
    EXPECT_TRUE(application.start());
    EXPECT_EQ(dialogs.shown.size(), 2U);
    const QWidgetList windows = QApplication::topLevelWidgets();
    EXPECT_TRUE(std::any_of(windows.begin(), windows.end(), [](const QWidget* one) {
        return one->objectName() == QStringLiteral("frm_Config") && one->isVisible();
    })) << "Yes leads to the settings";
    EXPECT_TRUE(application.state().dboff.visible);
    EXPECT_FALSE(QFile::exists(file("kb.mdb"))) << "a missing store is never made up";
}

TEST_F(StartUpTest, endsWithADamagedElementStoreOrNoSettingsAlsoWhereNobodyCanAnswer) {
    QFile elements(file("element.sys"));
    ASSERT_TRUE(elements.resize(100));
    UnattendedDialogs unattended;
    for (ProgramDialogs* asked : {static_cast<ProgramDialogs*>(&dialogs), static_cast<ProgramDialogs*>(&unattended)})
        EXPECT_FALSE(GatewayApplication(*asked, folder.path(), {}).start());
    EXPECT_FALSE(unattended.showAndWait({QStringLiteral("t"), QStringLiteral("x"), {}, MessageBox::Buttons::YesNo}));
    EXPECT_TRUE(unattended.showAndWait({QStringLiteral("t"), QStringLiteral("x")}));
    ASSERT_EQ(dialogs.shown.size(), 1U);
    EXPECT_EQ(dialogs.said(0), "Error :(|Sorry..\nApplication can not start..");

    dialogs.answers = {true, false};
    QFile::remove(file("kibo.ini"));
    QDir(folder.path()).mkdir(QStringLiteral("kibo.ini"));
    EXPECT_FALSE(GatewayApplication(dialogs, folder.path(), {}).start()) << "without settings there is no database";
    EXPECT_TRUE(shown(1).contains(QStringLiteral("kibo.ini"))) << shown(1).toStdString();
    EXPECT_TRUE(shown(2).startsWith(QStringLiteral("Connection cannot be made")));
}

TEST_F(StartUpTest, aNewFolderIsReadyToUseAndOnlyItsLocatorsAreEverMadeAgain) {
    const auto dump = [](const QString& store) { return sqlite(store, QStringLiteral(".dump")); };
    const QDir home(folder.filePath(QStringLiteral("new")));
    home.mkpath(QStringLiteral("."));
    dialogs.answers = {false};
    const auto start = [&] { return GatewayApplication(dialogs, home.path(), {}).start(); };
    EXPECT_TRUE(start());
    EXPECT_TRUE(dialogs.shown.empty()) << shown(0).toStdString();
    const Settings written = loadSettings(home.filePath(QStringLiteral("kibo.ini")));
    EXPECT_EQ(written.UseMDB, QStringLiteral("Y"));
    for (const char* name : {"kb.mdb", "element.sys"}) {
        const QString made = home.filePath(QLatin1String(name));
        EXPECT_EQ(dump(made), dump(file(name))) << name;
        EXPECT_EQ(QFile::permissions(made) & (QFile::ReadGroup | QFile::ReadOther), 0) << name;
        QFile::remove(made);
    }
    EXPECT_FALSE(start()) << "a queue that has gone is not made anew";
    EXPECT_TRUE(shown(0).contains(QStringLiteral("kb.mdb"))) << shown(0).toStdString();
    EXPECT_EQ(home.entryList({QStringLiteral("*.mdb"), QStringLiteral("*.sys")}, QDir::Files),
              QStringList(QStringLiteral("element.sys")));
    QFile::remove(home.filePath(QStringLiteral("element.sys")));
    QFile::copy(file("kb.mdb"), home.filePath(QStringLiteral("kb.mdb")));
    EXPECT_TRUE(start()) << "prepared settings and a queue are enough";
}

TEST_F(StartUpTest, endsAtOnceWhicheverBoxStands) {
    const auto boxStands = [] {
        return std::ranges::any_of(QApplication::topLevelWidgets(),
                                   [](const QWidget* one) { return one->isVisible() && one->inherits("QMessageBox"); });
    };
    const auto endsWithABox = [&](const char* why) {
        QtDialogs boxes;
        GatewayApplication application(boxes, folder.path(), {});
        QTimer::singleShot(500, window.get(), [&] {
            EXPECT_TRUE(boxStands()) << why;
            application.cmd_STOP_Click();
        });
        QTimer::singleShot(5000, window.get(), [] { QCoreApplication::exit(1); });
        const bool started = application.start();
        EXPECT_EQ(started ? QApplication::exec() : 0, 0) << why;
        EXPECT_TRUE(application.ending()) << why;
        EXPECT_FALSE(boxStands()) << why;
        // An exit outside of exec() would end every later loop at once.
        QTimer::singleShot(0, window.get(), [] { QCoreApplication::exit(0); });
        QApplication::exec();
    };
    build();
    GatewayApplication holder(dialogs, folder.path(), {});
    ASSERT_TRUE(holder.start());
    endsWithABox("somebody is there already");
    QFile::remove(file("kb.mdb"));
    endsWithABox("no database");
}

TEST_F(StartUpTest, profilesRunBesideEachOtherAndThePanelHidesTheirWindows) {
    set("kibo", "Multi", "Y");
    GatewayApplication first(dialogs, folder.path(), {QStringLiteral("12")});
    ASSERT_TRUE(first.start());
    EXPECT_TRUE(GatewayApplication(dialogs, folder.path(), {QStringLiteral("13")}).start());
    EXPECT_TRUE(dialogs.shown.empty()) << shown(0).toStdString();
    EXPECT_FALSE(GatewayApplication(dialogs, folder.path(), {QStringLiteral("12")}).start());
    ASSERT_EQ(dialogs.shown.size(), 1U);
    const QString since = QFileInfo(file("run.12.lock")).lastModified().toString(QStringLiteral("hh:mm"));
    EXPECT_EQ(shown(0), QStringLiteral("Kibo already runs here (process %1, since %2)")
                            .arg(QCoreApplication::applicationPid())
                            .arg(since));

    EXPECT_EQ(first.window()->windowTitle(), QStringLiteral("KB App [ 12 ]"));
    EXPECT_TRUE(first.window()->isVisible());
    for (const char* hidden : {"Y", "N"}) {
        set("kibo", "HIDE_ME", hidden);
        QTRY_COMPARE_WITH_TIMEOUT(first.window()->isVisible(), *hidden == 'N', 5000);
    }
}

class FormLoadTest : public ProgramFolder {
 protected:
    void SetUp() override {
        ProgramFolder::SetUp();
        settings.UseMDB = QStringLiteral("Y");
        ASSERT_TRUE(database.OpenDatabase(settings, folder.path()).ok());
        window = std::make_unique<MainWindow>(state, settings, dialogs, MainWindowActions{});
    }
    bool load(const QString& commandLine = QStringLiteral("0"), bool mySql = false) {
        FormLoad form{*window, state, settings, rows, dialogs, folder.path(), file("kibo.ini"), commandLine, mySql};
        form.machineProblem = [this] { return machineProblem; };
        form.startAgent = [this](const QString& program) { agents.append(program); };
        return form.Form_Load();
    }
    std::string outside(const char* sql) const {
        return sqlite(file("kb.mdb"), QLatin1String(sql)).simplified().toStdString();
    }
    /// Each key with its value.
    std::string tmpRows() const { return outside("select tmp_cd || '=' || tmp_val from tmp order by tmp_cd"); }

    SystemClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    InstanceRows rows{database};
    QString machineProblem;
    QStringList agents;
};

TEST_F(FormLoadTest, singleInstanceChecksTheMachineAndASessionOfSeveralAnnouncesItself) {
    settings.HideChrome = settings.Incognito = QStringLiteral("Y");
    ASSERT_TRUE(load(QStringLiteral("12")));
    EXPECT_EQ(tmpRows(), "");
    EXPECT_EQ(state.cb_Profil.text, QStringLiteral("1"))
        << "the command line names a profile in multi-session mode only";
    EXPECT_TRUE(state.HideChrome.checked);
    window->showState();
    EXPECT_FALSE(find<QWidget>("cb_Profil")->isEnabled()) << "no profile is used in incognito mode";
    EXPECT_EQ(ini("HideChrome"), QString());

    machineProblem = QStringLiteral(".NET Framework 3.5 must be installed on this machine!");
    EXPECT_FALSE(load());
    EXPECT_EQ(dialogs.said(0), "Application can not start|" + machineProblem.toStdString());

    settings.Multi = QStringLiteral("Y");  // never asked in this mode
    outside("insert into tmp values ('appname', 'x')");
    ASSERT_TRUE(load(QStringLiteral("12")));
    EXPECT_EQ(tmpRows(), "appname=KB App");
    EXPECT_EQ(state.cb_Profil.text, QStringLiteral("12"));
    EXPECT_EQ(settings.DisableRead, QStringLiteral("N"));
    EXPECT_FALSE(state.HideChrome.checked) << "the browser stays visible";
    EXPECT_EQ(ini("HideChrome"), QStringLiteral("N"));
    EXPECT_EQ(dialogs.shown.size(), 1U);
    EXPECT_TRUE(agents.isEmpty());
}

TEST_F(FormLoadTest, theAgentNeedsMySqlMultiSessionAndAnExplicitN) {
    settings.Multi = QStringLiteral("Y");
    for (const char* noAgent : {"", "Y", "n"}) {
        settings.NoAgent = QLatin1String(noAgent);
        load({}, true);
    }
    settings.NoAgent = QStringLiteral("N");
    load({}, false);
    EXPECT_EQ(agents, QStringList());
    load({}, true);
    EXPECT_EQ(agents, QStringList{folder.path() + QDir::separator() + QStringLiteral("Tarro.exe")});
}

TEST_F(FormLoadTest, theProfilesRowSetsReadingAndDummy) {
    state.cb_Profil.text = QStringLiteral("12");
    settings.DummyContact = QStringLiteral("6281");
    ProfileSettings profile(state, settings, database);
    const auto after = [&](const char* statement) {
        EXPECT_TRUE(database.Execute(QLatin1String(statement)));
        profile.BACA_PROFIL();
        return (settings.DisableRead + u' ' + state.txt_DUMMY.text).toStdString();
    };
    EXPECT_EQ(after("insert into web_user (id, disable_read, wa_no) values ('12', 'Y', '6285'), ('13', 'N', '1')"), " ")
        << "a single session has no row";
    settings.Multi = QStringLiteral("Y");
    settings.UseMDB = QStringLiteral("Y");
    EXPECT_EQ(after("delete from web_user where id = '13'"), " ");
    settings.UseMDB = QStringLiteral("N");
    EXPECT_EQ(after("update web_user set qr = ''"), "Y 6285");
    state.txt_DUMMY.text = QStringLiteral("6289");  // typed by the operator
    EXPECT_EQ(after("update web_user set disable_read = 'N'"), "N 6289");
    EXPECT_EQ(after("update web_user set wa_no = null"), "N 6281");
    EXPECT_EQ(after("update web_user set disable_read = 'Y', wa_no = '6286'"), "Y 6286");
    EXPECT_EQ(after("alter table web_user rename to away"), "Y 6286") << "no answer changes nothing";
    EXPECT_EQ(state.cb_DummyContact.text, QStringLiteral("6286"));
}

TEST_F(FormLoadTest, unloadAndCloseAllRemoveTheirRowsOnly) {
    outside(
        "insert into tmp select value, 'x' from json_each('[\"off000012\", \"off000013\", \"restart\", "
        "\"restart000012\", \"status\", \"status000012\", \"status000013\"]');"
        "insert into web_user (id, qr) values ('12', 'code'), ('13', 'code')");
    rows.withdraw(QStringLiteral("12"));
    const std::string left = "off000013=x restart=x restart000012=x status000013=x";
    EXPECT_EQ(tmpRows(), left);
    EXPECT_EQ(outside("select id from web_user where qr = 'code'"), "13");

    // Copies of a program that no other test knows, in two folders; they don't end when they are asked.
    const QString program = QStringLiteral("copy-%1").arg(QCoreApplication::applicationPid());
    std::array<QProcess, 2> copies;
    for (QProcess& copy : copies) {
        const QString home = folder.filePath(QString::number(&copy - copies.data()));
        QDir().mkpath(home);
        ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/dash"), home + u'/' + program));
        copy.start(home + u'/' + program, {QStringLiteral("-c"), QStringLiteral("trap 'echo asked' TERM; echo; "
                                                                                "while :; do sleep 0.02; done")});
        ASSERT_TRUE(copy.waitForReadyRead());
        copy.readAll();
    }
    bool ended = false;
    ManualClock now;
    CloseAll closeAll({dialogs, rows, now, [&] { ended = true; }, program.toStdString()});
    dialogs.answers = {false, true};
    closeAll.mncloseall_Click();
    EXPECT_EQ(tmpRows(), left);
    closeAll.mncloseall_Click();
    EXPECT_EQ(tmpRows(), "restart=x restart000012=x");
    EXPECT_EQ(dialogs.said(0), "Close All|Are You Sure ??");
    EXPECT_TRUE(dialogs.shown[0].defaultIsNo);
    for (QProcess& copy : copies) EXPECT_TRUE(copy.waitForReadyRead()) << "each is asked before any is ended";
    EXPECT_FALSE(ended) << "the window goes on while they end";
    now.wait(3000);
    QTRY_VERIFY(ended);
    for (QProcess& copy : copies) QTRY_COMPARE(copy.state(), QProcess::NotRunning);
}

}  // namespace
}  // namespace kibo::test
