// The rules on every kind of store, through their windows.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>

#include "support/answering_dialogs.h"
#include "support/eventually.h"
#include "support/manual_clock.h"
#include "support/mariadb_server.h"
#include "support/stores.h"
#include "tools/exclusion_screen.h"
#include "tools/exclusion_table.h"
#include "tools/rule_screen.h"
#include "tools/rules_screen.h"

namespace kibo::test {
namespace {

class RulesTest : public testing::TestWithParam<bool> {
 protected:
    void SetUp() override {
        if (GetParam()) {
            server = &MariaDbServer::shared();
            server->empty();
            settings = server->settings(false);
        } else {
            createStores(folder.path());
            settings.UseMDB = u"Y"_qs;
        }
        state.cb_Profil.text = u"1"_qs;
        const Result<void> opened = database.OpenDatabase(settings, folder.path());
        ASSERT_TRUE(opened) << opened.failure().text;
        list = std::make_unique<RulesScreen>(RulesScreen::Parts{database, settings, state, dialogs,
                                                                folder.filePath(u"kibo.ini"_qs), folder.path(),
                                                                [this](const Rule& rule) { entry->openFor(rule); }});
        entry = std::make_unique<RuleScreen>(RuleScreen::Parts{database, settings, state, dialogs, folder.path(),
                                                               [](const auto& step) { step(); },
                                                               [this](qint64 id) { list->grid_refresh(id); }});
    }
    /// What stands in the store, as outside programs see it, cells between bars.
    std::string rows(const char* sql) {
        const QString statement = QString::fromUtf8(sql);
        const QString out = server ? server->run(statement) : sqlite(folder.filePath(u"kb.mdb"_qs), statement);
        return out.trimmed().replace(u'\t', u'|').replace(u'\n', u' ').toStdString();
    }
    /// A rule for each profile, previous id, keyword and kind.
    void rule(const char* profile, const char* previous, const char* keyword, int kind, int next = 0) {
        (void)rows(QStringLiteral("insert into autochat (PROFIL, previd, keyword, answer, tipe, neednext) values "
                                  "('%1', '%2', '%3', 'to %3', %4, %5)")
                       .arg(QLatin1String(profile), QLatin1String(previous), QLatin1String(keyword))
                       .arg(kind)
                       .arg(next)
                       .toUtf8()
                       .constData());
    }
    template <class Control, class Window>
    static Control* in(const std::unique_ptr<Window>& window, const char* name) {
        return window->template findChild<Control*>(QLatin1String(name));
    }
    template <class Window>
    static void press(const std::unique_ptr<Window>& window, const char* name) {
        in<QAbstractButton>(window, name)->click();
    }
    QTableView* grid() { return in<QTableView>(list, "ms"); }
    QString cell(int row, int column) { return grid()->model()->index(row, column).data().toString(); }
    std::string column(int column) {
        QStringList cells;
        for (int row = 0; row < grid()->model()->rowCount(); ++row) cells.append(cell(row, column));
        return cells.join(u' ').toStdString();
    }
    QRgb colour(int row, int column) {
        const QVariant found = grid()->model()->index(row, column).data(Qt::BackgroundRole);
        return found.isValid() ? found.value<QColor>().rgb() & 0xFFFFFF : 0;
    }
    std::string told() { return in<QLabel>(list, "rules_status")->text().toStdString(); }
    bool tells(const std::string& words) {
        return eventually([&] { return told() == words; }) || (ADD_FAILURE() << told(), false);
    }

