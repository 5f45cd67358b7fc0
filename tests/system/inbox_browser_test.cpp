#include "browser/raw_server.h"
#include "inbox/inbox.h"
#include "real_gateway.h"
#include "support/eventually.h"
#include "support/files.h"

namespace kibo {
namespace {

using test::eventually;

/// The inbox reader with a real Chrome on the stand-in page; each test on a freshly loaded page and an empty inbox.
class InboxBrowser : public test::OnRealGateway<10> {
 protected:
    static void SetUpTestSuite() {
        OnRealGateway::SetUpTestSuite();
        test::RealGateway& r = *real;
        inbox = std::make_unique<Inbox>(Inbox::Needs{r.state, r.settings, r.elements, r.database, *r.page, r.clock,
                                                     [] { return 0.5; }, *r.gateway, r.folder.path()});
        r.BACA_WA = [] { inbox->reader.BACA_WA(); };
        r.takeArrived = [](const auto& arrived) { inbox->arrivals.take(arrived); };
    }
    static void TearDownTestSuite() {
        inbox.reset();
        OnRealGateway::TearDownTestSuite();
    }
    void SetUp() override {
        test::RealGateway& r = *real;
        r.standIn.reset();
        r.settings.GetNumberInbox = u"Y"_qs;
        ASSERT_TRUE(r.database.Execute(u"delete from inbox"_qs));
        r.behave(R"({"chatOpenDelayMs": {"min": 0, "max": 40}, "readyDelayMs": 0})");
        ASSERT_TRUE(eventually([&] { return r.page->look().newChatControls == 1; }));
        for (int i = 0; i < 3; ++i) r.tick();  // plants the link again
    }

