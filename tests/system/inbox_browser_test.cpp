#include <httplib.h>

#include <mutex>
#include <thread>

#include "inbox/inbox.h"
#include "real_gateway.h"
#include "support/eventually.h"

namespace kibo {
namespace {

using test::eventually;

/// The inbox reader with a real Chrome on the stand-in page; each test on a freshly loaded page and an empty inbox.
class InboxBrowser : public test::OnRealGateway<10> {
 protected:
    static void SetUpTestSuite() {
        OnRealGateway::SetUpTestSuite();
        begin();
    }
    static void TearDownTestSuite() {
        inbox.reset();
        OnRealGateway::TearDownTestSuite();
    }
    void SetUp() override {
        test::RealGateway& r = *real;
        r.standIn.reset();
        r.settings.GetNumberInbox = QStringLiteral("Y");
        r.settings.UseBotPHP = r.settings.UseBotEXE = r.settings.UseIE = QStringLiteral("N");
        ASSERT_TRUE(r.database.Execute(QStringLiteral("delete from inbox")));
        r.behave(R"({"chatOpenDelayMs": {"min": 0, "max": 40}, "readyDelayMs": 0})");
        ASSERT_TRUE(eventually([&] { return r.page->look().newChatControls == 1; }));
        for (int i = 0; i < 3; ++i) r.tick();  // plants the link again
    }

    /// The receiving half as a start of the program makes it.
    static void begin() {
        test::RealGateway& r = *real;
        inbox.reset();
        inbox = std::make_unique<Inbox>(Inbox::Needs{r.state, r.settings, r.elements, r.database, *r.page, r.clock,
                                                     [] { return 0.5; }, *r.gateway, r.folder.path()});
        Gateway::Needs needs{r.state,
                             r.settings,
                             r.elements,
                             r.database,
                             *r.page,
                             r.clock,
                             r.journal,
                             [] { return 0.0; },
                             [] { inbox->reader.BACA_WA(); }};
        needs.takeArrived = [](const auto& arrived) { inbox->arrivals.take(arrived); };
        r.gateway.emplace(needs);
        inbox.reset();
        inbox = std::make_unique<Inbox>(Inbox::Needs{r.state, r.settings, r.elements, r.database, *r.page, r.clock,
                                                     [] { return 0.5; }, *r.gateway, r.folder.path()});
    }
    static void incoming(const std::string& json) {
        const auto done = real->standIn.act("incoming", json);
        ASSERT_TRUE(done.ok()) << done.failure().text;
    }
    static void act(const char* name, const char* json) { ASSERT_TRUE(real->standIn.act(name, json).ok()); }
    static void ticks(int count) {
        for (int i = 0; i < count; ++i) {
            real->gateway->chatListWatch.Timer2_Timer();
            inbox->reader.storeWaiting();
            real->tick();
        }
    }
    static int stored() { return real->count("select count(*) from inbox"); }
    static bool stores(int count) {
        return eventually(
            [=] {
                ticks(1);
                return stored() >= count;
            },
            30'000);
    }
    /// Texts of the inbox with their sender, in order of storing.
    static std::string rows() {
        QStringList found;
        for (Recordset set =
                 real->database.OpenRecordset(QStringLiteral("select wa_no, SUB_NO, wa_text from inbox order by id"));
             !set.eof(); set.moveNext())
            found << set.field(0) + u'|' + set.field(1) + u'|' + set.field(2);
        return found.join(QLatin1Char('\n')).toStdString();
    }
    static int happened(const char* kind) {
        const auto events = real->standIn.events();
        return static_cast<int>(
            std::count_if(events.begin(), events.end(), [=](const auto& event) { return event.kind == kind; }));
    }

    static inline std::unique_ptr<Inbox> inbox;
};

TEST_F(InboxBrowser, ReadsWhatChatsShowAndNothingElse) {
    real->behave(R"({"extraRows": true, "ornateEntries": true, "messageIds": "none"})");
    real->standIn.addContact("120363000000000001", "Club 🎉");
    real->standIn.addContact("628111", "Ayu");
    act("mark", R"({"number": "628222", "muted": true})");
    act("mark", R"({"number": "628111", "pinned": true})");
    incoming(R"({"number": "628111", "text": "on top 😀👍"})");
    incoming(R"({"number": "6282222222", "text": "12345"})");
    incoming(R"({"number": "120363000000000001", "member": "Budi", "text": "hi all"})");
    incoming(R"({"number": "6283333333", "kind": "image", "text": ""})");
    incoming(R"({"number": "6284444444", "text": "regretted"})");
    act("delete", R"({"number": "6284444444"})");
    ASSERT_TRUE(stores(5)) << rows();
    EXPECT_EQ(rows(),
              "Ayu||on top 😀👍\n6284444444||This message was deleted\n6283333333||Photo\nClub 🎉|Budi|hi all\n"
              "6282222222||12345");
    ticks(5);
    EXPECT_EQ(stored(), 5) << "once each";
    EXPECT_EQ(happened("read"), 5);
    EXPECT_EQ(real->page->look().chat.title, QStringLiteral("+62 812-0000-9999")) << "the dummy's chat is left open";

    // A group that shows a number without an unread mark, and a chat with a text left in its message box.
    incoming(R"({"number": "120363000000000001", "member": "Budi", "text": "4711"})");
    ASSERT_TRUE(stores(6));
    act("openChat", R"({"number": "628111"})");
    ASSERT_TRUE(eventually([] {
        const auto look = real->page->lookAtChat(true);
        return look && look->chat.title == QStringLiteral("Ayu") && look->boxFocused;
    }));
    EXPECT_TRUE(real->page->typeText(QStringLiteral("unfinished")));
    act("closeChat", "{}");
    incoming(R"({"number": "628111", "text": "are you there?"})");
    ASSERT_TRUE(stores(7));
    EXPECT_TRUE(rows().ends_with("Club 🎉|Budi|4711\nAyu||are you there?")) << rows();
    ticks(3);
    EXPECT_EQ(stored(), 7);
}

TEST_F(InboxBrowser, NumberIsFoundInPictureOrMessages) {
    real->standIn.addContact("6285501", "Ayu");
    incoming(R"({"number": "6285501", "text": "by message"})");
    ASSERT_TRUE(stores(1));
    real->behave(R"({"pictureNumber": true, "messageIds": "none"})");
    incoming(R"({"number": "6285501", "text": "by picture"})");
    ASSERT_TRUE(stores(2));
    EXPECT_EQ(rows(), "6285501||by message\n6285501||by picture");
}

TEST_F(InboxBrowser, TypingGroupLineAndStickyMarkFollowTheirRules) {
    incoming(R"({"number": "628111", "text": "soon"})");
    act("typing", R"({"number": "628111"})");
    ASSERT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5)));
    ticks(4);
    EXPECT_EQ(stored(), 0);
    act("typing", R"({"number": "628111", "typing": false})");
    ASSERT_TRUE(stores(1));

