#include "main_window/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>

#include "base/settings_file.h"
#include "main_window/setting_indicators.h"
#include "main_window/window_picture.h"
#include "support/window_fixture.h"
#include "widgets/banner.h"
#include "widgets/colour_label.h"
#include "widgets/queue_grid.h"
#include "widgets/window_place.h"

namespace kibo::test {
namespace {

class MainWindowTest : public WindowFixture {
 protected:
    MainWindowActions recorded() {
        MainWindowActions actions;
        const auto calling = [this](const char* name) { return [this, name] { calls.append(QLatin1String(name)); }; };
        actions.openWhatsApp = calling("open");
        actions.stop = calling("stop");
        actions.pause = [this] {
            state.cmd_Pause = {QStringLiteral("4"), QStringLiteral("Continue Sending.."), colour::kLightRed, true};
        };
        actions.refreshOutbox = calling("refresh");
        actions.hideChrome = [this](bool on) { calls.append(on ? QStringLiteral("hide") : QStringLiteral("show")); };
        actions.profileChanged = [this](const QString& profile) { calls.append(QStringLiteral("profile ") + profile); };
        actions.exitProgram = calling("exit");
        actions.unloaded = calling("unloaded");
        return actions;
    }
    static void click(QPushButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

    QStringList calls;
};

TEST_F(MainWindowTest, listsActOnTheMessagesThatWereSelected) {
    auto waiting = std::make_shared<ListRows>();
    for (const char* id : {"11", "12", "13", "14"})
        waiting->append(
            {{}, QStringLiteral("62"), QStringLiteral("a \"b\"\n") + QLatin1String(id), {}, {}, {}, QLatin1String(id)});
    state.ms_out.setRows(waiting);
    std::vector<qint64> chosen;
    MainWindowActions actions = recorded();
    actions.deleteWaiting = actions.queueAgain = [&chosen](const auto& ids) { chosen = ids; };
    build(actions);
    auto* list = find<QueueGrid>("ms_out");
    list->selectRow(3);
    const auto clickRow = [list](int row, Qt::KeyboardModifiers modifiers) {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers,
                          list->visualRect(list->model()->index(row, 1)).center());
    };
    clickRow(2, Qt::ShiftModifier);
    clickRow(0, Qt::ControlModifier);
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(chosen, (std::vector<qint64>{11, 13, 14}));
    find<QAction>("mnCopySelected")->trigger();
    EXPECT_EQ(QApplication::clipboard()->text().section(u'\t', 0, 6).toStdString(),
              "\t62\t\"a \"\"b\"\"\n11\"\t\t\t\t11\n");

    find<QAction>("mnFind")->trigger();
    QTest::keyClicks(find<QLineEdit>("findOutbox"), QStringLiteral("13"));
    EXPECT_EQ(list->model()->rowCount(), 1);
    list->selectRow(0);
    click(find<QPushButton>("cmd_DelOut"));
    EXPECT_EQ(chosen, std::vector<qint64>{13});
    click(find<QPushButton>("cmd_CopyOutbox"));
    EXPECT_EQ(dialogs.said(0), "Info|Outbox Copied to Clipboard..");
    find<QAction>("mnFind")->trigger();
    QTest::keyClick(find<QLineEdit>("findOutbox"), Qt::Key_Escape);
    EXPECT_EQ(list->model()->rowCount(), 4);
    EXPECT_TRUE(list->hasFocus());
}

TEST_F(MainWindowTest, columnsAreRememberedHoweverTheWindowEnds) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("kibo.ini"));
    build(recorded());
    WindowPlace::remember(window.get(), file);
    find<QueueGrid>("ms_out")->horizontalHeader()->resizeSection(1, 77);
    window.reset();
    EXPECT_EQ(ReadIni(QStringLiteral("windows"), QStringLiteral("frm_Gateway2.ms_out"), file),
              QStringLiteral("0,77,0,0,0,0,0"));
}

