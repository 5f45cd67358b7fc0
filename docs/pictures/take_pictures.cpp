#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <iostream>

#include "app/gateway_application.h"
#include "emo/emoji_window.h"
#include "standin/stand_in.h"
#include "support/eventually.h"
#include "support/mariadb_server.h"
#include "support/stores.h"
#include "widgets/qt_dialogs.h"
#include "widgets/window_look.h"

namespace kibo {
namespace {

/// The whole program on the stand-in page, brought into one state after the other; a picture of the window in each.
class Pictures {
 public:
    explicit Pictures(QString folder) : folder_(std::move(folder)) {
        test::createStores(home_.path());
        standIn_.addContact("6281230000001", "Ani Wijaya");
        standIn_.addContact("6281230000002", "Budi Santoso");
        behave(R"({"loggedIn": false, "chatOpenDelayMs": 300})");
        QFile ini(home_.filePath(QStringLiteral("kibo.ini")));
        if (!ini.open(QIODevice::WriteOnly)) return;
        ini.write(
            "[DB]\nUseMDB=Y\n[kibo]\nProfil=1\nAutoStart=Y\nHeadless=Y\nSpeed=NORMAL\nCaptureQR=Y\nAfterSend=5\n"
            "Break=60\nDummyContact=6281200000002\nSupportNumber=6281230000009\n");
        ini.write("StartAddress=" + QByteArray::fromStdString(standIn_.address()) + '\n');
        ini.write("ChatAddress=" + QByteArray::fromStdString(standIn_.chatAddress()) + '\n');
    }

    bool takeAll() {
        gateway_ = std::make_unique<GatewayApplication>(dialogs_, home_.path(), QStringList());
        if (!gateway_->start()) return false;
        const GatewayState& s = gateway_->state();
        return takeLogin(s) && takeInbox(s) && takeGuideAndAbout() && takeElements() && takeAnswers() && takeEmoji() &&
               takeSending(s) && takePauses(s) && takeTroubles(s) && takeStandby();
    }