    incoming(R"({"number": "120363000000000001", "member": "Budi", "text": ":", "name": "Club"})");
    ASSERT_TRUE(eventually([] {
        ticks(1);
        return happened("read") == 2;
    }));
    EXPECT_EQ(stored(), 1);

    real->behave(R"({"stickyBadges": 3})");
    const int loads = happened("ready");
    incoming(R"({"number": "628333", "text": "sticky"})");
    ASSERT_TRUE(eventually(
        [=] {
            real->state.len1.text.clear();  // something else changes all the time
            ticks(1);
            return happened("ready") > loads;
        },
        30'000));
    EXPECT_EQ(stored(), 4) << rows();
    ASSERT_TRUE(eventually([] {
        ticks(1);
        return happened("read") == 3;
    }));
    EXPECT_EQ(stored(), 4) << "read at last, without a fourth copy";
}

/// The chat list says nothing of them: the page takes them as read.
TEST_F(InboxBrowser, WhatComesInWhileItsChatIsOpenIsStoredOnce) {
    // `json` comes in as soon as the page reports `event` once more.
    const auto when = [](const char* event, const char* json) {
        real->clock.onWait = [=, before = happened(event)] {
            if (happened(event) == before) return;
            real->clock.onWait = nullptr;
            incoming(json);
            EXPECT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5)));
        };
    };
    const auto send = [](const char* number, int mode) {
        real->queue(QString::fromLatin1(number), QStringLiteral("answer"), mode);
        real->runQueue();
        EXPECT_FALSE(real->clock.onWait);
    };
    real->standIn.addContact("628111", "Ayu");
    real->standIn.addContact("120363000000000001", "Club");
    incoming(R"({"number": "628111", "text": "unread before"})");
    ASSERT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5)));
    when("chatOpened", R"({"number": "628111", "text": "while open\nin two lines"})");
    send("628111", 1);
    ASSERT_TRUE(stores(2));
    real->behave(R"({"chatOpenDelayMs": {"min": 80, "max": 80}})");
    when("openRequested", R"({"number": "628111", "text": "while opening"})");
    send("628111", 1);
    ASSERT_TRUE(stores(3));
    when("chatOpened", R"({"number": "628111", "kind": "image", "text": ""})");
    send("628111", 1);
    ASSERT_TRUE(stores(4));
    EXPECT_EQ(rows(), "628111||unread before\n628111||while open in two lines\n628111||while opening\n628111||Photo");

    ASSERT_TRUE(real->database.Execute(QStringLiteral("delete from inbox")));
    incoming(R"({"number": "120363000000000001", "member": "Budi", "text": "hello"})");
    ASSERT_TRUE(stores(1));
    when("chatOpened", R"({"number": "120363000000000001", "member": "Budi", "text": "hello"})");
    send("Club", 2);
    ASSERT_TRUE(stores(2)) << "the same once more is another message";
    when("chatOpened", R"({"number": "120363000000000001", "member": "Budi", "kind": "image", "text": ""})");
    send("Club", 2);
    ASSERT_TRUE(stores(3));
    when("chatOpened", R"({"number": "628111", "text": "while read"})");
    incoming(R"({"number": "628111", "text": "marked"})");
    ASSERT_TRUE(stores(5));
    EXPECT_EQ(rows(), "Club|Budi|hello\nClub|Budi|hello\nClub|Budi|Photo\n628111||marked\n628111||while read");

    real->behave(R"({"chatOpenDelayMs": {"min": 0, "max": 40}, "reuseConversation": true})");
    when("chatOpened", R"({"number": "628111", "text": "in an old frame"})");
    send("628111", 1);
    ASSERT_TRUE(stores(6));
    ticks(10);
    EXPECT_EQ(stored(), 6) << rows();
    EXPECT_TRUE(real->page->look().arrived.isEmpty());
}

