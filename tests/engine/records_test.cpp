#include "engine_fixture.h"

namespace kibo::test {
namespace {

const QString kAni = QStringLiteral("6281111111111");

class Records : public Engine {
 protected:
    std::string outcome(qint64 id) {
        const QString row = fromOutside(
            QStringLiteral("select state, final, coalesce(reason_code, '') from kibo_outcome where id = %1").arg(id));
        return QString(row).replace(u'\t', u'|').toStdString();
    }
    QString why(qint64 id) const { return gateway.waitingReason.of(id).join(QString()); }
    void run(const char* sql) const { fromOutside(QString::fromUtf8(sql)); }
    std::string ask(const char* sql) const {
        return fromOutside(QString::fromUtf8(sql)).replace(u'\t', u'|').replace(u'\n', u' ').toStdString();
    }
};

TEST_F(Records, TellWhatBecameOfEachMessageAndWhen) {
    page.unknown.insert(QStringLiteral("6289000"));
    const qint64 sent = queue(kAni, QStringLiteral("a"));
    const qint64 unknown = queue(QStringLiteral("6289000"), QStringLiteral("b"));
    const qint64 held = queue(kAni, QStringLiteral("c"), 3);
    EXPECT_EQ(outcome(sent), "waiting|0");
    for (int i = 0; i < 200 && count("outbox") > 1; ++i) tick();
    EXPECT_EQ(outcome(sent), "sent|1");
    EXPECT_EQ(outcome(unknown), "fail|1|not_on_whatsapp");
    EXPECT_EQ(outcome(held), "waiting|0");
    EXPECT_EQ(ask("select id, reason, behind from kibo_waiting"), QStringLiteral("%1|held").arg(held).toStdString());
    EXPECT_TRUE(why(held).startsWith(u"It is held"_qs)) << why(held).toStdString();
    const qint64 next = queue(kAni, u"d"_qs);
    EXPECT_EQ(why(next).toStdString(), "It is the next one.");
    queue(kAni, u"e"_qs);
    state.BreakTime.setEnabled(true);
    settings.Break = u"30"_qs;
    state.DetikBreak.text = u"10"_qs;
    EXPECT_EQ(why(next + 1).toStdString(), "1 message stands before it.There is a break for 20 s more.");
    EXPECT_TRUE(why(sent).startsWith(u"It does not wait any more"_qs));
    EXPECT_EQ(ask("select profil, taken <= typed and typed <= sent and sent <= ended, ms > 500, page_id is not null "
                  "from kibo_message where result = 'sent'"),
              "7|1|1|1");
    EXPECT_EQ(ask("select typed is null, reason from kibo_message where result = 'fail'"),
              "1|the number is not on WhatsApp");
}

TEST_F(Records, AMessageIsNoLessSentWhereTheyAreRefused) {
    for (const char* refused : {"before insert on kibo_message begin select raise(rollback, 'not here')",
                                "before update on kibo_message begin select raise(abort, 'not here')"}) {
        run((std::string("create trigger no ") + refused + "; end").c_str());
        const qint64 first = queue(kAni, QStringLiteral("a"));
        clock.wait(60'000);
        runQueue();
        EXPECT_EQ(outcome(first), "sent|1");
        EXPECT_EQ(ask("select count(*) from kibo_message"), "0") << "none is begun that could not be completed";
        run("drop trigger no");
    }
    queue(kAni, QStringLiteral("b"));
    clock.wait(60'000);
    runQueue();
    EXPECT_EQ(page.delivered.size(), 3u);
    EXPECT_EQ(ask("select result from kibo_message"), "sent") << "tried again after a while";
}

TEST_F(Records, AreCompletedLaterWhereTheStoreRefusesItForAWhile) {
    queue(kAni, QStringLiteral("a"));
    runQueue();
    run("create trigger no before update on kibo_message begin select raise(abort, 'not now'); end");
    const qint64 second = queue(kAni, QStringLiteral("b")), third = queue(kAni, QStringLiteral("c"));
    for (int i = 0; i < 60 && page.delivered.size() < 3; ++i) tick();
    EXPECT_EQ(page.delivered.size(), 3u);
    EXPECT_EQ(outcome(second), "sending|0");
    EXPECT_EQ(outcome(third), "sent|1") << "taken without a record meanwhile";
    run("drop trigger no");
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_EQ(outcome(second), "sending|0") << "not before a minute";
    clock.wait(60'000);
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_EQ(outcome(second), "sent|1");
    EXPECT_TRUE(journal.entries().empty());
}

TEST_F(Records, AreCompletedLaterWhereTheStoreIsAwayAtTheEnd) {
    const qint64 id = queue(kAni, QStringLiteral("a"));
    page.beforeEnter = [this] { database.close(); };
    for (int i = 0; i < 40 && page.delivered.empty(); ++i) tick();
    ASSERT_EQ(journal.entries().size(), 1U);
    EXPECT_EQ(journal.entries()[0].stage, SendJournal::Stage::Sent) << "its chat need not be looked into";
    EXPECT_EQ(outcome(id), "sending|0");
    ASSERT_TRUE(database.OpenDatabase(settings, folder.path()).ok());
    EXPECT_TRUE(gateway.recovery.settleInStore());
    EXPECT_EQ(outcome(id), "sent|1");
    EXPECT_TRUE(journal.entries().empty());
}

TEST_F(Records, FillTheListOfFailedMessagesAfterARestart) {
    page.unknown.insert(QStringLiteral("6289000"));
    for (const char* text : {"a", "b", "c", "d"}) queue(QStringLiteral("6289000"), QLatin1String(text));
    queue(kAni, QStringLiteral("e"));
    runQueue();
    run("update kibo_message set ended = '2001-01-01 00:00:00' where outbox_id = 1");
    gateway.unsent.handled({2});
    state.ms2.setRows(std::make_shared<ListRows>());

    UnsentList next(state, settings, database, clock);
    next.add(QStringLiteral("62"), QStringLiteral("expanded"), QStringLiteral("new"), QStringLiteral("4"));
    next.fill();
    const auto listed = [this] {
        QStringList lines;
        for (int row = 1; row < state.ms2.rowCount(); ++row) {
            for (const int column : {UnsentColumn::Id, UnsentColumn::Number, UnsentColumn::Text, UnsentColumn::Reason})
                lines.append(state.ms2.text(row, column));
        }
        return lines.join(u' ').toStdString();
    };
    EXPECT_EQ(listed(), "3 6289000 c the number is not on WhatsApp 4 62 expanded new") << "an id has one line";
    settings.Multi = QStringLiteral("Y");
    run("insert into multi (tipe, profil, id_outbox, wa_no, wa_text, status) values ('S', '7', 9, '62', 'f', 'fail'), "
        "('S', '8', 9, '63', 'g', 'fail')");
    run("insert into kibo_message (source, profil, outbox_id, ended, result, reason) "
        "select 'multi', profil, 9, (select max(ended) from kibo_message), 'in doubt', 'x' from multi");
    clock.wait(60'000);
    next.fill();
    EXPECT_EQ(listed(), "9 62 f x") << "of this profile alone";
}

TEST_F(Records, OldOnesGoInSmallSteps) {
    run("with recursive n(i) as (select 1 union all select i + 1 from n where i < 1200) "
        "insert into kibo_message (source, outbox_id, taken) select 'outbox', i, '2001-01-01 00:00:00' from n");
    settings.MessageDays = QStringLiteral("30");
    queue(kAni, QStringLiteral("a"));
    runQueue();
    gateway.records.removeOld();
    EXPECT_EQ(ask("select count(*) from kibo_message"), "701");
    for (int i = 0; i < 3; ++i) {
        clock.wait(1000);
        gateway.records.removeOld();
    }
    EXPECT_EQ(ask("select count(*) from kibo_message"), "1");
}

}  // namespace
}  // namespace kibo::test
