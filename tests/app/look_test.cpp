#include <QAbstractButton>
#include <QLabel>
#include <QTemporaryDir>

#include "main_window/setting_indicators.h"
#include "support/window_fixture.h"
#include "widgets/colour_label.h"

namespace kibo::test {
namespace {

/// Everything that can be shown, in its longest form.
void fill(GatewayState& state, Settings& settings, const QString& qrFile) {
    settings.UseMDB = settings.AutoStart = settings.CaptureQR = settings.UseBotPHP = QStringLiteral("Y");
    settings.Speed = QStringLiteral("VERYSLOW");
    settings.Break = QStringLiteral("60");
    refreshSettingIndicators(settings, state);
    state.status = Label{QStringLiteral("Not Connect"), colour::kRed, colour::kYellow};
    state.dboff.visible = state.wait.visible = state.waitread.visible = state.l_disableread.visible = true;
    state.step = QStringLiteral("Waiting for the login code to be scanned");
    state.doneAbout = QStringLiteral("Done about 24 Nov 15:40");
    state.pageNotice = QStringLiteral("WhatsApp offers an update: press Refresh on its page");
    state.Outbox_Cnt.caption = QStringLiteral("100000");
    state.sentCount = 12345;
    state.failedCount = 678;
    state.txtid.text = QStringLiteral("100234");
    state.txtNo.text = state.txt_DUMMY.text = state.cb_DummyContact.text = QStringLiteral("6281234567890");
    state.txtMsg2.text = QStringLiteral("Your order is on its way 🚚.\n\nمرحبا بك، شكرا لطلبك\n").repeated(20);
    state.txtMedia.text = QStringLiteral("/srv/pictures/2026/a folder with a rather long name/invoice-4711.jpg");
    state.Kirim_Cnt.caption = QStringLiteral("17/20");
    state.cmd_Pause = {QStringLiteral("4"), QStringLiteral("Continue Sending.."), colour::kLightRed, true};
    state.BreakTime.setEnabled(true);
    state.DetikBreak.text = QStringLiteral("23");
    state.wait2 = {true, QStringLiteral("BREAK - 23 / 60")};
    QImage code(33, 33, QImage::Format_Mono);
    code.fill(1);
    code.save(qrFile);
    state.pQR = {true, qrFile};
}

/// What a control cannot show of its text, as a reason; empty when all is visible.
QString clipped(const QWidget& control) {
    QString text;
    int beside = 0;
    if (const auto* label = qobject_cast<const QLabel*>(&control)) {
        // Pictures have no text, and what may grow without limit is elided and complete elsewhere.
        if (!label->pixmap().isNull() || qobject_cast<const ElidedLabel*>(label) != nullptr) return {};
        if (label->heightForWidth(label->width()) > label->height()) return QStringLiteral("too low");
        if (!label->wordWrap()) text = label->text();
    } else if (const auto* button = qobject_cast<const QAbstractButton*>(&control)) {
        if (button->text().isEmpty()) return {};
        text = button->text();
        beside = 16 + (button->icon().isNull() ? 0 : button->iconSize().width() + 4);
    }
    const int needed = control.fontMetrics().horizontalAdvance(text.remove(u'&')) + beside;
    if (needed > control.width()) return QStringLiteral("needs %1 of %2 pixels").arg(needed).arg(control.width());
    if (control.isVisible() && control.fontMetrics().height() > control.height()) return QStringLiteral("too low");
    return {};
}

using LookTest = WindowFixture;

TEST_F(LookTest, showsAllTextsAtEverySize) {
    const QTemporaryDir folder;
    build();
    for (const bool full : {false, true}) {
        if (full) fill(state, settings, folder.filePath(QStringLiteral("qr.png")));
        for (const QSize size : {QSize(1280, 720), QSize(1000, 640), QSize(1600, 900)}) {
            window->resize(size);
            window->showState();
            QCoreApplication::processEvents();
            for (const QWidget* control : window->centralWidget()->findChildren<QWidget*>()) {
                const QString name = control->objectName();
                if (!control->isVisibleTo(window.get()) || name.isEmpty() || name.startsWith(QStringLiteral("qt_")))
                    continue;
                EXPECT_EQ(clipped(*control).toStdString(), "") << name.toStdString() << " at " << size.width();
            }
        }
    }
}

}  // namespace
}  // namespace kibo::test