    QTemporaryDir folder;
    MariaDbServer* server = nullptr;
    Settings settings;
    GatewayState state;
    ManualClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    AnsweringDialogs dialogs;
    std::unique_ptr<RulesScreen> list;
    std::unique_ptr<RuleScreen> entry;
};

TEST_P(RulesTest, ListsThemByKindWithTheirColoursAndTroubles) {
    rule("1", "", "first", 0, 1);
    rule("1", "1", "step", 0);
    rule("1", "77", "lost", 0);
    rule("1", "", "START", 1);
    rule("1", "", "???", 2);
    rule("1", "", "0", 3);
    rule("1", "", "999", 4);
    rule("2", "", "foreign", 0);
    (void)rows("update autochat set run_exe = 'bot' where rowid = 2");
    list->open();
    EXPECT_EQ(column(0), "7 6 5 4 1 2 3");
    EXPECT_EQ(in<QLabel>(list, "Label3")->text(), u"7 row(s)"_qs);
    const QRgb ids[] = {0xC0C0C0, 0xFFC080, 0xFF8080, 0xC0FFC0, 0, 0x00FFFF, 0};
    for (int row = 0; row < 7; ++row) {
        EXPECT_EQ(colour(row, 0), ids[row]) << row;
        EXPECT_EQ(colour(row, 1), row == 4 ? 0xFFFF00 : 0xFFFFFF) << row;
    }
    EXPECT_EQ(cell(6, 12), u"never reached: there is no rule 77"_qs);
    EXPECT_EQ(cell(5, 12), QString());

    auto* search = in<QLineEdit>(list, "Text3");
    for (const auto& [typed, found] :
         {std::pair{"st", "4 1 2 3"}, {"to f", "1"}, {"it's", ""}, {"", "7 6 5 4 1 2 3"}}) {
        search->setText(QLatin1String(typed));
        EXPECT_EQ(column(0), found) << typed;
    }
    press(list, "Command3");
    EXPECT_EQ(dialogs.shown.back().text, u"Data copied to clipboard"_qs);
    EXPECT_EQ(QApplication::clipboard()->text().section(u'\n', 5, 5), u"2\tstep\t1\t=\tto step\t\t\t0\t\tbot\t0\t0"_qs);
    grid()->selectRow(6);
    dialogs.answers = {false, true};
    press(list, "Command5");
    EXPECT_EQ(dialogs.said(dialogs.shown.size() - 1), "Delete|Yakin delete ID 3 ??");
    EXPECT_EQ(rows("select count(*) from autochat"), "8");
    press(list, "Command5");
    EXPECT_EQ(column(0), "7 6 5 4 1 2");
}

TEST_P(RulesTest, ARuleIsTypedStoredAndChanged) {
    rule("2", "", "START", 1);
    list->open();
    press(list, "Command1");
    EXPECT_TRUE(entry->isVisible());
    press(entry, "Command1");
    EXPECT_EQ(rows("select count(*) from autochat"), "1") << "nothing happens without a keyword";
    in<QLineEdit>(entry, "txtkeyword")->setText(u"it's"_qs);
    in<QPlainTextEdit>(entry, "txtAnswer")->setPlainText(u"one\n'two' 😀"_qs);
    in<QComboBox>(entry, "cbLogic")->setCurrentText(u"LIKE"_qs);
    in<QCheckBox>(entry, "cNext")->setChecked(true);
    in<QLineEdit>(entry, "txtPHP")->setText(u"http://x/a.php"_qs);
    press(entry, "Command1");
    EXPECT_FALSE(entry->isVisible());
    EXPECT_EQ(
        rows("select PROFIL, keyword, previd, logic, answer, wa_media, run_exe, exec_php, respon, neednext, tipe "
             "from autochat where rowid = 2"),
        server ? "1|it`s||%|one\\n`two` 😀|||http://x/a.php|0|1|0" : "1|it`s||%|one `two` 😀|||http://x/a.php|0|1|0");
    EXPECT_EQ(column(0), "2") << "the list shows it, and another profile's not";
    in<QLineEdit>(list, "Text3")->setText(u"it's"_qs);
    EXPECT_EQ(column(0), "2") << "found as it was typed";

    grid()->selectRow(0);
    list->findChild<QAction*>(u"mnedit"_qs)->trigger();
    EXPECT_EQ(in<QPlainTextEdit>(entry, "txtAnswer")->toPlainText(), u"one\n`two` 😀"_qs);
    const struct {
        const char *option, *keyword;
        bool tutup, tutup2;
    } kinds[] = {{"Option2", "???", false, true},
                 {"Option3", "0", true, false},
                 {"Option4", "999", true, false},
                 {"Option0", "", false, false},
                 {"Option1", "START", false, true}};
    for (const auto& kind : kinds) {
        press(entry, kind.option);
        EXPECT_EQ(in<QLineEdit>(entry, "txtkeyword")->text(), QLatin1String(kind.keyword));
        EXPECT_EQ(in<QLabel>(entry, "tutup")->isVisible(), kind.tutup) << kind.option;
        EXPECT_EQ(in<QLabel>(entry, "tutup2")->isVisible(), kind.tutup2) << kind.option;
    }
    dialogs.answers = {false};
    entry->close();
    EXPECT_EQ(dialogs.shown.back().text, u"Close without saving the changes?"_qs);
    press(entry, "Command1");
    EXPECT_EQ(rows("select rowid, tipe, keyword from autochat order by rowid"), "1|0|START 2|1|START")
        << "one of all profiles is the greeting";

    in<QLineEdit>(list, "Text3")->clear();
    grid()->selectRow(0);
    press(list, "Command7");
    press(entry, "Command1");
    EXPECT_EQ(rows("select rowid, tipe, keyword, neednext from autochat where rowid = 3"), "3|0|START|0")
        << "a new one";
}

TEST_P(RulesTest, TravelAsFilesAndToOtherProfiles) {
    rule("1", "", "hello", 1, 1);
    rule("1", "3", "two", 0);
    rule("1", "1", "one", 0, 1);
    (void)rows("update autochat set answer = 'a ''b''' where rowid = 2");
    list->open();
    const QString file = folder.filePath(u"rules.csv"_qs);
    dialogs.texts = {file, file, u"2"_qs};
    list->findChild<QAction*>(u"mnExport"_qs)->trigger();
    EXPECT_EQ(told(), "3 rules exported.");
    (void)rows("delete from autochat where rowid = 3");
    list->findChild<QAction*>(u"mnImport"_qs)->trigger();
    ASSERT_TRUE(tells("2 rules imported. 1 rule there already."));
    EXPECT_EQ(rows("select rowid, previd, keyword, tipe from autochat order by rowid"),
              "1||hello|1 2|3|two|0 4|1|one|0 5|4|two|0");
    (void)rows("delete from autochat where rowid = 2");
    list->grid_refresh();
    list->findChild<QAction*>(u"mnCopyTo"_qs)->trigger();
    ASSERT_TRUE(tells("3 rules copied to profile 2."));
    EXPECT_EQ(rows("select rowid, previd, keyword, tipe from autochat where PROFIL = '2' order by rowid"),
              "6||hello|0 7|6|one|0 8|7|two|0");

    // Rules that go round, whichever of them comes first.
    RuleTable table(database);
    const std::vector<Rule> round{{.id = 1, .profile = u"3"_qs, .keyword = u"x"_qs, .previous = u"2"_qs},
                                  {.id = 2, .profile = u"3"_qs, .keyword = u"y"_qs, .previous = u"1"_qs}};
    EXPECT_EQ(table.add(round).value().added, 2);
    EXPECT_EQ(rows("select rowid, previd from autochat where PROFIL = '3' order by rowid"), "9|10 10|9");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(table.add(std::vector<Rule>(50, Rule{.profile = u"4"_qs, .keyword = u"z"_qs}), stop.get_token())
                    .value()
                    .stopped);
    EXPECT_EQ(rows("select count(*) from autochat where PROFIL = '4'"), "0");
}

TEST_P(RulesTest, TheSwitchAsksBeforeItReplacesAnotherBot) {
    settings.EXE = u"/opt/bot"_qs;
    settings.UseBotEXE = u"Y"_qs;
    list->open();
    auto* box = in<QCheckBox>(list, "c_bot2");
    EXPECT_TRUE(box->isChecked());
    dialogs.answers = {false, true};
    box->click();
    EXPECT_TRUE(box->isChecked() && settings.EXE == u"/opt/bot"_qs);
    box->click();
    EXPECT_FALSE(box->isChecked() || isYes(settings.UseBotEXE));
    box->click();
    EXPECT_TRUE(isYes(settings.UseBotEXE));
    EXPECT_EQ(settings.EXE, folder.filePath(u"autochat"_qs));
    EXPECT_NE(told().find("nothing answers yet"), std::string::npos) << "there is no such program";
}

TEST_P(RulesTest, TheExclusionListReplacesTheProfilesAlone) {
    (void)rows("insert into autochat_exclude values ('1', 'old'), ('2', 'foreign')");
    auto screen = std::make_unique<ExclusionScreen>(ExclusionScreen::Parts{database, state, dialogs});
    screen->open();
    auto* numbers = in<QTableWidget>(screen, "ms");
    ASSERT_EQ(numbers->rowCount(), 1);
    EXPECT_EQ(numbers->item(0, 0)->text(), u"old"_qs);
    QApplication::clipboard()->setText(u"6281\r\nIt's a team\r\n"_qs);
    press(screen, "Command4");
    EXPECT_EQ(in<QLabel>(screen, "l_jml")->text(), u"3"_qs);
    EXPECT_EQ(numbers->horizontalHeaderItem(1)->text(), u"Is Active ?"_qs);
    press(screen, "Command6");
    ASSERT_TRUE(eventually([&] { return !dialogs.shown.empty(); }));
    EXPECT_EQ(dialogs.shown.back().text, u"List Updated"_qs);
    EXPECT_EQ(rows("select count(*), min(wa_no), max(wa_no) from autochat_exclude where profil = '1'"),
              "3||It's a team");
    EXPECT_EQ(rows("select wa_no from autochat_exclude where profil = '2'"), "foreign");

    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(ExclusionTable(database).save(u"2"_qs, {u"x"_qs}, stop.get_token()).value());
    EXPECT_EQ(rows("select wa_no from autochat_exclude where profil = '2'"), "foreign");
    screen->close();
    state.cb_Profil.text = u"shop"_qs;
    screen->open();
    press(screen, "Command6");
    EXPECT_NE(dialogs.shown.back().text.indexOf(u"Only profiles that are numbers"_qs), -1);
}

INSTANTIATE_TEST_SUITE_P(Stores, RulesTest, testing::Bool(),
                         [](const auto& store) { return store.param ? "Server" : "LocalFile"; });

}  // namespace
}  // namespace kibo::test