/// What looks like something new in an open chat and is not.
TEST_F(InboxBrowser, MessagesThatWereReadAreNotStoredAgain) {
    const auto when = [](const char* event, const std::function<void()>& then) {
        real->clock.onWait = [=, before = happened(event)] {
            if (happened(event) == before) return;
            real->clock.onWait = nullptr;
            then();
            EXPECT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5)));
        };
    };
    real->behave(R"({"chatOpenDelayMs": {"min": 80, "max": 80}})");
    incoming(R"({"number": "6281111111111", "text": "read long ago"})");
    ASSERT_TRUE(stores(1));
    // Its writer types while the chat is being opened.
    when("openRequested", [] { act("typing", R"({"number": "6281111111111"})"); });
    real->queue(QStringLiteral("6281111111111"), QStringLiteral("answer"), 1);
    real->runQueue();
    act("typing", R"({"number": "6281111111111", "typing": false})");
    // The page draws the open chat anew, with what was unread in it.
    incoming(R"({"number": "6281111111111", "text": "unread"})");
    ASSERT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5)));
    when("chatOpened", [] { real->behave(R"({"pictureNumber": true})"); });
    real->queue(QStringLiteral("6281111111111"), QStringLiteral("answer"), 1);
    real->runQueue();
    ASSERT_TRUE(stores(2));
    // The reader gives up on a chat that comes up only after the next one was clicked.
    real->behave(R"({"chatOpenDelayMs": {"min": 400, "max": 400}})");
    incoming(R"({"number": "6281111111111", "text": "late"})");
    ASSERT_TRUE(stores(3));
    ticks(20);
    EXPECT_EQ(rows(), "6281111111111||read long ago\n6281111111111||unread\n6281111111111||late");
}

