#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QTextDocumentFragment>
#include <QTranslator>
#include <set>

#include "app/gateway_application.h"
#include "app/help.h"
#include "app/screen_list.h"
#include "support/eventually.h"
#include "support/files.h"
#include "support/window_fixture.h"
#include "widgets/qt_dialogs.h"
#include "widgets/translation.h"

namespace kibo::test {
namespace {

const QString kForeign = QStringLiteral(R"(<img src="file:///kibo">)");

/// The foreign text as it comes out where Qt decides by its looks whether it is markup; true when it is seen as
/// written.
bool seenAsWritten(const QString& text) {
    const QString seen = Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
    return seen.contains(kForeign);
}

class AllWindowsTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(application.start()) << "in a new folder it makes its stores";
        for (const char* entry : {"mnElement", "mnSend", "mnReply", "mnSent", "mnConfig", "mn_autochat", "mnfilterchat",
                                  "mnHowSql", "mnAbout"})
            application.window()->findChild<QAction*>(QLatin1String(entry))->trigger();
        for (const QWidget* window : QApplication::topLevelWidgets())
            if (auto* entry = window->findChild<QAction*>(u"mnadd"_qs)) entry->trigger();
    }
    /// The foreign text wherever a window shows what isn't the program's own.
    void fill() {
        GatewayState& s = application.state();
        for (Grid* grid : {&s.ms_out, &s.ms, &s.ms2}) {
            auto rows = std::make_shared<ListRows>();
            rows->append(QStringList(grid->header.size(), kForeign));
            grid->setRows(rows);
        }
        for (TextBox* box : {&s.txtid, &s.txtNo, &s.txtMedia, &s.txtFile, &s.txtMsg2}) box->text = kForeign;
        for (QString* text : {&s.step, &s.doneAbout, &s.refusedOut, &s.inboxNotice, &s.pageNotice}) *text = kForeign;
        for (Label* label : {&s.Inbox_Cnt, &s.Outbox_Cnt, &s.Kirim_Cnt, &s.status}) label->caption = kForeign;
        for (Button* button : {&s.cmd_OpenWA, &s.cmd_Pause, &s.cmd_STOP}) button->hint = kForeign;
        s.wait2 = {true, kForeign};
        s.cb_Profil.items.append(kForeign);
        application.window()->showState();
    }
    void expectPlain(const QString& text, const std::string& where) {
        if (!text.contains(QStringLiteral("kibo"))) return;
        ++found;
        EXPECT_TRUE(seenAsWritten(text)) << where << ": " << text.toStdString();
    }

    QTemporaryDir folder;
    AnsweringDialogs answered;
    GatewayApplication application{answered, folder.path(), {}};
    int found = 0;
};

TEST_F(AllWindowsTest, noWidgetTakesATextFromOutsideForMarkup) {
    fill();
    QtDialogs boxes;
    boxes.show({kForeign, kForeign});
    boxes.ask({kForeign, kForeign, kForeign}, [](const auto&) {});
    QStringList windows;
    for (const QWidget* widget : QApplication::allWidgets()) {
        const std::string name = widget->metaObject()->className() + (' ' + widget->objectName().toStdString());
        if (widget->isWindow()) windows.append(widget->objectName());
        for (const QString& hint : {widget->toolTip(), widget->statusTip(), widget->whatsThis()})
            expectPlain(hint, name);
        if (const auto* view = qobject_cast<const QAbstractItemView*>(widget); view && view->model()) {
            for (int column = 0; column < view->model()->columnCount(); ++column)
                expectPlain(view->model()->index(0, column).data(Qt::ToolTipRole).toString(), name);
        }
        const auto* label = qobject_cast<const QLabel*>(widget);
        if (!label || label->text().isEmpty() || label->textFormat() == Qt::PlainText) continue;
        EXPECT_TRUE(qobject_cast<const QDialog*>(label->window())) << name << " must say that its text is plain";
        expectPlain(label->text(), name);
    }
    EXPECT_GE(found, 15 + 4 + 1) << "cells, hints of the window, the prompt";
    for (const QString& screen : ScreenList::names())
        EXPECT_TRUE(windows.contains(screen)) << screen.toStdString() << " is to be opened above";
}

/// What stands beside a control's text counts for its window, a menu's entries for the menu.
std::pair<const QWidget*, QList<QString>> captionsOf(const QWidget* widget) {
    QList<QString> captions;
    for (const QAction* entry : widget->actions())
        if (qobject_cast<const QMenu*>(widget) || qobject_cast<const QMenuBar*>(widget)) captions.append(entry->text());
    if (qobject_cast<const QMenu*>(widget)) return {widget, captions};
    if (const auto* label = qobject_cast<const QLabel*>(widget); label && label->buddy())
        captions.append(label->text());
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) captions.append(button->text());
    return {widget->window(), captions};
}

class InEachLanguage : public AllWindowsTest, public testing::WithParamInterface<const char*> {
 protected:
    InEachLanguage() { speak(QString::fromLatin1(GetParam())); }
    ~InEachLanguage() override { qDeleteAll(qApp->findChildren<QTranslator*>()); }
};

INSTANTIATE_TEST_SUITE_P(, InEachLanguage, testing::Values("en", "id"));

TEST_P(InEachLanguage, controlsHaveNamesAndKeysOfTheirOwn) {
    const bool english = GetParam() == std::string("en");
    const auto* open = application.window()->findChild<QAbstractButton*>(QStringLiteral("cmd_OpenWA"));
    EXPECT_EQ(open->text().toStdString(), english ? "&Open WhatsApp" : "Buka &WhatsApp");
    for (const char* pause : {";", "4"}) {
        application.state().cmd_Pause.caption = QLatin1String(pause);
        application.window()->showState();
        std::set<std::pair<const QWidget*, QString>> taken;
        for (const QWidget* widget : QApplication::allWidgets()) {
            const auto [where, captions] = captionsOf(widget);
            for (const QString& caption : captions) {
                const QString key = QKeySequence::mnemonic(caption).toString();
                EXPECT_TRUE(key.isEmpty() || taken.emplace(where, key).second) << caption.toStdString();
            }
            const QWidget* around = widget->parentWidget();
            const bool isPart = !around || widget->window()->windowType() == Qt::Popup ||
                                qobject_cast<const QComboBox*>(around) || qobject_cast<const QAbstractSpinBox*>(around);
            if (isPart || !(widget->focusPolicy() & Qt::TabFocus) || !widget->isVisibleTo(widget->window())) continue;
            const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
            EXPECT_FALSE(told->text(QAccessible::Name).isEmpty() && told->relations(QAccessible::Label).isEmpty())
                << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
        }
    }
}

TEST_F(AllWindowsTest, f1OpensTheChapterOfTheWindowInFront) {
    const QString opened = folder.filePath(QStringLiteral("opened"));
    writtenScript(folder.filePath(QStringLiteral("xdg-open")), "printf '%s ' \"$1\" >>'" + opened.toUtf8() + "'\n");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder.path().toUtf8() + ':' + path);
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const QString chapter = Help::chapterOf(window->objectName());
        if (chapter.isEmpty()) continue;
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        QTest::keyClick(window, Qt::Key_F1);
        ++found;
        EXPECT_TRUE(eventually([&] { return contentOf(opened).contains('/' + chapter.toUtf8() + ".html "); }))
            << window->objectName().toStdString();
    }
    qputenv("PATH", path);
    EXPECT_EQ(found, ScreenList::names().size() + 1);
    EXPECT_EQ(contentOf(opened).count(".html "), found);
}

}  // namespace
}  // namespace kibo::test