    static void act(const char* name, const char* json) {
        const auto done = real->standIn.act(name, json);
        ASSERT_TRUE(done.ok()) << done.failure().text;
    }
    static void incoming(const char* json) { act("incoming", json); }
    static void ticks(int count) {
        for (int i = 0; i < count; ++i) {
            real->gateway->chatListWatch.Timer2_Timer();
            inbox->reader.storeWaiting();
            real->tick();
        }
    }
    static int stored() { return real->count("select count(*) from inbox"); }
    static bool stores(int count) {
        const auto storesThem = [=] {
            ticks(1);
            return stored() >= count;
        };
        return eventually(storesThem, 30'000);
    }
    /// Texts of the inbox with their sender, in order of storing.
    static std::string rows() {
        QStringList found;
        for (Recordset set = real->database.OpenRecordset(u"select wa_no, SUB_NO, wa_text from inbox order by id"_qs);
             !set.eof(); set.moveNext())
            found << set.field(0) + u'|' + set.field(1) + u'|' + set.field(2);
        return found.join(QLatin1Char('\n')).toStdString();
    }
    static int happened(const char* kind) {
        const auto events = real->standIn.events();
        return static_cast<int>(
            std::count_if(events.begin(), events.end(), [=](const auto& event) { return event.kind == kind; }));
    }
    static void pageKnows() { ASSERT_TRUE(real->standIn.waitUntilPageKnows(std::chrono::seconds(5))); }
    /// Sends a message, and has `then` happen as soon as the page reports `event` once more.
    static void sendAnd(const char* event, const std::function<void()>& then, const char* to = "6281111111111") {
        when(event, then);
        real->queue(QString::fromLatin1(to), u"answer"_qs, *to == '6' ? 1 : 2);
        real->runQueue();
        EXPECT_FALSE(real->clock.onWait);
    }
    static void when(const char* event, const std::function<void()>& then) {
        real->clock.onWait = [=, before = happened(event)] {
            if (happened(event) == before) return;
            real->clock.onWait = nullptr;
            then();
            pageKnows();
        };
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
    act("typing", R"({"number": "628111"})");
    pageKnows();
    ticks(4);
    EXPECT_EQ(stored(), 0) << "not while somebody types";
    act("typing", R"({"number": "628111", "typing": false})");
    ASSERT_TRUE(stores(5)) << rows();
    EXPECT_EQ(rows(),
              "Ayu||on top 😀👍\n6284444444||This message was deleted\n6283333333||Photo\nClub 🎉|Budi|hi all\n"
              "6282222222||12345");
    ticks(5);
    EXPECT_EQ(stored(), 5) << "once each";
    EXPECT_EQ(happened("read"), 5);
    EXPECT_EQ(real->page->look().chat.title, u"+62 812-0000-9999"_qs) << "the dummy's chat is left open";

    // A group that shows a number without an unread mark, and a chat with a text left in its message box.
    incoming(R"({"number": "120363000000000001", "member": "Budi", "text": "4711"})");
    ASSERT_TRUE(stores(6));
    act("openChat", R"({"number": "628111"})");
    ASSERT_TRUE(eventually([] {
        const auto look = real->page->lookAtChat(true);
        return look && look->chat.title == u"Ayu"_qs && look->boxFocused;
    }));
    EXPECT_TRUE(real->page->typeText(u"unfinished"_qs));
    act("closeChat", "{}");
    incoming(R"({"number": "628111", "text": "are you there?"})");
    ASSERT_TRUE(stores(7));
    EXPECT_TRUE(rows().ends_with("Club 🎉|Budi|4711\nAyu||are you there?")) << rows();

    real->behave(R"({"messageIds": "phone"})");
    incoming(R"({"number": "628111", "text": "by message"})");
    ASSERT_TRUE(stores(8));
    real->behave(R"({"pictureNumber": true, "messageIds": "none"})");
    incoming(R"({"number": "628111", "text": "by picture"})");
    ASSERT_TRUE(stores(9));
    EXPECT_TRUE(rows().ends_with("\n628111||by message\n628111||by picture")) << rows();
}

/// The chat list says nothing of them: the page takes them as read.
TEST_F(InboxBrowser, WhatComesInWhileItsChatIsOpenIsStoredOnce) {
    const auto comesIn = [](const char* json) { return [=] { incoming(json); }; };
    const char* const group = R"({"number": "120363000000000001", "member": "Budi", "text": "hello"})";
    real->standIn.addContact("6281111111111", "Ayu");
    real->standIn.addContact("120363000000000001", "Club");
    incoming(R"({"number": "6281111111111", "text": "unread before"})");
    pageKnows();
    sendAnd("chatOpened", comesIn(R"({"number": "6281111111111", "text": "while open\nin two lines"})"));
    ASSERT_TRUE(stores(2));
    real->behave(R"({"chatOpenDelayMs": 80})");
    sendAnd("openRequested", comesIn(R"({"number": "6281111111111", "text": "while opening"})"));
    ASSERT_TRUE(stores(3));
    incoming(group);
    ASSERT_TRUE(stores(4));
    sendAnd("chatOpened", comesIn(group), "Club");
    ASSERT_TRUE(stores(5)) << "the same once more is another message";
    sendAnd("chatOpened", comesIn(R"({"number": "120363000000000001", "member": "Budi", "kind": "image", "text": ""})"),
            "Club");
    ASSERT_TRUE(stores(6));
    when("chatOpened", comesIn(R"({"number": "6281111111111", "text": "while read"})"));
    incoming(R"({"number": "6281111111111", "text": "marked"})");
    ASSERT_TRUE(stores(8));
    real->behave(R"({"chatOpenDelayMs": {"min": 0, "max": 40}, "reuseConversation": true})");
    sendAnd("chatOpened", comesIn(R"({"number": "6281111111111", "text": "in an old frame"})"));
    ASSERT_TRUE(stores(9));
    ticks(10);
    EXPECT_EQ(rows(),
              "6281111111111||unread before\n6281111111111||while open in two lines\n6281111111111||while opening\n"
              "Club|Budi|hello\nClub|Budi|hello\nClub|Budi|Photo\n"
              "6281111111111||marked\n6281111111111||while read\n6281111111111||in an old frame");
    EXPECT_TRUE(real->page->look().arrived.isEmpty());
}

/// What looks like something new in an open chat and is not.
TEST_F(InboxBrowser, MessagesThatWereReadAreNotStoredAgain) {
    real->behave(R"({"chatOpenDelayMs": 80})");
    incoming(R"({"number": "6281111111111", "text": "read long ago"})");
    ASSERT_TRUE(stores(1));
    // Its writer types while the chat is being opened.
    sendAnd("openRequested", [] { act("typing", R"({"number": "6281111111111"})"); });
    act("typing", R"({"number": "6281111111111", "typing": false})");
    // The page draws the open chat anew, with what was unread in it.
    incoming(R"({"number": "6281111111111", "text": "unread"})");
    pageKnows();
    sendAnd("chatOpened", [] { real->behave(R"({"pictureNumber": true})"); });
    ASSERT_TRUE(stores(2));
    // The reader gives up on a chat that comes up only after the next one was clicked.
    real->behave(R"({"chatOpenDelayMs": 400})");
    incoming(R"({"number": "6281111111111", "text": "late"})");
    ASSERT_TRUE(stores(3));
    ticks(20);
    EXPECT_EQ(rows(), "6281111111111||read long ago\n6281111111111||unread\n6281111111111||late");
}

TEST_F(InboxBrowser, BothBotsAreAskedAndDeadOnesCostNothingElse) {
    auto server =
        std::make_unique<test::RawServer>([](int) { return test::RawServer::Reply{test::RawServer::answer("")}; });
    /// What the web bot was asked as the `count`th; a browser asks for more than that.
    const auto question = [&](std::size_t count) {
        std::vector<std::string> asked;
        const auto come = [&] {
            asked = server->requests();
            std::erase_if(asked, [](const std::string& request) { return !request.starts_with("GET /ask?"); });
            return asked.size() >= count;
        };
        return eventually(come) ? asked[count - 1] : "(nothing)";
    };
    const QString argument = real->folder.filePath(u"argument"_qs);
    real->settings.EXE = test::writtenScript(real->folder.filePath(u"bot"_qs),
                                             "printf '%s\\n%s' \"$#\" \"$1\" > '" + argument.toUtf8() + "'\n");
    real->settings.UseBotPHP = real->settings.UseBotEXE = u"Y"_qs;
    real->settings.PHP = QString::fromStdString(server->address()) + u"/ask"_qs;

    incoming(R"({"number": "628111", "text": "how much? $(touch x) '\"; & 😀"})");
    ASSERT_TRUE(stores(1));
    EXPECT_TRUE(question(1).starts_with("GET /ask?wa_no=628111&wa_text=how+much%3F+%24%28touch+x%29+")) << question(1);
    EXPECT_NE(question(1).find(" Kibo"), std::string::npos);
    const std::string told = "1\n628111~~how much? $(touch x) '\"; & 😀";
    EXPECT_TRUE(eventually([&] { return test::contentOf(argument) == QByteArray::fromStdString(told); }));

    // In a browser of its own.
    real->settings.UseIE = u"Y"_qs;
    incoming(R"({"number": "628111", "text": "second"})");
    ASSERT_TRUE(stores(2));
    EXPECT_NE(question(2).find("wa_text=second"), std::string::npos) << question(2);
    EXPECT_NE(question(2).find(" Mozilla"), std::string::npos) << question(2);
    inbox->botBrowser.quit();
    // Where none can be started, without one.
    const QString driver = std::exchange(real->settings.ChromeDriver, u"/no/driver"_qs);
    incoming(R"({"number": "628111", "text": "third"})");
    ASSERT_TRUE(stores(3));
    EXPECT_NE(question(3).find("wa_text=third"), std::string::npos) << question(3);
    real->settings.ChromeDriver = driver;
    server.reset();

    real->settings.EXE = u"/no/such/bot"_qs;
    incoming(R"({"number": "628111", "text": "to the dead"})");
    incoming(R"({"number": "628222", "text": "and the next"})");
    ASSERT_TRUE(stores(5));
    real->settings.UseBotPHP = real->settings.UseBotEXE = real->settings.UseIE = u"N"_qs;
}

}  // namespace
}  // namespace kibo