TEST_F(InboxBrowser, RestartAndDatabaseAwayLoseAndDoubleNothing) {
    for (int i = 0; i < 40; ++i) real->standIn.addContact(std::to_string(628100000 + i), "Name " + std::to_string(i));
    for (int i = 39; i >= 0; --i)
        incoming(R"({"number": ")" + std::to_string(628100000 + i) + R"(", "text": "waited )" + std::to_string(i) +
                 "\"}");
    ASSERT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5)));
    // Broken off in ever other moments, as by a crash.
    struct Crash {};
    for (const int waits : {1, 2, 3, 5, 8, 13}) {
        real->clock.onWait = [left = waits]() mutable {
            if (--left == 0) throw Crash();
        };
        EXPECT_THROW(inbox->reader.BACA_WA(), Crash) << waits;
        real->clock.onWait = nullptr;
        begin();
    }
    ASSERT_TRUE(real->database.Execute(QStringLiteral("alter table inbox rename to away")));
    ticks(3);
    ASSERT_TRUE(real->database.Execute(QStringLiteral("alter table away rename to inbox")));
    real->clock.wait(6000);
    ASSERT_TRUE(stores(40)) << stored();
    ticks(5);
    EXPECT_EQ(stored(), 40);
    EXPECT_EQ(real->count("select count(distinct wa_text) from inbox"), 40);
}

TEST_F(InboxBrowser, BothBotsAreAskedAndDeadOnesCostNothingElse) {
    httplib::Server server;
    std::mutex mutex;
    std::vector<std::string> asked;
    server.Get("/ask", [&](const httplib::Request& request, httplib::Response& response) {
        const std::lock_guard lock(mutex);
        asked.push_back(request.target + ' ' + request.get_header_value("User-Agent"));
        response.set_content("ok", "text/plain");
    });
    const int port = server.bind_to_any_port("127.0.0.1");
    std::thread thread([&] { server.listen_after_bind(); });
    const auto count = [&] {
        const std::lock_guard lock(mutex);
        return asked.size();
    };
    QFile program(real->folder.filePath(QStringLiteral("bot")));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n%s' \"$#\" \"$1\" > '" + real->folder.path().toUtf8() + "/argument'\n");
    program.close();
    program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    real->settings.UseBotPHP = real->settings.UseBotEXE = QStringLiteral("Y");
    real->settings.PHP = QStringLiteral("http://127.0.0.1:%1/ask").arg(port);
    real->settings.EXE = program.fileName();

    incoming(R"({"number": "628111", "text": "how much? $(touch x) '\"; & 😀"})");
    ASSERT_TRUE(stores(1));
    ASSERT_TRUE(eventually([&] { return count() == 1; }));
    EXPECT_TRUE(
        asked[0].starts_with("/ask?wa_no=628111&wa_text=how+much%3F+%24%28touch+x%29+%27%22%3B+%26+%3F&xxx=0.5 Kibo"))
        << asked[0];
    QFile argument(real->folder.filePath(QStringLiteral("argument")));
    ASSERT_TRUE(eventually([&] { return argument.exists() && argument.size() > 2; }));
    ASSERT_TRUE(argument.open(QIODevice::ReadOnly));
    EXPECT_EQ(argument.readAll().toStdString(), "1\n628111~~how much? $(touch x) '\"; & 😀");

    // In a browser of its own.
    real->settings.UseIE = QStringLiteral("Y");
    incoming(R"({"number": "628111", "text": "second"})");
    ASSERT_TRUE(stores(2));
    ASSERT_TRUE(eventually([&] { return count() >= 2; }));
    EXPECT_TRUE(asked[1].find("wa_text=second") != std::string::npos && asked[1].find("Mozilla") != std::string::npos)
        << asked[1];
    inbox->botBrowser.quit();
    // Where none can be started, without one.
    const QString driver = std::exchange(real->settings.ChromeDriver, QStringLiteral("/no/driver"));
    incoming(R"({"number": "628111", "text": "third"})");
    ASSERT_TRUE(stores(3));
    EXPECT_EQ(count(), 3u);
    real->settings.ChromeDriver = driver;
    server.stop();
    thread.join();

    real->settings.EXE = QStringLiteral("/no/such/bot");
    incoming(R"({"number": "628111", "text": "to the dead"})");
    incoming(R"({"number": "628222", "text": "and the next"})");
    ASSERT_TRUE(stores(5));
    EXPECT_EQ(stored(), 5);
}

}  // namespace
}  // namespace kibo
