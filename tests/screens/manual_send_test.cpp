#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include "base/settings_file.h"
#include "screens/reply_screen.h"
#include "screens/send_screen.h"
#include "support/answering_dialogs.h"
#include "support/eventually.h"
#include "support/files.h"
#include "support/manual_clock.h"
#include "support/stores.h"
#include "widgets/window_place.h"

namespace kibo::test {
namespace {

class ManualSendTest : public testing::Test {
 protected:
    void SetUp() override {
        createStores(folder.path());
        settings.UseMDB = QStringLiteral("Y");
        ASSERT_TRUE(database.OpenDatabase(settings, folder.path()).ok());
    }
    ManualScreen::Parts parts() {
        return {database,
                settings,
                state,
                clock,
                dialogs,
                {folder.path()},
                [this] { ++refreshed; },
                [](const auto& step) { step(); }};
    }
    template <class Kind>
    Kind& make(const std::function<void(Kind&)>& open) {
        auto made = std::make_unique<Kind>(parts());
        WindowPlace::remember(made.get(), folder.filePath(QStringLiteral("kibo.ini")));
        Kind& kind = *made;
        screen = std::move(made);
        open(kind);
        EXPECT_TRUE(QTest::qWaitForWindowActive(screen.get()));
        return kind;
    }
    SendScreen& openSend() {
        return make<SendScreen>([](SendScreen& send) { send.open(); });
    }
    template <class Control = QWidget>
    Control* find(const char* name) const {
        return screen->findChild<Control*>(QLatin1String(name));
    }
    std::string text(const char* label) const { return find<QLabel>(label)->text().toStdString(); }
    std::string seenRemark(const char* field) const {
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return !screen->findChild<QTimer*>(QStringLiteral("looks"))->isActive(); }));
        return text((std::string("remark_") + field).c_str());
    }
    /// To wherever the keyboard is.
    void type(const char* text) const { QTest::keyClicks(screen->focusWidget(), QString::fromUtf8(text)); }
    void key(Qt::Key key, Qt::KeyboardModifiers with = {}) const { QTest::keyClick(screen->focusWidget(), key, with); }
    void retype(const char* text) const {
        key(Qt::Key_A, Qt::ControlModifier);
        type(text);
    }
    void queue() const { key(Qt::Key_Return, Qt::ControlModifier); }
    std::string focused() const { return screen->focusWidget()->objectName().toStdString(); }
    std::string rows(const char* sql) const {
        return sqlite(folder.filePath(QStringLiteral("kb.mdb")), QLatin1String(sql)).trimmed().toStdString();
    }
    std::string queued() const { return rows("select count(*) from outbox"); }

    QTemporaryDir folder;
    ManualClock clock;
    ErrorPolicy policy;
    Settings settings;
    Database database{clock, policy};
    GatewayState state;
    AnsweringDialogs dialogs;
    std::unique_ptr<ManualScreen> screen;
    int refreshed = 0;
};

