// The sent log on every kind of store, through its window.
#include "screens/sent_screen.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include "base/table_text.h"
#include "engine/unsent_list.h"
#include "support/answering_dialogs.h"
#include "support/eventually.h"
#include "support/files.h"
#include "support/manual_clock.h"
#include "support/mariadb_server.h"
#include "support/stores.h"

namespace kibo::test {
namespace {

const QDate kDay(2026, 11, 20);

TEST(SentQueryTest, StatementsAreTheAgreedOnes) {
    const auto sql = [](bool access, bool multi) {
        return SentQuery{QStringLiteral("a'b"), kDay, kDay.addDays(1), access, multi}.sql().toStdString();
    };
    EXPECT_EQ(sql(true, false),
              "select * from sent where (wa_no like ? or wa_text like ?) and wa_time between #2026-11-20  00:01# and "
              "#2026-11-21  23:59# ORDER BY status desc , id");
    EXPECT_EQ(sql(true, true),
              "select * from multi where (wa_no like ? or wa_text like ?) and tipe = 'S' and wa_time between "
              "#2026-11-20  00:01# and #2026-11-21  23:59# ORDER BY status desc , id");
    EXPECT_EQ(sql(false, false),
              "select * from sent where  (wa_no like ? or wa_text like ?) and wa_time between '2026-11-20  00:01' and "
              "'2026-11-21  23:59' ORDER BY status desc , id");
    EXPECT_EQ(sql(false, true),
              "select * from multi where  (wa_no like ? or wa_text like ?) and tipe = 'S' and wa_time between "
              "'2026-11-20  00:01' and '2026-11-21  23:59' ORDER BY status desc , id");
}

struct Form {
    const char* name;
    bool server, multi;
};

class SentScreenTest : public testing::TestWithParam<Form> {
 protected:
    void SetUp() override {
        if (form.server) {
            server = &MariaDbServer::shared();
            server->empty();
            settings = server->settings(false);
        } else {
            createStores(folder.path());
            settings.UseMDB = QStringLiteral("Y");
        }
        settings.Multi = form.multi ? QStringLiteral("Y") : QStringLiteral("N");
        state.cb_Profil.text = QStringLiteral("shop");
        const Result<void> opened = database.OpenDatabase(settings, folder.path());
        ASSERT_TRUE(opened) << opened.failure().text;
        screen = std::make_unique<SentScreen>(
            SentScreen::Parts{database, settings, state, clock, dialogs,
                              [this](const std::vector<qint64>& ids) { unsent.queuedAgain(ids); }});
    }
    QString outside(const QString& sql) { return server ? server->run(sql) : sqlite(store(), sql); }
    QString store() const { return folder.filePath(QStringLiteral("kb.mdb")); }
    /// A row of the sent log of profile "other".
    void sent(int id, const char* time, const char* number, const char* text, const char* status) {
        const QString values =
            QStringLiteral("%1, 1, %2, %3, 'pic.jpg', 'http://x/doc.pdf', %4, %5")
                .arg(id)
                .arg(QLatin1String(number), QString::fromUtf8(text), QLatin1String(time), QLatin1String(status));
        const QString columns = QStringLiteral("wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time, status");
        outside(form.multi ? QStringLiteral("insert into multi (tipe, profil, id_outbox, %1) values ('S', 'other', %2)")
                                 .arg(columns, values)
                           : QStringLiteral("insert into sent (id, %1) values (%2)").arg(columns, values));
    }
    void someRows() {
        sent(1, "'2026-11-20 00:00:59'", "'621'", "'before'", "''");
        sent(2, "'2026-11-20 00:01:00'", "'622'", "'first'", "''");
        sent(3, "'2026-11-20 12:00:00'", "'623'", R"('{a|b} "x"	tab
line 🚀')",
             "'fail'");
        sent(4, "'2026-11-20 23:59:00'", "'624'", "'last'", "'Fail'");
        sent(5, "'2026-11-20 23:59:01'", "'625'", "'after'", "''");
        sent(6, "NULL", "'626'", "'timeless'", "''");
        sent(7, "'2026-11-20 13:00:00'", "NULL", "'nobody''s 50%'", "''");
        outside(
            QStringLiteral("insert into multi (tipe, profil, wa_no, wa_text, wa_time) values ('I', 'other', '622', "
                           "'incoming', '2026-11-20 12:00:00')"));
    }
    template <class Control>
    Control* find(const char* name) {
        return screen->findChild<Control*>(QLatin1String(name));
    }
    QTableView* grid() { return find<QTableView>("ms"); }
    std::string status() { return find<QLabel>("sent_status")->text().toStdString(); }
    bool atRest() {
        return eventually([this] { return find<QPushButton>("Command2")->text() == QStringLiteral("&Search"); });
    }
    void open() {
        screen->open();
        find<QDateEdit>("tgl1")->setDate(kDay);
        find<QDateEdit>("tgl2")->setDate(kDay);
    }
    /// Looks for `key` by keyboard; gives the ids found.
    std::string search(const char* key) {
        EXPECT_TRUE(atRest());
        auto* box = find<QLineEdit>("txtCari");
        box->setFocus();
        box->setText(QString::fromUtf8(key));
        QTest::keyClick(box, Qt::Key_Return);
        EXPECT_TRUE(atRest());
        return ids();
    }
    std::string ids() {
        QStringList found;
        for (int row = 0; row < grid()->model()->rowCount(); ++row) found.append(cell(row, 0));
        EXPECT_EQ(find<QLabel>("l_jml")->text(), QString::number(found.size()));
        return found.join(u' ').toStdString();
    }
    QString cell(int row, int column) { return grid()->model()->index(row, column).data().toString(); }
    /// Selects the last lines from bottom to top, by keyboard.
    void selectLast(int lines) {
        grid()->setFocus();
        grid()->setCurrentIndex(grid()->model()->index(grid()->model()->rowCount() - 1, 0));
        for (int i = 1; i < lines; ++i) QTest::keyClick(grid(), Qt::Key_Up, Qt::ShiftModifier);
    }
    std::string queue() {
        return outside(form.multi ? QStringLiteral("select profil, wa_mode, wa_no, wa_text, wa_media, wa_file from "
                                                   "multi where tipe = 'O' order by id")
                                  : QStringLiteral("select 'other', wa_mode, wa_no, wa_text, wa_media, wa_file from "
                                                   "outbox order by id"))
            .toStdString();
    }
    QString left() {
        return outside(form.multi ? QStringLiteral("select count(*) from multi where tipe = 'S'")
                                  : QStringLiteral("select count(*) from sent"))
            .trimmed();
    }