 private:
    bool takeLogin(const GatewayState& s) {
        if (!take("login", [&] { return s.pQR.visible; })) return false;
        behave(R"({"loggedIn": true})");
        return take("ready", [&] { return s.step == QStringLiteral("Queue empty"); });
    }
    /// Messages of earlier days, some of them answered, and what comes in now.
    bool takeInbox(const GatewayState& s) {
        const char* texts[] = {"Do you deliver on Saturdays?", "Thank you!", "How much is a box of twelve?", "Photo",
                               "I have not received my order yet. Can you look into it, please?"};
        for (int i = 0; i < 40; ++i)
            sql(QStringLiteral("insert into inbox (wa_no, wa_text, wa_time, status) values ('62812300001%1', '%2', "
                               "'2026-11-2%3 %4:%5:00', '%6')")
                    .arg(10 + i % 13)
                    .arg(QLatin1String(texts[i % 5]))
                    .arg(i / 20)
                    .arg(8 + i % 20 / 2, 2, 10, QLatin1Char('0'))
                    .arg(i * 7 % 60, 2, 10, QLatin1Char('0'))
                    .arg(i % 9 == 8 ? QStringLiteral("open") : QStringLiteral("answered")));
        press("cmd_InboxRefresh");
        incoming(R"({"number": "6281230000001", "text": "Is my order ready?"})");
        incoming(
            R"({"number": "120363000000000001", "name": "Saturday team", "member": "Budi", "text": "I am ill today 🤒"})");
        incoming(R"({"number": "6281230000009", "text": "Good morning"})");
        return take("inbox", [&] { return s.ms.rowCount() == 44 && s.step == QStringLiteral("Queue empty"); });
    }
    /// The window beside the main one that a menu entry opens.
    QWidget* opened(const char* entry, const char* name) const {
        gateway_->window()->findChild<QAction*>(QLatin1String(entry))->trigger();
        return window(name);
    }
    bool takeScreen(QWidget& screen, const char* name) const {
        const bool saved = screen.grab().save(QDir(folder_).filePath(QLatin1String(name) + QStringLiteral(".png")));
        screen.close();
        return saved;
    }
    /// The rows of a SELECT, and the about window once it has found what it looks for.
    bool takeGuideAndAbout() {
        QWidget* guide = opened("mnHowSql", "frm_howsql");
        QWidget* about = opened("mnAbout", "frm_about2");
        if (!guide || !about) return false;
        guide->findChild<QPlainTextEdit*>(QStringLiteral("Text1"))
            ->setPlainText(QStringLiteral("SELECT wa_time, wa_no, wa_text FROM inbox ORDER BY wa_time DESC"));
        guide->findChild<QAbstractButton*>(QStringLiteral("Command1"))->click();
        (void)test::eventually([] { return false; }, 4000);
        return takeScreen(*guide, "sqlguide") && takeScreen(*about, "about");
    }
    /// The first dozen of locators tested.
    bool takeElements() {
        QWidget* screen = opened("mnElement", "frm_element");
        if (!screen) return false;
        for (const char* name : {"QR", "QRReload", "NewChat", "OwnPicture", "ChatList", "SearchBox", "Conversation",
                                 "To", "PP", "HeaderPicture", "MessageRow", "MessageText"}) {
            screen->findChild<QAbstractButton*>(QStringLiteral("test_") + QLatin1String(name))->click();
            (void)test::eventually([] { return false; }, 200);
        }
        return takeScreen(*screen, "elements");
    }
    bool takeEmoji() {
        EmojiWindow window(EmojiWindow::Purpose::HandOver, home_.filePath(QStringLiteral("emo.recent")),
                           [](const QString&) {});
        window.show();
        window.findChild<QLineEdit*>(QStringLiteral("search"))->setText(QStringLiteral("heart"));
        QCoreApplication::processEvents();
        return window.grab().save(QDir(folder_).filePath(QStringLiteral("emoji.png")));
    }
    /// A small conversation, and one rule of it.
    bool takeAnswers() {
        const struct {
            const char *previous, *keyword, *logic, *answer;
            int kind, next;
            const char* program;
        } rules[] = {{"", "START", "=", "Good day! Write 1 for our prices, 2 for opening hours, 3 to order.", 1, 1, ""},
                     {"", "???", "=", "Sorry, I did not understand that. Write START for the menu.", 2, 0, ""},
                     {"", "0", "=", "One step back.", 3, 0, ""},
                     {"", "999", "=", "Thank you, and good bye!", 4, 0, ""},
                     {"1", "1", "=", "The small one is 10, the large one 15.", 0, 0, ""},
                     {"1", "2", "=", "We are open from 8:00 to 18:00.", 0, 0, ""},
                     {"1", "3", "=", "Which one: small or large?", 0, 1, ""},
                     {"7", "small", "%", "Your name, please?", 0, 1, ""},
                     {"7", "large", "%", "Your name, please?", 0, 1, ""},
                     {"8", "a", "%", "Thank you, your order is on its way.", 0, 0, ""},
                     {"", "status", "%", "I look it up.", 0, 0, "/opt/shop/status"},
                     {"77", "refund", "%", "Please send us your order number.", 0, 0, ""}};
        for (const auto& rule : rules)
            sql(QStringLiteral("insert into autochat (PROFIL, previd, keyword, logic, answer, tipe, neednext, run_exe) "
                               "values ('1', '%1', '%2', '%3', '%4', %5, %6, '%7')")
                    .arg(QLatin1String(rule.previous), QLatin1String(rule.keyword), QLatin1String(rule.logic),
                         QLatin1String(rule.answer))
                    .arg(rule.kind)
                    .arg(rule.next)
                    .arg(QLatin1String(rule.program)));
        QWidget* list = opened("mn_autochat", "frm_autorespon");
        if (!list) return false;
        auto* grid = list->findChild<QTableView*>(QStringLiteral("ms"));
        grid->selectRow(7);
        (void)test::eventually([] { return false; }, 300);
        bool saved = list->grab().save(QDir(folder_).filePath(QStringLiteral("rules.png")));
        list->findChild<QAction*>(QStringLiteral("mnedit"))->trigger();
        (void)test::eventually([] { return false; }, 200);
        QWidget* entry = window("frm_autorespon_add");
        saved = entry && entry->grab().save(QDir(folder_).filePath(QStringLiteral("rule.png"))) && saved;
        if (entry) entry->close();
        list->close();
        return saved;
    }
    static QWidget* window(const char* name) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* one : windows)
            if (one->objectName() == QLatin1String(name)) return one;
        return nullptr;
    }
    bool takeSending(const GatewayState& s) {
        const char* texts[] = {"Your order is ready to be collected.", "Good morning, %name%!",
                               "We are open until 18:00 today.", "See you on Monday 😀"};
        for (int i = 0; i < 12; ++i)
            insert(QStringLiteral("628123000000%1").arg(1 + i % 4), QString::fromUtf8(texts[i % 4]));
        insert(QStringLiteral("12"), QStringLiteral("Nobody gets this"));
        return take("sending", [&] {
            return s.sentCount == 3 && s.step.startsWith(QStringLiteral("Opening")) && !s.doneAbout.isEmpty();
        });
    }
    bool takePauses(const GatewayState& s) {
        if (!take("break", [&] { return s.BreakTime.enabled() && s.DetikBreak.text.toInt() >= 4; })) return false;
        press("cmd_Pause");  // ends the break
        press("cmd_Pause");
        return take("paused", [&] { return s.step == QStringLiteral("Paused"); });
    }
    bool takeTroubles(const GatewayState& s) {
        sql("alter table outbox rename to away");
        if (!take("database_off", [&] { return s.dboff.visible; })) return false;
        sql("alter table away rename to outbox");
        behave(R"({"renameBox": true})");
        press("cmd_Pause");
        return take("page_changed", [&] { return s.step.startsWith(QStringLiteral("Page changed")); });
    }

