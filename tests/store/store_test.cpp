// What every main store must do, whatever holds it: linked once for SQLite and once for MySQL.
#include <gtest/gtest.h>

#include "store/database.h"
#include "store/queue_writer.h"
#include "store/row_reader.h"
#include "store/transaction.h"
#include "store_under_test.h"

namespace kibo {
namespace {

const QString kEmptySet = u"select * from inbox where wa_no='\?\?\?' "_qs;

class StoreTest : public testing::TestWithParam<test::StoreChoice> {
 protected:
    void SetUp() override { ASSERT_TRUE(open(database_)); }

    testing::AssertionResult open(Database& database) {
        const Result<void> opened = database.OpenDatabase(store_.settings, store_.programFolder);
        if (opened) return testing::AssertionSuccess();
        return testing::AssertionFailure() << opened.failure().text;
    }
    QString outside(const QString& sql) { return store_.outside(sql).trimmed(); }
    QString value(const QString& sql) { return database_.OpenRecordset(sql).field(0); }
    bool run(const char* sql) { return database_.Execute(QLatin1String(sql)); }
    /// `count` rows with the texts "text 1", "text 2", …
    void fillOutbox(int count) {
        outside(
            u"insert into outbox (wa_no, wa_text) with recursive n(i) as (select 1 union all select i+1 from n where i < %1) select '62811', replace('text %', '%', i) from n"_qs
                .arg(count));
    }

