// The SQLite store: what opening tells the operator, connection texts, and statements rewritten for it.
#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <memory>

#include "store/database.h"
#include "store/new_store.h"
#include "store/sql_failure.h"
#include "store/sql_text.h"
#include "store_under_test.h"
#include "support/files.h"
#include "support/stores.h"

namespace kibo {
namespace {

Settings localStore() {
    Settings settings;
    settings.UseMDB = u"Y"_qs;
    return settings;
}

Settings mySql() {
    Settings settings;
    settings.MySQL_WithoutDSN = u"Y"_qs;
    settings.MySQL_Server = u"db.example"_qs;
    settings.MySQL_DB = u"wa"_qs;
    settings.Port = u"3306"_qs;
    settings.user = u"me"_qs;
    settings.password = u"secret"_qs;
    return settings;
}

TEST(ConnectionRequestTest, NamesTheStoreWithoutUserAndPassword) {
    Settings settings = mySql();
    const auto named = [&settings] {
        const StoreName name = storeName(mainStoreRequest(settings, u"C:\\Kibo\\App"_qs));
        return (name.name + u'|' + name.place).toStdString();
    };
    EXPECT_EQ(named(), "db.example|wa on db.example, port 3306");
    settings.MySQL_WithoutDSN.clear();
    settings.dsn = u"DSN=wa_dsn;UID=me;PWD=secret"_qs;
    EXPECT_EQ(named(), "wa_dsn|wa_dsn");
    settings.UseMDB = u"Y"_qs;
    EXPECT_EQ(named(), "kb.mdb|C:/Kibo/App/kb.mdb");
}

TEST(ConnectionRequestTest, TextsForAccessAreTheAgreedOnes) {
    EXPECT_EQ(
        mainStoreRequest(localStore(), u"C:\\Kibo\\App"_qs).text,
        u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\Kibo\\App\\kb.mdb;Persist Security Info=False;Jet OLEDB:Database Password="_qs);
    EXPECT_EQ(
        elementStoreRequest(inProgramFolder(u"/opt/kibo"_qs, u"element.sys"_qs)).text,
        u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/opt/kibo\\element.sys;Persist Security Info=False;Jet OLEDB:Database Password=Pelangibiru7!"_qs);
}

TEST(ConnectionStringTest, ReadsQuotedBlankAndRepeatedValuesAndAnyPassword) {
    const ConnectionString text = ConnectionString::parse(
        u" driver = {My; Driver} ;SERVER=a;server=b;PWD={p;}}w} ; Empty=;junk;x=\"a\"\"b;c\" ;y='d;e'; Last = z "_qs);
    EXPECT_TRUE(text.has(u"empty"_qs));
    EXPECT_EQ(text.attributes().size(), 8);
    QStringList values;
    for (const char* key : {"DRIVER", "Server", "pwd", "x", "y", "last"}) values << text.value(QLatin1String(key));
    EXPECT_EQ(values.join(u'|').toStdString(), "My; Driver|a|p;}w|a\"b;c|d;e|z");
    for (const char16_t* broken : {u"x={never closed", u"x=\"", u"=", u";;=;", u"x=y={"})
        (void)ConnectionString::parse(QString::fromUtf16(broken));  // must end

    Settings settings = mySql();
    for (const char16_t* password :
         {u"", u"plain", u"a;b", u"a}b", u"{a", u"a{b}c", u"\"a", u"'a'", u" a ", u"a=b;PWD=c"}) {
        settings.password = QString::fromUtf16(password);
        const ConnectionString again = ConnectionString::parse(mainStoreRequest(settings, {}).text);
        EXPECT_EQ(again.value(u"PWD"_qs), settings.password);
        EXPECT_EQ(again.value(u"OPTION"_qs), u"3"_qs);
    }
}

TEST(SqlTextTest, DatesAndMarksOutsideOfQuotesAreReplacedAndLogNamesHoldNoValues) {
    const std::pair<const char16_t*, const char16_t*> dates[] = {
        {u"a between #2020-11-27  00:01# and #2020-1-2#", u"a between '2020-11-27 00:01:00' and '2020-01-02 00:00:00'"},
        {u"x like '%#2020-11-27#%' and y = \"#2020-11-27#\" and z = 'it''s #2020-11-27#'", nullptr},
        {u"select 1 # 2 #2020-01-01 01:02:03#", u"select 1 # 2 '2020-01-01 01:02:03'"},
        {u"#", nullptr}};
    for (const auto& [sql, rewritten] : dates)
        EXPECT_EQ(withSqliteDateLiterals(QString::fromUtf16(sql)), QString::fromUtf16(rewritten ? rewritten : sql));
    EXPECT_EQ(
        withMySqlValues(u"a='?\\'?' and `b?`=? and c=? and d=? and e=\"?\" and f=?"_qs, {u"it's ?"_qs, 5, QVariant()}),
        u"a='?\\'?' and `b?`=_utf8mb4 X'69742773203f' and c=5 and d=NULL and e=\"?\" and f=?"_qs);
    // A backslash is nothing special to Access, neither in the statement nor in a value.
    EXPECT_EQ(withAccessValues(u"a='C:\\' and b=? and c=\"it's ?\" and d=? and e=? and f=?"_qs,
                               {u"it's\\"_qs, 5, QVariant(), QDateTime({2020, 11, 27}, {21, 38, 59})}),
              u"a='C:\\' and b='it''s\\' and c=\"it's ?\" and d=5 and e=NULL and f=#2020-11-27 21:38:59#"_qs);
    EXPECT_EQ(statementName(u"  INSERT INTO `tmp` (tmp_cd) VALUES ('secret')"_qs), u"insert tmp"_qs);
    EXPECT_FALSE(statementName(u"'secret'from'secret'"_qs).contains(u"secret'"_qs));
}

TEST(SqlFailureTest, HidesWhatAStatementQuotesAndNothingOfAConnection) {
    const struct {
        QSqlError::ErrorType type;
        const char *code, *text, *told;
    } cases[] = {
        {QSqlError::ConnectionError, "0", "[unixODBC][Driver Manager]Can't open lib 'libmyodbc.so'",
         "Can't open lib 'libmyodbc.so'"},
        {QSqlError::ConnectionError, "2005", "Unknown host 'nowhere' (-2)", "Unknown host 'nowhere' (-2)"},
        {QSqlError::StatementError, "1064", "You've an error near 'it's secret' at 1", "You've an error near … at 1"},
        {QSqlError::StatementError, "1064", "It can't end: 'secret", "It can't end: …"},
        {QSqlError::StatementError, "1064", "near X'736563' at line 1", "near … at line 1"},
        {QSqlError::StatementError, "1064", "near _utf8mb4'secret", "near …"},
        {QSqlError::StatementError, "1406", "too long for column 'wa_text'", "too long for column 'wa_text'"},
        {QSqlError::StatementError, "1021", "Disk full; can't write", "Disk full; can't write"}};
    for (const auto& c : cases) {
        const QSqlError error({}, QString::fromUtf8(c.text), c.type, QString::fromUtf8(c.code));
        EXPECT_EQ(sqlFailure(error, SqlErrors::Server).text, c.told);
    }
}

class OpenFailureTest : public testing::Test {
 protected:
    /// What opening says; empty when it succeeded.
    QString complaint(const Settings& settings = localStore()) {
        Database database(clock_, policy_);
        const Result<void> opened = database.OpenDatabase(settings, folder_.path());
        EXPECT_EQ(database.isOpen(), opened.ok());
        return opened ? QString() : QString::fromStdString(opened.failure().text);
    }
    void expectComplaint(const char* part) {
        const std::string said = complaint().toStdString();
        EXPECT_NE(said.find(part), std::string::npos) << part << ", but said: " << said;
    }

    SystemClock clock_;
    ErrorPolicy policy_;
    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(u"kb.mdb"_qs);
};

TEST_F(OpenFailureTest, WhatIsNoWholeStoreIsNamedAtOnce) {
    expectComplaint("does not exist");
    EXPECT_FALSE(QFile::exists(path_)) << "a missing store was created";
    test::createStores(folder_.path());
    ASSERT_EQ(complaint(), QString());
    const QByteArray whole = test::contentOf(path_);
    const std::pair<QByteArray, const char*> cases[] = {
        {{}, "is empty"},
        {"wa_no;wa_text\n62811;hello\n", "is not a database"},
        {QByteArray("\x00\x01\x00\x00Standard Jet DB\x00\x01\x00\x00\x00", 24) + QByteArray(4096, 'x'),
         "is an Access file"},
        {whole.left(whole.size() - 4096), "its end is missing"},
        {QByteArray(whole).replace(4096, 8192, QByteArray(8192, '\x5a')), "is damaged"}};
    for (const auto& [content, said] : cases) {
        test::written(path_, content);
        expectComplaint(said);
    }
    QFile::remove(path_);
    test::sqlite(path_, u"create table sent (id); create table other (id);"_qs);
    expectComplaint("no table outbox, inbox");
    QFile::remove(path_);
    QDir(folder_.path()).mkdir(u"kb.mdb"_qs);
    expectComplaint("is a folder");
}

TEST_F(OpenFailureTest, AStoreOfAnEarlierVersionGetsWhatItLacksAndKeepsWhatItHolds) {
    test::createStores(folder_.path());
    const auto columns = [&] {
        return test::sqlite(
            path_, u"select m.name, c.name from sqlite_master m, pragma_table_info(m.name) c order by 1, 2"_qs);
    };
    const QString whole = columns();
    test::sqlite(
        path_,
        u"drop view kibo_outcome; alter table kibo_message drop column ticks_time; alter table kibo_message drop column page_id; insert into kibo_message (source, outbox_id) values ('outbox', 7)"_qs);
    ASSERT_TRUE(completeLocalStore(path_));
    ASSERT_TRUE(completeLocalStore(path_)) << "once more finds nothing to do";
    EXPECT_EQ(columns(), whole);
    EXPECT_EQ(test::sqlite(path_, u"select outbox_id from kibo_message"_qs).trimmed(), u"7"_qs);
}

TEST_F(OpenFailureTest, StoreIsFoundInAnyFolderAndAnOutsideWriterIsWaitedForByWritersOnly) {
    QTemporaryDir odd(QDir::tempPath() + u"/kibo %41?#é;x XXXXXX"_qs);
    test::createStores(odd.path());
    Database elements(clock_, policy_);
    ASSERT_TRUE(elements.OpenElementStore(inProgramFolder(odd.path(), u"element.sys"_qs)));
    EXPECT_EQ(elements.OpenRecordset(u"select isi from element where nama = 'XX_ChatList'"_qs).field(0),
              u"//*[@id='pane-side']"_qs);
    Database database(clock_, policy_);
    const Result<void> opened = database.OpenDatabase(localStore(), odd.path());
    ASSERT_TRUE(opened) << opened.failure().text;
    QProcess outside;
    outside.start(u"sqlite3"_qs, {u"-bail"_qs, odd.filePath(u"kb.mdb"_qs)});
    outside.write(
        "begin immediate;\ninsert into outbox (wa_no) values ('1');\n.shell echo locked; sleep 0.4\ncommit;\n.quit\n");
    ASSERT_TRUE(outside.waitForReadyRead());
    EXPECT_EQ(database.OpenRecordset(u"select count(*) from outbox"_qs).field(0), u"0"_qs);
    EXPECT_TRUE(database.Execute(u"insert into outbox (wa_no) values ('2')"_qs));
    EXPECT_EQ(database.OpenRecordset(u"select wa_no from outbox order by id desc"_qs).field(0), u"2"_qs);
    EXPECT_TRUE(outside.waitForFinished());
}

TEST_F(OpenFailureTest, ServerTroubleIsToldWithoutThePassword) {
    Settings settings = mySql();
    settings.MySQL_Server = u"127.0.0.1"_qs;
    settings.Port = u"1"_qs;
    settings.dsn = u"no_such_source"_qs;
    for (const char* withoutDsn : {"Y", "N"}) {
        settings.MySQL_WithoutDSN = QLatin1String(withoutDsn);
        const QString said = complaint(settings);
        EXPECT_FALSE(said.isEmpty());
        EXPECT_FALSE(said.contains(u"secret"_qs));
        EXPECT_FALSE(said.contains(u'[')) << said.toStdString();
    }
    settings.problems.append({u"password"_qs, u"password was cut"_qs, true});
    EXPECT_EQ(complaint(settings), u"password was cut"_qs) << "nothing that leads away from it";
    settings.problems.clear();
    settings.dsn.clear();
    EXPECT_TRUE(complaint(settings).contains(u"DSN"_qs));
}

}  // namespace

std::vector<test::StoreChoice> test::storeChoices() {
    const auto make = [] {
        const auto folder = std::make_shared<QTemporaryDir>();
        createStores(folder->path());
        return StoreUnderTest{localStore(), folder->path(),
                              [folder](const QString& sql) { return sqlite(folder->filePath(u"kb.mdb"_qs), sql); }};
    };
    return {{"Sqlite", make}};
}

}  // namespace kibo