TEST_F(ManualSendTest, aMessageIsWrittenByKeyboardAndNothingTypedIsLost) {
    const QString picture = folder.filePath(QStringLiteral("box.png"));
    ASSERT_TRUE(QPixmap(8, 8).save(picture));
    openSend();
    EXPECT_EQ(text("lnow"), "Now :  2026-03-14 15:09:26");
    EXPECT_FALSE(find("Command2")->isEnabled());
    EXPECT_NE(find("Command2")->toolTip().indexOf(folder.path()), -1);

    EXPECT_EQ(focused(), "txtNo");
    EXPECT_EQ(text("remark_txtNo"), "") << "nobody is told off before trying";
    queue();
    EXPECT_EQ(text("remark_txtNo"), "Say to which number it goes.");
    type("+62 811");
    EXPECT_NE(seenRemark("txtNo").find("Too short"), std::string::npos);
    queue();
    type("-2345 ext");
    EXPECT_NE(seenRemark("txtNo").find("exactly this name"), std::string::npos);
    for (int i = 0; i < 4; ++i) key(Qt::Key_Backspace);
    key(Qt::Key_Tab);
    EXPECT_EQ(focused(), "txtMsg");
    type("[Hi|Ho|Hey you");
    EXPECT_NE(seenRemark("txtMsg").find("has no"), std::string::npos);
    queue();
    type("] it's~rdone");
    EXPECT_EQ(seenRemark("txtMsg"), "");
    QSet<QString> previews;
    for (const char* name : {"preview_1", "preview_2", "preview_3"})
        previews.insert(find<QPlainTextEdit>(name)->toPlainText());
    EXPECT_EQ(previews, QSet<QString>({QStringLiteral("Hi it's\ndone"), QStringLiteral("Ho it's\ndone"),
                                       QStringLiteral("Hey you it's\ndone")}));

    dialogs.texts = {picture};
    QTest::keyClick(screen.get(), Qt::Key_B, Qt::AltModifier);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !dialogs.chosenFrom.empty(); }));
    EXPECT_EQ(dialogs.chosenFrom[0].title, QStringLiteral("Select File"));
    EXPECT_EQ(dialogs.chosenFrom[0].kinds.size(), 6);
    EXPECT_EQ(find<QLineEdit>("txtMedia")->text(), picture);
    QTest::keyClick(screen.get(), Qt::Key_F, Qt::AltModifier);
    EXPECT_EQ(focused(), "txtFile");
    type("/no/such.pdf");
    EXPECT_EQ(seenRemark("txtFile"), "The document is not there.");
    queue();
    retype(" ");
    QFile::rename(picture, picture + u'x');
    queue();
    EXPECT_EQ(text("status"), "Not queued. The media file is not there.");
    QFile::rename(picture + u'x', picture);

    QTest::keyClick(screen.get(), Qt::Key_T, Qt::AltModifier);
    EXPECT_EQ(focused(), "dpDATE");
    retype("2026-02-30 10:00");
    queue();
    EXPECT_EQ(dialogs.said(0), "Info|SEND TIME IS NOT VALID !");
    EXPECT_EQ(dialogs.shown.back().icon, MessageBox::Icon::Critical);
    retype("2026-03-15 8:00");
    EXPECT_NE(seenRemark("dpDATE").find("UseMDB"), std::string::npos);
    dialogs.answers = {false};
    queue();
    EXPECT_EQ(dialogs.shown.size(), 2);
    EXPECT_EQ(queued(), "0") << "nothing of all that may be queued";
    retype("2026-03-13 8:00");
    EXPECT_EQ(seenRemark("dpDATE"), "Past: it leaves at once.");

    rows("alter table outbox rename to away");
    queue();
    EXPECT_EQ(text("status").find("Not queued: "), 0);
    EXPECT_EQ(find<QPlainTextEdit>("txtMsg")->toPlainText(), QStringLiteral("[Hi|Ho|Hey you] it's~rdone"));
    rows("alter table away rename to outbox");
    queue();
    EXPECT_EQ(text("status"), "Queued as message 1");
    queue();
    EXPECT_EQ(rows("select * from outbox"),
              "1\t0\t+62 811-2345\t[Hi|Ho|Hey you] it's~rdone\t" + picture.toStdString() + "\t\t2026-03-13 08:00:00")
        << "once";
    EXPECT_EQ(refreshed, 1);
    EXPECT_EQ(find<QPlainTextEdit>("txtMsg")->toPlainText() + find<QLineEdit>("txtMedia")->text(), QString());

    screen->resize(820, 600);
    key(Qt::Key_Escape);
    EXPECT_FALSE(screen->isVisible());
    EXPECT_EQ(openSend().size(), QSize(820, 600));
}