    test::StoreUnderTest store_ = GetParam().second();
    SystemClock clock_;
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
};

TEST_P(StoreTest, ReadsWhatOutsideProgramsWroteWithDefaultsFilledIn) {
    outside(u"INSERT INTO outbox (wa_mode, wa_no, wa_text, wa_media, wa_file) VALUES (0, '62811', 'a', '', NULL)"_qs);
    outside(u"INSERT INTO outbox (wa_no, wa_text, wa_time) VALUES ('62812', 'b', '2020-11-27 21:38:59')"_qs);

    Recordset set = database_.OpenRecordset(u"select * from outbox order by id"_qs);
    ASSERT_EQ(set.state(), Recordset::State::Open);
    EXPECT_EQ(set.recordCount(), 2);
    EXPECT_EQ(set.field(u"WA_NO"_qs), u"62811"_qs);
    EXPECT_FALSE(set.isNull(u"wa_media"_qs));
    EXPECT_TRUE(set.isNull(u"wa_file"_qs));
    const QDateTime stamped = QDateTime::fromString(set.field(u"wa_time"_qs), u"yyyy-MM-dd HH:mm:ss"_qs);
    EXPECT_LT(qAbs(stamped.secsTo(QDateTime::currentDateTime())), 60) << "not the local time";
    set.moveNext();
    EXPECT_EQ(set.field(u"wa_mode"_qs), u"0"_qs);
    EXPECT_EQ(set.field(u"wa_time"_qs), u"2020-11-27 21:38:59"_qs);
    set.moveNext();
    EXPECT_TRUE(set.eof());
    EXPECT_EQ(set.field(u"wa_no"_qs), QString());
}

TEST_P(StoreTest, MultiSessionStatementsWorkAsTheyAreWritten) {
    outside(u"INSERT INTO multi (tipe, profil, wa_no, wa_text) VALUES ('O', '7', '1', 'a'), ('O', '8', '1', 'b')"_qs);
    EXPECT_TRUE(
        run("INSERT INTO multi (tipe, profil, id_outbox, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time)"
            "SELECT 'S', '7', id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time FROM multi  WHERE id = 1"));
    EXPECT_TRUE(run("delete from multi where tipe = 'O' and profil = 7 and id = 1")) << "an unquoted profile";
    EXPECT_EQ(outside(u"select tipe, profil, coalesce(id_outbox, 0), wa_text from multi order by id"_qs),
              u"O\t8\t0\tb\nS\t7\t1\ta"_qs);
    EXPECT_EQ(value(u"SELECT max(id) id FROM (SELECT max(id) id FROM multi) X "_qs), u"3"_qs);
    EXPECT_TRUE(run("Insert Into autochat_exclude values (7, '62811')"));
    EXPECT_TRUE(run("insert into grab_tmp values ('7', '62811', 'Ann')"));
}

TEST_P(StoreTest, AnyTextComesBackAsItWasStored) {
    const QStringList texts{u""_qs,
                            u"it's \"quoted\" \\ back\\'s ? :a %1 # #2020-01-01#"_qs,
                            u"two\r\nlines\tand a tab"_qs,
                            u"🙏🏽👩‍👩‍👧 ありがとう شكرا"_qs,
                            u"é😀ب\u2028x"_qs.repeated(65000 / 6),
                            u"é"_qs.repeated(256),
                            u"ქართული አማርኛ 中文 \u202bעברית\u202c"_qs.repeated(2000),
                            u"ი"_qs};
    for (const QString& text : texts) {
        Recordset set = database_.OpenRecordset(kEmptySet);
        ASSERT_EQ(set.state(), Recordset::State::Open);
        set.addNew();
        set.set(u"wa_no"_qs, u"62811"_qs);
        set.set(u"SUB_NO"_qs, QString());
        set.set(u"wa_text"_qs, text);
        set.set(u"wa_time"_qs, QDateTime({2020, 11, 27}, {21, 38, 59}));
        ASSERT_TRUE(set.update());
        ASSERT_GT(set.lastInsertId(), 0);
        const QString stored = value(u"select wa_text from inbox where id = %1"_qs.arg(set.lastInsertId()));
        EXPECT_EQ(stored.size(), text.size());
        EXPECT_TRUE(stored == text) << stored.left(40).toStdString();
    }
    EXPECT_EQ(outside(u"select count(*) from inbox where SUB_NO = '' and wa_time = '2020-11-27 21:38:59'"_qs),
              QString::number(texts.size()));
    EXPECT_EQ(outside(u"select wa_text from inbox where id = 4"_qs), texts[3]);
}

TEST_P(StoreTest, ManyRowsComeWithAllThatTheyHold) {
    struct Row {
        QVariant text;
        const char* time;
    };
    const Row kinds[] = {{QString(), "2020-11-27 21:38:59"},
                         {QVariant(), "2020-11-27 00:00:00"},
                         {u"a\"b\tc\r\n🚀é"_qs, "0000-00-00 00:00:00"},
                         {u"before"_qs + QChar(0) + u"behind"_qs, "2020-02-29 23:59:59"},
                         {u"ქ🚀"_qs.repeated(20'000), "2020-11-27 21:38:59"},
                         {u"x"_qs.repeated(65'000), "2020-11-27 21:38:59"},
                         {u"short"_qs, "2020-11-27 21:38:59"}};
    constexpr int kRows = 7 * 50;
    for (int row = 0; row < kRows; ++row) {
        const Row& kind = kinds[row % 7];
        ASSERT_TRUE(database_.execute(u"insert into inbox (wa_no, wa_text, wa_time) values (?, ?, ?)"_qs,
                                      {QString::number(row), kind.text, QLatin1String(kind.time)}));
    }
    const QString sql = u"select id, wa_text, wa_no, wa_time from inbox order by id"_qs;
    const auto expectRow = [&](int row, const std::function<QString(int)>& cell) {
        const Row& kind = kinds[row % 7];
        EXPECT_EQ(cell(1).isNull(), !kind.text.isValid()) << row;
        EXPECT_TRUE(cell(1) == kind.text.toString()) << row << ": " << cell(1).left(40).toStdString();
        EXPECT_EQ(cell(2), QString::number(row));
        EXPECT_EQ(cell(3).toStdString(), kind.time) << row;
    };
    int read = 0;
    ASSERT_TRUE(database_.readThrough(sql, {}, [&](const RowReader& row) {
        expectRow(read++, [&row](int column) { return row.text(column); });
        EXPECT_EQ(row.columnOf(u"WA_TIME"_qs), 3);
        return true;
    }));
    EXPECT_EQ(read, kRows);
    const auto rows = database_.openRows(sql).value();
    ASSERT_EQ(rows->rowCount(), kRows);
    for (const int step : {1, 101})
        for (int row = 0, i = 0; i < kRows; ++i, row = (row + step) % kRows)
            expectRow(row, [&](int column) { return rows->text(row, column); });
}

TEST_P(StoreTest, FailingStatementIsSkippedOrSurfacesAndAClosedStoreRefusesAll) {
    const QString nowhere = u"select * from nowhere"_qs;
    EXPECT_EQ(database_.OpenRecordset(nowhere).state(), Recordset::State::Closed);
    EXPECT_FALSE(run("delete from nowhere"));
    EXPECT_TRUE(database_.isOpen()) << "taken for a lost connection";
    EXPECT_FALSE(database_.openRows(nowhere));
    Recordset wrongField = database_.OpenRecordset(kEmptySet);
    wrongField.addNew();
    wrongField.set(u"no_such_field"_qs, 1);
    EXPECT_FALSE(wrongField.update());

    policy_.setDebugMode(true);
    EXPECT_THROW((void)database_.OpenRecordset(nowhere), SurfacedError);
    for (const char* values : {"('it's a secret')", "('secret', \"secret\"'secret')", "(secret)", "('a', secret"}) {
        try {
            run((std::string("insert into tmp (tmp_cd) values ") + values).c_str());
            FAIL() << "accepted";
        } catch (const SurfacedError& error) {
            EXPECT_EQ(error.failure().text.find("secret"), std::string::npos) << error.what();
            EXPECT_FALSE(error.failure().text.empty());
        }
    }
    policy_.setDebugMode(false);
    database_.close();
    EXPECT_FALSE(database_.isOpen());
    EXPECT_EQ(database_.OpenRecordset(kEmptySet).state(), Recordset::State::Closed);
    EXPECT_FALSE(run("delete from outbox"));
    EXPECT_FALSE(Transaction::begin(database_));
    EXPECT_TRUE(database_.reopen());
    EXPECT_EQ(database_.OpenRecordset(kEmptySet).state(), Recordset::State::Open);
}

TEST_P(StoreTest, RefusedRowIsToldFromAStatementThatFailsForAllRows) {
    ASSERT_TRUE(
        run("create temporary table narrow (n integer primary key, t varchar(10) not null check (length(t) <= 10), "
            "c integer check (c > 0))"));
    const auto kindOf = [this](const char* statement) {
        const auto done = database_.attempt(QLatin1String(statement));
        return done ? FailureKind::NotFound : done.failure().kind;
    };
    EXPECT_EQ(kindOf("insert into narrow values (1, 'a', 1)"), FailureKind::NotFound) << "taken";
    for (const char* refused : {"(1, 'a', 1)", "(2, null, 1)", "(2, 'abcdefghijk', 1)", "(2, 'a', 0)", "('x', 'a', 1)"})
        EXPECT_EQ(kindOf((std::string("insert into narrow values ") + refused).c_str()), FailureKind::RowRefused)
            << refused;
    for (const char* wrong : {"insert into nowhere values (1)", "insert into narrow (no) values (1)", "insert"})
        EXPECT_EQ(kindOf(wrong), FailureKind::Database) << wrong;
}

TEST_P(StoreTest, TransactionTakesEffectAsAWholeOrNotAtAll) {
    const char* const insert = "insert into tmp (tmp_cd, tmp_val ) VALUES ('appname', 'x') ";
    const QString count = u"select count(*) from tmp"_qs;
    for (const bool committed : {false, true}) {
        {
            Result<Transaction> begun = Transaction::begin(database_);
            ASSERT_TRUE(begun);
            EXPECT_TRUE(run(insert));
            EXPECT_EQ(outside(count), u"0"_qs);
            if (committed) {
                EXPECT_TRUE(begun.value().commit());
                EXPECT_FALSE(begun.value().commit()) << "there is nothing left to commit";
            }
        }
        EXPECT_EQ(value(count), QString::number(committed));
        EXPECT_EQ(outside(count), QString::number(committed));
    }
}

TEST_P(StoreTest, MessagesAreQueuedInTheirOrderOrNotAtAll) {
    std::vector<NewMessage> many(1200, {.number = u"62811"_qs, .text = u"it's ? 🙏"_qs});
    many[700].time = QDateTime({2030, 1, 2}, {3, 4, 5});
    many[701].text = u"é"_qs.repeated(300'000);
    many[1199] = {.mode = 3, .number = u"62812"_qs, .text = {}, .id = 5000};
    ASSERT_TRUE(QueueWriter(database_).append(many));
    EXPECT_EQ(outside(u"select count(*), min(id), max(id) from outbox where wa_text is not null"_qs),
              u"1200\t1\t5000"_qs);
    EXPECT_EQ(outside(u"select id from outbox where wa_time = '2030-01-02 03:04:05'"_qs), u"701"_qs);
    EXPECT_EQ(value(u"select wa_text from outbox where id = 702"_qs), many[701].text);

    many[1199].id = 7;  // given already
    const Result<void> refused = QueueWriter(database_).append(many);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.failure().kind, FailureKind::RowRefused);
    EXPECT_EQ(outside(u"select count(*) from outbox"_qs), u"1200"_qs);

    ASSERT_TRUE(QueueWriter(database_, u"7"_qs).append({many[0], many[700]}));
    EXPECT_EQ(outside(u"select count(*) from multi where tipe = 'O' and profil = '7' and wa_mode = 0"_qs), u"2"_qs);
}

TEST_P(StoreTest, RowsOfAGridStayThoseOfTheirQuery) {
    const QString sql = u"select wa_no, wa_text, id from outbox where wa_mode <> '3'order by id "_qs;
    EXPECT_EQ(database_.openRows(sql).value()->rowCount(), 0);
    for (const int count :
         {1, Database::kRowsInMemory - 1, Database::kRowsInMemory, Database::kRowsInMemory + 1, 1000}) {
        outside(u"delete from outbox"_qs);
        fillOutbox(count);
        const auto rows = database_.openRows(sql).value();
        ASSERT_EQ(rows->rowCount(), count);
        EXPECT_TRUE(database_.Execute(u"delete from outbox where id % 2 = 0"_qs));
        outside(u"insert into outbox (wa_no, wa_text) values ('1', 'late')"_qs);
        // To the end, back to the start, and across.
        EXPECT_EQ(rows->text(count - 1, 1), u"text %1"_qs.arg(count));
        for (int row = 0; row < count; row += 7) EXPECT_EQ(rows->text(row, 1), u"text %1"_qs.arg(row + 1));
        EXPECT_EQ(rows->text(count, 1), QString());
        EXPECT_EQ(rows->text(-1, 1), QString());
        EXPECT_EQ(rows->text(0, 3), QString());
    }
}

TEST_P(StoreTest, RowsOutliveTheirConnectionAndOtherWritersTakeTurns) {
    fillOutbox(1000);
    std::shared_ptr<const RowSource> rows;
    {
        Database other(clock_, policy_);
        ASSERT_TRUE(open(other));
        rows = other.openRows(u"select wa_text from outbox order by id"_qs).value();
        for (int i = 0; i < 50; ++i) {
            ASSERT_TRUE(other.Execute(u"insert into outbox (wa_text) values ('other')"_qs));
            ASSERT_TRUE(database_.Execute(u"delete from outbox where id = %1"_qs.arg(i + 1)));
            ASSERT_EQ(value(u"select count(*) from outbox"_qs), u"1000"_qs);
        }
        EXPECT_EQ(rows->text(0, 0), u"text 1"_qs);
        EXPECT_EQ(rows->text(999, 0), u"text 1000"_qs);
        ASSERT_TRUE(other.reopen());
        EXPECT_TRUE(other.Execute(u"delete from outbox"_qs));
    }
    EXPECT_EQ(rows->rowCount(), 1000);
    EXPECT_EQ(rows->text(500, 0), QString());
}

INSTANTIATE_TEST_SUITE_P(Stores, StoreTest, testing::ValuesIn(test::storeChoices()),
                         [](const auto& choice) { return choice.param.first; });

}  // namespace
}  // namespace kibo
