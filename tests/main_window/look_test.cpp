#include <QAbstractButton>
#include <QDir>
#include <QLabel>

#include "app/log.h"
#include "main_window/colour_label.h"
#include "main_window/setting_indicators.h"
#include "window_fixture.h"

namespace kibo::test {
namespace {

struct Look {
    const char* name;
    void (*arrange)(GatewayState&, Settings&);
};

void fillBusy(GatewayState& state, Settings& settings) {
    settings.UseMDB = settings.AutoStart = settings.CaptureQR = settings.UseBotPHP = QStringLiteral("Y");
    settings.DisableRead = QStringLiteral("N");
    settings.Speed = QStringLiteral("VERYSLOW");
    settings.Break = QStringLiteral("60");
    state.status = {QStringLiteral("Ready"), colour::kGreen, colour::kBlack};
    state.ms_out.setRows(std::make_shared<GeneratedRows>(100000, 1));
    auto inbox = std::make_shared<ListRows>();
    inbox->append({QStringLiteral("6281200000001"), QStringLiteral("שלום עולם, מה שלומך היום? זו הודעה ארוכה"),
                   QStringLiteral("5/1/26 10:11"), QString()});
    inbox->append({QStringLiteral("6281200000002"), QStringLiteral("Thanks 👍🏽 see you\nat nine 🎉"),
                   QStringLiteral("15/11/26 22:19"), QStringLiteral("ok")});
    state.ms.setRows(inbox);
    auto unsent = std::make_shared<ListRows>();
    unsent->append({QStringLiteral("6281200000003"), QStringLiteral("A long text that certainly doesn't fit its cell"),
                    QStringLiteral("2026-11-15 22:19:01"), QStringLiteral("the number is not on WhatsApp")});
    state.ms2.setRows(unsent);
    state.Outbox_Cnt.caption = QStringLiteral("100000");
    state.sentCount = 12345;
    state.failedCount = 678;
    state.step = QStringLiteral("Typing message 100234 into the chat");
    state.wait.visible = state.waitread.visible = true;
    state.txtid.text = QStringLiteral("100234");
    state.txtNo.text = QStringLiteral("6281234567890");
    state.txtMsg2.text = QStringLiteral(
        "Dear customer,\n\nyour order 4711 is on its way 🚚. It arrives tomorrow between nine and "
        "eleven.\n\nمرحبا بك، شكرا لطلبك\n\nYours, the shop");
    state.txtMedia.text = QStringLiteral("/srv/pictures/2026/a folder with a rather long name/invoice-4711.jpg");
    state.Kirim_Cnt.caption = QStringLiteral("17/20");
    state.cb_Profil.items = QStringList{QStringLiteral("1"), QStringLiteral("2")};
    state.cb_Profil.text = QStringLiteral("2");
    state.txt_DUMMY.text = state.cb_DummyContact.text = QStringLiteral("6281299999999");
    state.cmd_Pause = {QStringLiteral(";"), QStringLiteral("Pause.."), colour::kLightGreen, true};
    refreshSettingIndicators(settings, state);
}

const Look kLooks[] = {
    {"start", [](GatewayState& state, Settings& settings) { refreshSettingIndicators(settings, state); }},
    {"sending", fillBusy},
    {"break",
     [](GatewayState& state, Settings& settings) {
         fillBusy(state, settings);
         state.cmd_Pause = {QStringLiteral("4"), QStringLiteral("Continue Sending.."), colour::kLightRed, true};
         state.BreakTime.setEnabled(true);
         state.DetikBreak.text = QStringLiteral("23");
         state.wait2 = {true, QStringLiteral("BREAK - 23 / 60")};
         state.wait.visible = false;
         state.l_disableread.visible = true;
     }},
    {"login",
     [](GatewayState& state, Settings& settings) {
         fillBusy(state, settings);
         state.status = Label{QStringLiteral("Not Connect"), colour::kRed, colour::kYellow};
         state.dboff.visible = true;
         state.wait.visible = state.waitread.visible = false;
         state.step = QStringLiteral("Waiting for the login code to be scanned");
         QImage code(33, 33, QImage::Format_Mono);
         for (int y = 0; y < 33; ++y) {
             for (int x = 0; x < 33; ++x) code.setPixel(x, y, (x * 7 + y * 13 + x * y) % 3 == 0);
         }
         const QString file =
             QDir::temp().filePath(QStringLiteral("kibo_look_%1.png").arg(QCoreApplication::applicationPid()));
         code.save(file);
         state.pQR = {true, file};
     }},
};

/// What a control cannot show of its text, as a reason; empty when all is visible.
QString clipped(const QWidget& control) {
    const int width = control.width();
    if (const auto* label = qobject_cast<const QLabel*>(&control)) {
        // Pictures have no text, and what may grow without limit is elided and complete elsewhere.
        if (!label->pixmap().isNull() || qobject_cast<const ElidedLabel*>(label) != nullptr) return {};
        QString text = label->text();
        text.remove(QLatin1Char('&'));
        const int needed = label->wordWrap() ? 0 : label->fontMetrics().horizontalAdvance(text);
        if (needed > width) return QStringLiteral("needs %1 of %2 pixels").arg(needed).arg(width);
        if (label->heightForWidth(width) > label->height()) return QStringLiteral("too low");
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(&control)) {
        if (button->text().isEmpty()) return {};
        const int icon = button->icon().isNull() ? 0 : button->iconSize().width() + 4;
        const int needed = button->fontMetrics().horizontalAdvance(button->text().remove(QLatin1Char('&'))) + icon + 16;
        if (needed > width) return QStringLiteral("needs %1 of %2 pixels").arg(needed).arg(width);
    }
    if (control.isVisible() && control.fontMetrics().height() > control.height()) return QStringLiteral("too low");
    return {};
}

class LookTest : public WindowFixture, public testing::WithParamInterface<Look> {};

TEST_P(LookTest, showsAllTextsAtEverySize) {
    GetParam().arrange(state, settings);
    MainWindowActions actions;
    actions.openWhatsApp = actions.stop = actions.pause = actions.refreshOutbox = [] {};
    actions.hideChrome = [](bool) {};
    build(std::move(actions));
    log::info("engine", QStringLiteral("message 100233: sent in 4,210 ms"));
    log::warning("app", QStringLiteral("OpenRecordset failed [HY000]: no such table: web_user"));
    for (const QSize size : {QSize(1280, 720), QSize(1000, 640), QSize(1600, 900)}) {
        window->resize(size);
        window->showState();
        QCoreApplication::processEvents();
        for (const QWidget* control : window->centralWidget()->findChildren<QWidget*>()) {
            if (!control->isVisibleTo(window.get()) || control->objectName().isEmpty()) continue;
            if (control->objectName().startsWith(QStringLiteral("qt_"))) continue;
            EXPECT_EQ(clipped(*control).toStdString(), "")
                << control->objectName().toStdString() << " at " << size.width() << "x" << size.height();
        }
        const QString folder = qEnvironmentVariable("KIBO_LOOK_PICTURES");
        if (folder.isEmpty()) continue;
        const QString name =
            QStringLiteral("%1/%2-%3.png").arg(folder, QLatin1String(GetParam().name)).arg(size.width());
        EXPECT_TRUE(window->grab().save(name));
    }
    if (!state.pQR.caption.isEmpty()) QFile::remove(state.pQR.caption);
}

INSTANTIATE_TEST_SUITE_P(States, LookTest, testing::ValuesIn(kLooks),
                         [](const auto& param) { return param.param.name; });

}  // namespace
}  // namespace kibo::test