TEST_F(MainWindowTest, heldRowsStandApartAndTheStoreIsNamed) {
    const auto rows = [](std::initializer_list<const char*> ids) {
        auto list = std::make_shared<ListRows>();
        for (const char* id : ids)
            list->append({QStringLiteral("3"), QStringLiteral("62"), {}, {}, {}, {}, QLatin1String(id)});
        return list;
    };
    state.ms_out.setRows(rows({"11", "12"}));
    state.Outbox_Cnt.caption = QStringLiteral("2");
    state.storeName = QStringLiteral("db.shop.example");
    std::vector<qint64> chosen;
    MainWindowActions actions = recorded();
    actions.deleteWaiting = [&chosen](const auto& ids) { chosen = ids; };
    build(actions);
    auto* list = find<QueueGrid>("ms_out");
    EXPECT_FALSE(find<QLabel>("Held_Cnt")->isVisible());
    state.held.setRows(rows({"7"}));
    window->showState();
    ASSERT_EQ(list->model()->rowCount(), 3);
    EXPECT_EQ(list->cells(2).value(0), QStringLiteral("held"));
    EXPECT_EQ(list->model()->index(2, 1).data(Qt::BackgroundRole).value<QColor>().rgb() & 0xFFFFFF, colour::kHeldRow);
    EXPECT_FALSE(list->model()->index(0, 1).data(Qt::BackgroundRole).isValid());
    EXPECT_EQ(find<QLabel>("Held_Cnt")->text(), QStringLiteral("1 held"));
    EXPECT_EQ(find<QLabel>("Outbox_Cnt")->text(), QStringLiteral("2"));
    list->selectRow(2);
    state.ms_out.setRows(rows({"11", "12", "13"}));
    window->showState();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(chosen, std::vector<qint64>{7});
    EXPECT_EQ(find<QLabel>("store")->text(), QStringLiteral("Database: db.shop.example"));
}