TEST_F(ManualSendTest, whatIsDroppedOrPastedFindsItsFieldOrIsRefusedInWords) {
    const QString picture = folder.filePath(QStringLiteral("a b.png"));
    ASSERT_TRUE(QPixmap(8, 8).save(picture));
    openSend();
    const auto drop = [](QWidget* on, const QString& file) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(on, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(on, &event);
    };
    drop(find("txtFile"), picture);
    EXPECT_EQ(find<QLineEdit>("txtFile")->text(), picture);
    drop(screen.get(), picture);
    EXPECT_EQ(find<QLineEdit>("txtMedia")->text(), picture) << "a picture is shown as one";

    auto* message = find<QPlainTextEdit>("txtMsg");
    auto* pasted = new QMimeData;
    pasted->setText(QString(50'000'000, u'x'));
    QApplication::clipboard()->setMimeData(pasted);
    message->paste();
    EXPECT_NE(text("status").find("50,000,000 characters"), std::string::npos) << text("status");
    QApplication::clipboard()->setImage(QImage(8, 8, QImage::Format_RGB32));
    message->paste();
    EXPECT_NE(text("status").find("picture"), std::string::npos);
    EXPECT_TRUE(message->toPlainText().isEmpty());
    message->setPlainText(QString(65'000, u'x') + QString(537, u'y'));
    EXPECT_EQ(seenRemark("txtMsg").find("Too long"), 0);
    QTest::mouseClick(find<QAbstractButton>("Command5"), Qt::LeftButton);
    EXPECT_EQ(seenRemark("txtMsg"), "") << "the sample is a good one";
    EXPECT_NE(find<QPlainTextEdit>("preview_1")->toPlainText(), find<QPlainTextEdit>("preview_2")->toPlainText());
    settings.ExpandText = QStringLiteral("N");
    message->appendPlainText(QStringLiteral("late ]"));
    EXPECT_EQ(seenRemark("txtMsg").find("Sent as it stands"), 0);
    EXPECT_EQ(find<QPlainTextEdit>("preview_2")->toPlainText(), message->toPlainText());
}

TEST_F(ManualSendTest, aReplyStaysWithTheChatThatItWasWrittenFor) {
    rows(
        "insert into inbox (wa_no, wa_text, wa_time) values ('+62 811-2345', 'old', '2026-03-01 08:00:00'), "
        "('6299', 'foreign', '2026-03-02 08:00:00'), ('628112345', '<b>When?</b>', '2026-03-03 08:00:00')");
    for (int i = 0; i < 9; ++i)
        rows(
            "insert into sent (id, wa_no, wa_text, wa_time, status) values (7, '628112345', 'ours', "
            "'2026-03-02 08:00:00', 'fail')");
    ReplyScreen& reply = make<ReplyScreen>(
        [](ReplyScreen& made) { made.openFor(QStringLiteral("+62 811-2345"), QStringLiteral("<b>When?</b>"), {}); });
    const QString chat = find<QPlainTextEdit>("chat")->toPlainText();
    EXPECT_EQ(chat.count(QStringLiteral("ours")), 9) << chat.toStdString();
    EXPECT_EQ(chat.count(QStringLiteral("(fail)")), 9);
    EXPECT_TRUE(chat.endsWith(QStringLiteral("They\n<b>When?</b>"))) << "shown as written, once";
    EXPECT_FALSE(chat.contains(QStringLiteral("old")) || chat.contains(QStringLiteral("foreign")));

    EXPECT_EQ(focused(), "txtMsg");
    type("Tomorrow");
    reply.openFor(QStringLiteral("6299"), QStringLiteral("foreign"), {});
    reply.refill(QStringLiteral("6299"), QStringLiteral("foreign"), {});
    EXPECT_EQ(find<QLineEdit>("txtNo")->text(), QStringLiteral("+62 811-2345"));
    EXPECT_NE(text("status").find("not queued yet"), std::string::npos);
    queue();
    EXPECT_EQ(rows("select wa_mode, wa_no, wa_text from outbox"), "0\t+62 811-2345\tTomorrow");
    EXPECT_EQ(refreshed, 1);
    reply.refill(QStringLiteral("6299"), QStringLiteral("foreign"), {});
    EXPECT_EQ(find<QLineEdit>("txtNo")->text(), QStringLiteral("6299"));
    EXPECT_EQ(find<QPlainTextEdit>("chat")->toPlainText().count(QStringLiteral("foreign")), 1);
}

TEST_F(ManualSendTest, emojiComeFromTheirProgramToTheCursor) {
    openSend();
    auto* message = find<QPlainTextEdit>("txtMsg");
    message->setFocus();
    type("ab");
    key(Qt::Key_Left);
    key(Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(text("status").find("There is no emoji program"), 0);
    const QString program = folder.filePath(QStringLiteral("emo"));
    writtenScript(program, "[ \"$1\" = --print ] && printf '🚀\\n' && sleep 0.2 && printf '👍🏽\\n'\n");
    screen->open();
    EXPECT_TRUE(find("Command2")->isEnabled());
    key(Qt::Key_E, Qt::ControlModifier);
    find("txtNo")->setFocus();
    const QString inserted = QStringLiteral("a🚀👍🏽b");
    EXPECT_TRUE(eventually([&] { return message->toPlainText() == inserted && focused() == "txtMsg"; }))
        << message->toPlainText().toStdString();
    writtenScript(program, "exit 3\n");
    find<QAbstractButton>("Command2")->click();
    EXPECT_TRUE(eventually([&] { return text("status").find("ended with an error") != std::string::npos; }));
    EXPECT_EQ(message->toPlainText(), inserted);
}

}  // namespace
}  // namespace kibo::test
