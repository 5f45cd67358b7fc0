#include "engine_fixture.h"

namespace kibo::test {
namespace {

const QString kAni = QStringLiteral("6281111111111"), kBudi = QStringLiteral("6282222222222");

class Ticks : public Engine {
 protected:
    Ticks() { page.names = {{kAni, u"Ani"_qs}, {kBudi, u"Budi"_qs}}; }

    qint64 send(const QString& number, const QString& text) {
        const qint64 id = queue(number, text);
        runQueue();
        return id;
    }
    void listShows(const QList<EntryTick>& entries) {
        page.listTicks = entries;
        gateway.chatListWatch.Timer2_Timer();
        gateway.ticks.write();
    }
    std::string noted(qint64 id) const {
        return fromOutside(QStringLiteral("select coalesce(ticks, '-'), coalesce(ticks_time, '-') from kibo_outcome "
                                          "where id = %1")
                               .arg(id))
            .replace(u'\t', u' ')
            .toStdString();
    }
    std::string now() const { return clock.now().toString(u"yyyy-MM-dd HH:mm:ss"_qs).toStdString(); }
    QString pageId(qint64 id) { return field("select page_id from kibo_message where outbox_id = ?", {id}); }
};

TEST_F(Ticks, CountForTheMessageThatTheyBelongToAndNeverGoBack) {
    const qint64 first = send(kAni, u"Good *morning*,~rAni"_qs);
    listShows({{u"Ani"_qs, u"Good night"_qs, 2}, {u"Budi"_qs, u"Good morning, Ani"_qs, 2}});
    EXPECT_EQ(noted(first), "- -") << "another message, and another chat";
    listShows({{u"Ani"_qs, u"Good morning, Ani"_qs, 0}});
    EXPECT_EQ(noted(first), "0 " + now());
    listShows({{u"Ani"_qs, u"Good morning, Ani"_qs, 2}});
    const std::string delivered = "2 " + now();
    clock.wait(5'000);
    listShows({{u"Ani"_qs, u"Good morning, Ani"_qs, 1}});
    EXPECT_EQ(noted(first), delivered);

    // The chat's last message is another one from here on; in a chat that is opened, ids tell.
    const qint64 second = send(kAni, u"Good night"_qs);
    listShows({{u"Ani"_qs, u"Good morning, Ani"_qs, 3}});
    EXPECT_EQ(noted(first) + noted(second), delivered + "- -");
    page.ticks = {{pageId(first), 3}, {u"true_of_nobody"_qs, 3}, {pageId(second), 1}};
    const qint64 third = send(kBudi, u"c"_qs);
    const std::string before = noted(first);
    gateway.ticks.write();
    EXPECT_EQ(before, delivered) << "not written before the message in hand has gone";
    EXPECT_EQ(noted(first).substr(0, 1) + noted(second).substr(0, 1) + noted(third).substr(0, 1), "31-");

    // After a start: the chats show messages of before, and the table takes nothing for a while.
    MessageTicks again(state, settings, database, clock);
    again.write();
    refuse("update on kibo_message");
    again.see(QList<ShownTick>{{pageId(third), 2}, {pageId(first), 1}});
    again.write();
    execute("drop trigger refuse");
    clock.wait(60'000);
    again.write();
    EXPECT_EQ(noted(first).substr(0, 1) + noted(third).substr(0, 1), "32");
    EXPECT_EQ(count("outbox"), 0);
}

TEST_F(Ticks, TellThatNothingIsDeliveredAnyMore) {
    int sent = 0;
    const auto message = [&](int ticks, int seenAfterMs) {
        const QString id = QString::number(++sent);
        gateway.ticks.sent({id, id, {}, {}});
        clock.wait(seenAfterMs);
        if (ticks >= 0) gateway.ticks.see(QList<ShownTick>{{id, ticks}});
        gateway.ticks.write();
        return state.notDelivered;
    };
    for (int i = 0; i < 30; ++i) EXPECT_FALSE(message(1, 11'000)) << "never seen otherwise";
    message(2, 1'000);
    for (int i = 0; i < 30; ++i) EXPECT_FALSE(message(1, 1'000)) << "had no time";
    for (int i = 0; i < 30; ++i) EXPECT_FALSE(message(-1, 11'000)) << "could not be seen";
    for (int i = 0; i < 19; ++i) EXPECT_FALSE(message(1, 11'000));
    EXPECT_TRUE(message(0, 11'000));
    message(-1, 0);
    EXPECT_TRUE(state.notDelivered);
    EXPECT_FALSE(message(3, 0)) << "one is enough";
    for (int i = 0; i < 20; ++i) message(1, 11'000);
    EXPECT_TRUE(state.notDelivered);
    clock.wait(3'600'000);
    gateway.ticks.write();
    EXPECT_FALSE(state.notDelivered) << "nobody has sent anything for an hour";
}

}  // namespace
}  // namespace kibo::test