TEST_F(MainWindowTest, muchIsCopiedOrChosenInPiecesAndCanBeBrokenOff) {
    class Many : public RowSource {
     public:
        int rowCount() const override { return 100'000; }
        QString text(int row, int) const override { return QString::number(row); }
    };
    state.ms_out.setRows(std::make_shared<Many>());
    MainWindowActions actions = recorded();
    actions.stopWork = [this] { calls.append(QStringLiteral("stop work")); };
    std::vector<qint64> chosen;
    actions.deleteWaiting = [&chosen](const auto& ids) { chosen = ids; };
    build(actions);
    QApplication::clipboard()->setText(QStringLiteral("before"));
    auto* breakOff = find<QPushButton>("breakOff");
    EXPECT_FALSE(breakOff->isVisible());
    find<QAction>("mnCopyAll")->trigger();
    EXPECT_NE(find<QLabel>("step")->text().indexOf(QStringLiteral(" of 100,000 lines")), -1);
    find<QAction>("mnCopyAll")->trigger();
    EXPECT_NE(dialogs.said(0).find("Please wait"), std::string::npos) << "one thing at a time";
    click(breakOff);
    EXPECT_EQ(calls, QStringList(QStringLiteral("stop work")));
    EXPECT_FALSE(breakOff->isVisible());
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("before"));
    find<QAction>("mnCopyAll")->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(dialogs.shown.size(), 2U, 20'000);
    EXPECT_EQ(QApplication::clipboard()->text().count(u'\n'), 100'000);
    find<QueueGrid>("ms_out")->selectAll();
    find<QAction>("mnDelOut")->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(chosen.size(), 100'000U, 20'000);
    EXPECT_EQ(chosen.back(), 99'999);
    EXPECT_FALSE(breakOff->isVisible());
}

TEST_F(MainWindowTest, sendsClicksAndMenuEntriesBack) {
    state.cmd_Pause.caption = QStringLiteral(";");
    state.cb_Profil.items = QStringList{QStringLiteral("1"), QStringLiteral("2")};
    state.cb_Profil.text = QStringLiteral("1");
    build(recorded());
    click(find<QPushButton>("cmd_OpenWA"));
    click(find<QPushButton>("cmd_OutboxRefresh"));
    find<QAction>("mnRefresh")->trigger();
    QTest::mouseClick(find<QCheckBox>("HideChrome"), Qt::LeftButton, {}, QPoint(8, 12));
    auto* profiles = find<QComboBox>("cb_Profil");
    profiles->setFocus();
    QTest::keyClick(profiles, Qt::Key_Down);
    click(find<QPushButton>("cmd_STOP"));
    find<QAction>("mnexit")->trigger();
    EXPECT_EQ(calls.join(QLatin1Char(',')).toStdString(), "open,refresh,refresh,hide,profile 2,stop,exit");
    EXPECT_TRUE(state.HideChrome.checked);
    EXPECT_EQ(state.cb_Profil.text, QStringLiteral("2"));
    find<QAction>("mnPause")->trigger();
    EXPECT_EQ(find<QPushButton>("cmd_Pause")->toolTip(), QStringLiteral("Continue Sending..")) << "shown at once";
    EXPECT_EQ(find<QAction>("mnPause")->text(), QStringLiteral("&Continue"));
    EXPECT_FALSE(find<QAction>("mncloseall")->isEnabled()) << "an entry without an action is greyed out";
    calls.clear();
    window->close();
    window->show();
    window->close();
    EXPECT_EQ(calls, QStringList{QStringLiteral("unloaded")});
}

TEST_F(MainWindowTest, rulesOfSeveralInstancesAreOfferedToASingleOneToo) {
    int opened = 0;
    MainWindowActions actions;
    actions.openScreen = [&opened](const QString& name) { opened += name == u"frm_autorespon"_qs; };
    build(actions);
    settings.Multi = u"Y"_qs;
    settings.UseMDB = u"N"_qs;
    find<QAction>("mn_autorespon")->trigger();
    EXPECT_TRUE(opened == 1 && dialogs.shown.empty());
    settings.UseMDB = u"Y"_qs;
    dialogs.answers = {false, true};
    for (const int expected : {1, 2}) {
        find<QAction>("mn_autorespon")->trigger();
        EXPECT_EQ(opened, expected);
        EXPECT_TRUE(dialogs.shown.back().text.startsWith(u"It's need MySQL and Use Multi Enabled\n"_qs));
    }
}

TEST_F(MainWindowTest, showsStateThatTheEngineChanged) {
    settings.Break = QStringLiteral("30");
    build(recorded());
    state.status = {QStringLiteral("Ready"), colour::kGreen, colour::kBlack};
    state.cmd_OpenWA.enabled = false;
    state.wait.visible = true;
    state.BreakTime.setEnabled(true);
    state.DetikBreak.text = QStringLiteral("12");
    state.Kirim_Cnt.caption = QStringLiteral("5/5");
    state.txtMsg2.text = QStringLiteral("one\vtwo\rthree\u2028four\r\nfive");
    QTRY_COMPARE_WITH_TIMEOUT(find<QLabel>("status")->text(), QStringLiteral("Ready"), 2000);
    EXPECT_EQ(find<ColourLabel>("status")->background(), colour::kGreen);
    EXPECT_EQ(find<QPlainTextEdit>("txtMsg2")->blockCount(), 5) << "every line break is one";
    EXPECT_FALSE(find<QAction>("mnOpenWA")->isEnabled());
    EXPECT_TRUE(find<QLabel>("wait")->isVisible());
    EXPECT_EQ(find<QProgressBar>("BreakProgress")->value(), 12);
    EXPECT_TRUE(find<QLabel>("lblBatch")->isVisible());
    state.BreakTime.setEnabled(false);
    state.dboff = {true, QStringLiteral("Server shutdown in progress")};
    state.refusedOut = QStringLiteral("Message 17 can't be moved");
    window->showState();
    EXPECT_FALSE(find<QProgressBar>("BreakProgress")->isVisible());
    EXPECT_FALSE(find<QLabel>("lblBatch")->isVisible()) << "that batch is over";
    EXPECT_EQ(find<QLabel>("Outbox_Cnt")->text(), QStringLiteral("–")) << "not none: not known";
    QString banner;
    for (const QLabel* line : window->findChild<Banner*>()->findChildren<QLabel*>()) banner += line->text();
    for (const QString& said : {state.refusedOut, state.dboff.caption})
        EXPECT_TRUE(banner.contains(said)) << banner.toStdString();
}

TEST_F(MainWindowTest, leavesTheDummyNumberToWhoeverTypesIt) {
    state.txt_DUMMY.text = state.cb_DummyContact.text = QStringLiteral("111");
    build();
    auto* field = find<QLineEdit>("txt_DUMMY");
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("6281"));
    window->showState();
    EXPECT_EQ(field->text(), QStringLiteral("6281"));
    EXPECT_EQ(state.txt_DUMMY.text, QStringLiteral("6281"));
    state.txt_DUMMY.text = state.cb_DummyContact.text = QStringLiteral("222");
    window->showState();
    EXPECT_EQ(field->text(), QStringLiteral("222"));
}

TEST_F(MainWindowTest, marksFollowTheirSettings) {
    settings.AutoStart = settings.Multi = QStringLiteral("y");  // only "Y" counts
    settings.UseMDB = settings.NoAgent = QStringLiteral("Y");
    settings.DisableRead = QStringLiteral("N");
    settings.Speed = QStringLiteral("SLOW");
    refreshSettingIndicators(settings, state);
    build();
    QStringList lit;
    for (int i = 1; i <= 14; ++i) {
        auto* mark = find<ColourLabel>(("lb" + QByteArray::number(i)).constData());
        if (mark->background() == colour::kYellow) lit.append(mark->toolTip());
    }
    EXPECT_EQ(lit.join(QLatin1Char(',')).toStdString(), "UseMDB,DisableRead");
    EXPECT_EQ(find<QLabel>("lb14")->text(), QStringLiteral("SLOW"));
}

TEST_F(MainWindowTest, loginCodeFollowsItsFileAndOutlivesAHalfWrittenOne) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("qr000001.jpg"));
    QDateTime time = QDateTime::currentDateTime();
    const auto write = [&](Qt::GlobalColor colour) {
        QImage picture(40, 40, QImage::Format_RGB32);
        picture.fill(colour);
        picture.save(file, "JPG");
        QFile changed(file);
        ASSERT_TRUE(changed.open(QIODevice::ReadWrite));
        changed.setFileTime(time = time.addSecs(20), QFileDevice::FileModificationTime);
    };
    build();
    auto* box = find<QWidget>("pQR");
    auto* image = find<QLabel>("Image1");
    EXPECT_FALSE(box->isVisible());
    const auto shown = [&] {
        window->showState();
        return QColor(image->pixmap().toImage().pixel(9, 9));
    };
    state.pQR = {true, file};
    write(Qt::black);
    EXPECT_LT(shown().lightness(), 20);
    EXPECT_TRUE(box->isVisible());
    EXPECT_GE(image->pixmap().width(), 260) << "a phone must read it";
    write(Qt::white);
    EXPECT_GT(shown().lightness(), 230);
    QFile::resize(file, 20);
    EXPECT_GT(shown().lightness(), 230);
    state.pQR.visible = false;
    window->showState();
    EXPECT_FALSE(box->isVisible());
}

