#include <gtest/gtest.h>

#include <future>

#include "screens/chat_history.h"
#include "screens/manual_message.h"
#include "support/eventually.h"
#include "support/manual_clock.h"
#include "support/mariadb_server.h"

namespace kibo::test {
namespace {

class ManualMessageOnServerTest : public testing::Test {
 protected:
    void SetUp() override {
        server.empty();
        ASSERT_TRUE(database.OpenDatabase(settings, {}).ok());
    }
    qint64 queue(const char* text) {
        draft.text = QString::fromUtf8(text);
        const Result<qint64> id = ManualMessage(database, settings, clock).queue(draft);
        EXPECT_TRUE(id) << id.failure().text;
        return id.valueOr(0);
    }
    std::string rows(const char* sql) { return server.run(QLatin1String(sql)).trimmed().toStdString(); }
    /// Another program takes `id`, has it while it is drawn, and then does `last`.
    std::future<void> taking(int id, const QString& last) {
        const QString sql = QStringLiteral(
                                "start transaction; insert into outbox (id, wa_no) values (%1, 'other'); "
                                "do sleep(0.7); %2")
                                .arg(id)
                                .arg(last);
        auto other = std::async(std::launch::async, [this, sql] { server.run(sql); });
        EXPECT_TRUE(eventually(
            [this] {
                return rows("select count(*) from information_schema.processlist where state = 'User sleep'") == "1";
            },
            10'000));
        return other;
    }

    MariaDbServer& server = MariaDbServer::shared();
    Settings settings = server.settings(false);
    SystemClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    MessageDraft draft{.number = QStringLiteral("628112345"), .text = {}, .time = QStringLiteral("2030-01-02 3:04")};
};

TEST_F(ManualMessageOnServerTest, idsFollowTheNewestOfQueueAndLog) {
    EXPECT_EQ(queue("first 🙏"), 1);
    EXPECT_EQ(rows("select id, wa_mode, wa_no, wa_text, wa_media, wa_file, wa_time from outbox"),
              "1\t0\t628112345\tfirst 🙏\t\t\t2030-01-02 03:04:00");
    rows("insert into sent (id, wa_no) values (40, '1')");
    EXPECT_EQ(queue("after the log's"), 41);
    auto other = taking(42, QStringLiteral("commit"));
    EXPECT_EQ(queue("in the same moment"), 43);
    other.get();
    EXPECT_EQ(rows("select group_concat(id order by id), count(*) from outbox"), "1,41,42,43\t4");

    settings.Multi = QStringLiteral("Y");
    draft.profile = QStringLiteral("7");
    rows("insert into multi (id, tipe) values (90, 'I')");
    EXPECT_EQ(queue("shared"), 91);
    EXPECT_EQ(rows("select tipe, profil, wa_text from multi where id = 91"), "O\t7\tshared");
}

TEST_F(ManualMessageOnServerTest, aMessageWhoseFateTheConnectionTookIsNotQueuedTwice) {
    ManualMessage message(database, settings, clock);
    draft.text = QStringLiteral("once");
    for (const bool arrived : {true, false}) {
        server.empty();
        auto other = taking(1, QStringLiteral("kill user kibo; rollback"));
        const Result<qint64> lost = message.queue(draft);
        other.get();
        ASSERT_FALSE(lost);
        EXPECT_EQ(lost.failure().kind, FailureKind::ConnectionLost) << lost.failure().text;
        if (arrived) rows("insert into sent (id, wa_no, wa_text) values (1, '628112345', 'once')");
        Result<qint64> again = message.queue(draft);
        EXPECT_TRUE(eventually([&] { return again.ok() || (again = message.queue(draft)).ok(); }, 10'000));
        EXPECT_EQ(again.valueOr(0), 1);
        EXPECT_EQ(rows("select count(*) from outbox"), arrived ? "0" : "1");
    }
}

TEST_F(ManualMessageOnServerTest, theLastLinesOfAChatComeFromBothTablesOrFromTheProfilesPart) {
    settings.Prefix = QStringLiteral("0");
    settings.CountryCode = QStringLiteral("62");
    rows("insert into inbox (wa_no, wa_text, wa_time) values ('0811-2345', 'asked', '2026-03-02 08:00:00')");
    const auto last = [&](const char* profile) {
        std::string texts;
        const auto lines = lastLinesOfChat(database, settings, QStringLiteral("0811-2345"), QLatin1String(profile));
        for (const ChatLine& line : lines.value())
            texts += (line.ours ? line.status + line.text : u'<' + line.text).toStdString() + ' ';
        return texts;
    };
    EXPECT_EQ(last(""), "<asked ");
    rows(
        "insert into sent (id, wa_no, wa_text, wa_time) select seq, '628112345', seq, '2026-03-01 08:00:00' "
        "from seq_1_to_20");
    rows("insert into sent values (21, 0, '628112345', 'late', '', '', '2026-03-02 08:00:01', 'fail')");
    EXPECT_EQ(last(""), "13 14 15 16 17 18 19 20 <asked faillate ") << "oldest first";

    settings.Multi = QStringLiteral("Y");
    rows(
        "insert into multi (tipe, profil, wa_no, wa_text) values ('S', '1', '628112345', 'mine'), "
        "('S', '2', '628112345', 'foreign'), ('O', '1', '628112345', 'waits'), ('I', '1', '08112345', 'came')");
    EXPECT_EQ(last("1"), "<came mine ");
}

}  // namespace
}  // namespace kibo::test