    const Form form = GetParam();
    QTemporaryDir folder;
    MariaDbServer* server = nullptr;
    Settings settings;
    GatewayState state;
    ManualClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    AnsweringDialogs dialogs;
    UnsentList unsent{state, settings, database, clock};
    std::unique_ptr<SentScreen> screen;
};

TEST_P(SentScreenTest, FindsCopiesAndExportsWholeTexts) {
    someRows();
    open();
    EXPECT_EQ(search(""), "3 4 2 7") << "failed ones first, the day without its edges";
    EXPECT_EQ(cell(0, 1).toStdString(), "2026-11-20 12:00:00");
    for (int row = 0; row < 4; ++row)
        EXPECT_EQ(grid()->model()->index(row, 4).data(Qt::BackgroundRole).isValid(), row < 2) << row;
    EXPECT_EQ(search("62_"), "3 4 2");
    EXPECT_EQ(search("y's"), "7");
    EXPECT_EQ(search("nothing has this"), "");

    EXPECT_EQ(search("🚀"), "3");
    QTest::mouseClick(find<QPushButton>("Command1"), Qt::LeftButton);
    EXPECT_EQ(dialogs.said(0), "Info|Copied to Clipboard..");
    const QString text = QStringLiteral("\"{a|b} \"\"x\"\"\ttab\nline 🚀\"");
    EXPECT_EQ(QApplication::clipboard()->text(),
              QStringLiteral("3\t2026-11-20 12:00:00\t1\t623\t") + text + QStringLiteral("\tfail\t\t\t\t\n"));

    const QString path = folder.filePath(QStringLiteral("out.csv"));
    dialogs.texts = {std::nullopt, path};
    for (int i = 0; i < 2; ++i) QTest::mouseClick(find<QPushButton>("cmd_Export"), Qt::LeftButton);
    EXPECT_EQ(dialogs.chosenFrom[1].proposal.toStdString(), "sent 2026-11-20.csv");
    ASSERT_TRUE(atRest());
    EXPECT_EQ(status(), "1 message exported.");
    EXPECT_EQ(contentOf(path),
              QByteArray(kCsvStart) +
                  (QStringLiteral("id,wa_time,wa_mode,wa_no,wa_text,status,ended,ticks,ticks_time,reason\r\n"
                                  "3,2026-11-20 12:00:00,1,623,") +
                   text + QStringLiteral(",fail,,,,\r\n"))
                      .toUtf8());

    // Longer than what a cell has room for at first, before and behind short ones.
    const QString longText = QStringLiteral("🚀é").repeated(20'000);
    for (int id = 10; id < 13; ++id)
        sent(id, "'2026-11-20 14:00:00'", "'629'",
             (u'\'' + (id == 11 ? longText : QStringLiteral("short")) + u'\'').toUtf8().constData(), "''");
    EXPECT_EQ(search("629"), "10 11 12") << status();
    grid()->setFocus();
    grid()->selectAll();
    QTest::keyClick(grid(), Qt::Key_C, Qt::ControlModifier);
    QString copied = QApplication::clipboard()->text();
    EXPECT_EQ(copied.count(longText), 1);
    EXPECT_EQ(copied.remove(longText).count(QStringLiteral("629\tshort\t\t\t\t\t\n")), 2) << copied.toStdString();
}

TEST_P(SentScreenTest, TellsWhatBecameOfEachWhereTheStoreDoes) {
    someRows();
    const auto became = [&](int id, const char* profile, const char* values) {
        outside(QStringLiteral("insert into kibo_message (source, profil, outbox_id, ended, ticks, ticks_time, reason) "
                               "values ('%1', '%2', %3, %4)")
                    .arg(form.multi ? QStringLiteral("multi") : QStringLiteral("outbox"), QLatin1String(profile))
                    .arg(id)
                    .arg(QString::fromUtf8(values)));
    };
    became(4, "other", "'2026-11-20 23:59:05', NULL, NULL, 'the number is not on WhatsApp'");
    became(2, "other", "NULL, NULL, NULL, 'put back before'");
    became(2, "other", "'2026-11-20 00:01:09', 2, '2026-11-20 00:01:11', NULL");
    became(7'000'000, "other", "NULL, 3, NULL, 'of none of them'");
    outside(
        QStringLiteral("insert into kibo_message (source, profil, outbox_id, reason) values ('%1', 'other', 3, 'x')")
            .arg(form.multi ? QStringLiteral("outbox") : QStringLiteral("multi")));
    if (form.multi) became(7, "nobody", "NULL, 3, NULL, 'of another profile'");
    const auto exported = [&] {
        const QString path = folder.filePath(QStringLiteral("out.csv"));
        dialogs.texts = {path};
        QTest::mouseClick(find<QPushButton>("cmd_Export"), Qt::LeftButton);
        EXPECT_TRUE(atRest());
        return QString::fromUtf8(contentOf(path)).section(u'\n', 0, 0).trimmed().section(u',', 5).toStdString();
    };
    open();
    EXPECT_EQ(search("62"), "3 4 2");
    const auto told = [&](int row) {
        QStringList cells;
        for (int column = kLoggedColumns; column < kSentColumns; ++column) cells.append(cell(row, column));
        return cells.join(u'|').toStdString();
    };
    EXPECT_EQ(told(0), "|||");
    EXPECT_EQ(told(1), "2026-11-20 23:59:05|||the number is not on WhatsApp");
    EXPECT_EQ(told(2), "2026-11-20 00:01:09|delivered|2026-11-20 00:01:11|");
    EXPECT_EQ(exported(), "status,ended,ticks,ticks_time,reason");

    outside(form.server ? QStringLiteral("rename table kibo_message to kept")
                        : QStringLiteral("drop table kibo_message"));
    EXPECT_EQ(search(""), "3 4 2 7");
    EXPECT_TRUE(grid()->isColumnHidden(kLoggedColumns) && !grid()->isColumnHidden(kLoggedColumns - 1));
    EXPECT_EQ(exported(), "status") << "as it ever was";
    if (form.server) outside(QStringLiteral("rename table kept to kibo_message"));
}

TEST_P(SentScreenTest, ChangesTheRowsThatWereSelected) {
    someRows();
    open();
    EXPECT_EQ(search(""), "3 4 2 7");
    selectLast(3);
    dialogs.answers = {false};
    QTest::keyClick(grid(), Qt::Key_Delete);
    EXPECT_EQ(dialogs.said(0), "Delete|Delete 3 messages from the sent log?");
    EXPECT_EQ(left(), QStringLiteral("7")) << "the answer was No";

    // Another program deletes one of them while the question is open, and adds one that is found before them.
    dialogs.leaveOpen = true;
    QTest::keyClick(grid(), Qt::Key_Delete);
    outside(form.multi ? QStringLiteral("delete from multi where id_outbox = 2")
                       : QStringLiteral("delete from sent where id = 2"));
    sent(8, "'2026-11-20 12:00:00'", "'628'", "'new'", "'fail'");
    dialogs.answerOpen();
    ASSERT_TRUE(atRest());
    EXPECT_EQ(status(), "2 messages deleted. 1 message no longer in the sent log.");
    EXPECT_EQ(ids(), "3 8") << "what is there now";

    state.cb_Profil.text = QStringLiteral("other");
    for (const char* id : {"3", "4"}) unsent.add({}, {}, {}, QLatin1String(id));
    selectLast(2);
    find<QPushButton>("Command4")->click();
    dialogs.answerOpen();
    ASSERT_TRUE(atRest());
    EXPECT_EQ(status(), "2 messages put into the outbox.");
    std::string expected = R"(1	623	{a|b} "x"	tab
line 🚀	pic.jpg	http://x/doc.pdf)";
    if (form.server) expected = R"(1	623	{a|b} "x"\ttab\nline 🚀	pic.jpg	http://x/doc.pdf)";
    EXPECT_EQ(queue(), "other\t" + expected + "\nother\t1\t628\tnew\tpic.jpg\thttp://x/doc.pdf\n");
    EXPECT_EQ(left(), QStringLiteral("5")) << "they stay in the log";
    ASSERT_EQ(state.ms2.rowCount(), 2) << "of the failed ones the one that was not queued again is left";
    EXPECT_EQ(state.ms2.text(1, UnsentColumn::Id), QStringLiteral("4"));
}

TEST_P(SentScreenTest, HeaderSortsAllThatWasFoundAndButtonsActOnTheLinesShown) {
    someRows();
    sent(10, "'2026-11-20 02:00:00'", "'70'", "'first'", "''");
    outside(QStringLiteral("insert into kibo_message (source, profil, outbox_id, ended) values "
                           "('%1', 'other', 7, '2026-11-20 13:00:01'), ('%1', 'other', 10, '2026-11-20 02:00:01')")
                .arg(form.multi ? QStringLiteral("multi") : QStringLiteral("outbox")));
    open();
    EXPECT_EQ(search(""), "3 4 2 7 10");
    const auto sortedBy = [this](SentColumn column) {
        const QHeaderView& header = *grid()->horizontalHeader();
        const int section = static_cast<int>(column);
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          QPoint(header.sectionViewportPosition(section) + 20, header.height() / 2));
        EXPECT_TRUE(atRest());
        return ids();
    };
    EXPECT_EQ(sortedBy(SentColumn::Id), "2 3 4 7 10");
    EXPECT_EQ(sortedBy(SentColumn::Id), "10 7 4 3 2");
    EXPECT_EQ(sortedBy(SentColumn::Id), "3 4 2 7 10") << "as they were found";
    EXPECT_EQ(sortedBy(SentColumn::Time), "2 10 3 7 4");
    EXPECT_EQ(sortedBy(SentColumn::Number), "7 10 2 3 4") << "numbers as numbers, nothing first";
    EXPECT_EQ(sortedBy(SentColumn::Status), "2 7 10 3 4") << "those that are equal as they were found";
    EXPECT_EQ(sortedBy(SentColumn::Ended), "3 4 2 10 7");
    EXPECT_EQ(sortedBy(SentColumn::Ended), "7 10 3 4 2");

    selectLast(2);
    QTest::keyClick(grid(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().section(u'\t', 0, 0), QStringLiteral("4"));
    const QString path = folder.filePath(QStringLiteral("sorted.csv"));
    dialogs.texts = {path};
    QTest::mouseClick(find<QPushButton>("cmd_Export"), Qt::LeftButton);
    ASSERT_TRUE(atRest());
    EXPECT_TRUE(contentOf(path).contains("\r\n7,2026-11-20 13:00:00,"));
    dialogs.answers = {true};
    grid()->setFocus();
    QTest::keyClick(grid(), Qt::Key_Delete);
    ASSERT_TRUE(atRest());
    EXPECT_EQ(status(), "2 messages deleted.");
    EXPECT_EQ(ids(), "7 10 3") << "sorted again";
}

TEST_P(SentScreenTest, StoreThatGoesAwayLeavesNothingHalfDone) {
    someRows();
    open();
    EXPECT_EQ(search(""), "3 4 2 7");
    selectLast(4);
    dialogs.leaveOpen = true;
    for (const char* button : {"Command5", "Command4"}) {
        find<QPushButton>(button)->click();
        server ? server->stop() : (void)QFile::rename(store(), store() + u'x');
        const std::size_t before = dialogs.shown.size();
        dialogs.answerOpen();
        ASSERT_TRUE(atRest());
        ASSERT_EQ(dialogs.shown.size(), before + 1);
        EXPECT_NE(dialogs.said(before).find("None of 4 messages was "), std::string::npos) << dialogs.said(before);
        server ? server->start() : (void)QFile::rename(store() + u'x', store());
        EXPECT_EQ(left(), QStringLiteral("7"));
        EXPECT_EQ(queue(), "");
    }
    server ? server->stop() : (void)QFile::rename(store(), store() + u'x');
    search("");
    EXPECT_EQ(status().find("Not all could be searched: "), 0U) << status();
    server ? server->start() : (void)QFile::rename(store() + u'x', store());
    EXPECT_EQ(search(""), "3 4 2 7");
}

TEST_P(SentScreenTest, EscapeBreaksOffThenCloses) {
    const QString row = QStringLiteral("'6281', 'A text.', '2026-11-20 12:00:00', %1");
    const QString columns = form.multi ? QStringLiteral("multi (wa_no, wa_text, wa_time, id_outbox, tipe)")
                                       : QStringLiteral("sent (wa_no, wa_text, wa_time, id)");
    const QString tail = form.multi ? QStringLiteral(", 'S'") : QString();
    outside(form.server ? QStringLiteral("insert into %1 select %2%3 from seq_1_to_30000")
                              .arg(columns, row.arg(QStringLiteral("seq")), tail)
                        : QStringLiteral("with recursive s(n) as (select 1 union all select n + 1 from s where n < "
                                         "30000) insert into %1 select %2%3 from s")
                              .arg(columns, row.arg(QStringLiteral("n")), tail));
    open();
    EXPECT_TRUE(atRest());
    QTest::keyClick(find<QDateEdit>("tgl2"), Qt::Key_Return);
    EXPECT_EQ(find<QPushButton>("Command2")->text(), QStringLiteral("&Stop"));
    QTest::keyClick(screen.get(), Qt::Key_Escape);
    EXPECT_TRUE(screen->isVisible());
    EXPECT_EQ(status(), "Stopped; there may be more.");
    EXPECT_LT(grid()->model()->rowCount(), 30000);
    QTest::keyClick(find<QLineEdit>("txtCari"), Qt::Key_Return);
    ASSERT_TRUE(atRest());
    EXPECT_EQ(grid()->model()->rowCount(), 30000) << "what was broken off disturbs nothing";

    grid()->selectAll();
    dialogs.leaveOpen = true;
    find<QPushButton>("Command5")->click();
    EXPECT_EQ(dialogs.said(0), "Delete|Delete 30,000 messages from the sent log?");
    dialogs.answerOpen();
    QTest::keyClick(screen.get(), Qt::Key_Escape);
    ASSERT_TRUE(atRest());
    EXPECT_EQ(status(), "None of 30,000 messages was deleted: it was stopped.");
    EXPECT_EQ(left(), QStringLiteral("30000"));
    QTest::keyClick(screen.get(), Qt::Key_Escape);
    EXPECT_FALSE(screen->isVisible());
}

INSTANTIATE_TEST_SUITE_P(Forms, SentScreenTest,
                         testing::Values(Form{"AccessSingle", false, false}, Form{"AccessMulti", false, true},
                                         Form{"MySqlSingle", true, false}, Form{"MySqlMulti", true, true}),
                         [](const auto& form) { return std::string(form.param.name); });

}  // namespace
}  // namespace kibo::test