TEST_F(MainWindowTest, picturesAreWrittenWhenSomethingHasEnded) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("window.png"));
    build();
    int pages = 0;
    WindowPicture picture(*window, state, folder.path(), [&](const QString&) { ++pages; });
    picture.look();
    EXPECT_FALSE(QFile::exists(file));
    auto queue = std::make_shared<ListRows>();
    queue->append({});
    state.ms_out.setRows(queue);
    picture.look();
    EXPECT_EQ(pages, 0);
    state.failedCount = 1;
    picture.look();
    picture.look();
    EXPECT_EQ(pages, 1);
    EXPECT_EQ(QImage(file).size(), window->size());
    state.ms_out.setRows(std::make_shared<ListRows>());
    picture.look();
    EXPECT_EQ(pages, 2);
}

TEST_F(MainWindowTest, everyControlIsReachedByTheTabKey) {
    build(recorded());
    QWidget* const first = find<QPushButton>("cmd_OpenWA");
    QStringList reached;
    QWidget* control = first;
    first->setFocus();
    do {
        reached.append(control->objectName());
        QTest::keyClick(control, Qt::Key_Tab);
        control = QApplication::focusWidget();
    } while (control != nullptr && control != first && reached.size() < 40);
    EXPECT_EQ(control, first) << "the tab key goes round";
    qsizetype before = 0;
    for (const char* name : {"cmd_Pause", "cmd_STOP", "cb_Profil", "HideChrome", "findOutbox", "ms_out", "ms",
                             "findInbox", "ms2", "log"}) {
        const qsizetype place = reached.indexOf(QLatin1String(name));
        EXPECT_GT(place, before) << name << " does not come as the eye goes: " << reached.join(u' ').toStdString();
        before = place;
    }
}

}  // namespace
}  // namespace kibo::test