    /// Another computer's instance has the profile.
    bool takeStandby() {
        test::MariaDbServer server;
        server.run(
            QStringLiteral("insert into kibo_instance (profil, host, process, holds, held_since, beat, status) values "
                           "('1', 'office-pc', "
                           "4711, 1, concat(current_date, ' 07:58'), now() + interval 1 hour, 'Ready')"));
        test::useStore(home_.filePath(QStringLiteral("kibo.ini")), server.settings(false));
        behave(R"({"renameBox": false})");
        gateway_.reset();
        gateway_ = std::make_unique<GatewayApplication>(dialogs_, home_.path(), QStringList());
        if (!gateway_->start()) return false;
        const GatewayState& s = gateway_->state();
        const bool taken = take("standby", [&] { return s.step == QStringLiteral("Standby"); });
        gateway_.reset();
        return taken;
    }

    /// Waits for the state and saves the window. A timer looks, since a state may last only while the engine waits.
    bool take(const char* name, const std::function<bool()>& reached) {
        const QString file = QDir(folder_).filePath(QLatin1String(name) + QStringLiteral(".png"));
        bool saved = false;
        QTimer looks;
        QObject::connect(&looks, &QTimer::timeout, &looks, [&] {
            if (saved || !reached()) return;
            gateway_->window()->showState();
            QCoreApplication::sendPostedEvents();  // by which new lines of the banner come to be seen
            saved = gateway_->window()->grab().save(file);
        });
        looks.start(20);
        if (test::eventually([&] { return saved; }, 60'000)) {
            std::cout << file.toStdString() << std::endl;
        } else {
            std::cerr << name << " was not reached: " << gateway_->state().step.toStdString() << std::endl;
        }
        return saved;
    }
    void press(const char* button) const {
        gateway_->window()->findChild<QAbstractButton*>(QLatin1String(button))->click();
    }
    void behave(const char* json) { (void)standIn_.updateBehaviour(json); }
    void incoming(const char* json) { (void)standIn_.act("incoming", json); }
    void sql(const QString& statement) const { test::sqlite(home_.filePath(QStringLiteral("kb.mdb")), statement); }
    void sql(const char* statement) const { sql(QString::fromLatin1(statement)); }
    void insert(const QString& number, const QString& text) const {
        sql(QStringLiteral("insert into outbox (wa_no, wa_text) values ('%1', '%2')").arg(number, text));
    }

    QString folder_;
    QTemporaryDir home_;
    standin::StandIn standIn_;
    UnattendedDialogs dialogs_;
    std::unique_ptr<GatewayApplication> gateway_;
};

}  // namespace
}  // namespace kibo

int main(int argc, char** argv) {
    QApplication qt(argc, argv);
    kibo::applyLook(qt);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::cerr << "usage: kibo_pictures FOLDER" << std::endl;
        return 2;
    }
    return kibo::Pictures(arguments[1]).takeAll() ? 0 : 1;
}
