#include <QJsonDocument>
#include <QJsonObject>

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
        inbox->reader.BACA_WA();               // none of the chats is left that were open before
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
    /// `in` and `kind` let a message come in, `open` opens a chat as for sending, `person` as a person does.
    static void play(const QString& step) {
        const QString name = step.section(u' ', 0, 0), who = step.section(u' ', 1, 1);
        const QString rest = step.section(u' ', 2), kind = step.section(u' ', 2, 2);
        const bool inGroup = who.startsWith(u"120363"_qs);
        QJsonObject details{{u"number"_qs, who}};
        if (inGroup) details[u"member"_qs] = u"Budi"_qs;
        const auto happens = [&](const char* action) {
            act(action, QJsonDocument(details).toJson().constData());
            pageKnows();
        };
        if (name == u"name"_qs) {
            real->standIn.addContact(who.toStdString(), rest.toStdString());
        } else if (name == u"in"_qs) {
            details[u"text"_qs] = QString(rest).replace(u"\\n"_qs, u"\n"_qs);
            happens("incoming");
        } else if (name == u"kind"_qs) {
            const bool captioned = kind == u"video"_qs;
            details[u"kind"_qs] = kind;
            details[captioned ? u"text"_qs : u"fileName"_qs] = step.section(u' ', 3);
            happens("incoming");
        } else if (name == u"before"_qs) {
            play(u"in "_qs + who + u' ' + rest);
            happens("read");
        } else if (name == u"behave"_qs) {
            real->behave(step.section(u' ', 1).toUtf8().constData());
        } else if (name == u"typing"_qs || name == u"delete"_qs) {
            happens(name.toLatin1().constData());
        } else if (name == u"open"_qs) {
            const auto serial = [] { return real->page->lookAtChat(false).value_or(ChatLook()).chat.serial; };
            const int before = serial();
            const bool isNumber = who.front().isDigit();
            EXPECT_TRUE(isNumber ? real->gateway->opener.GOTONOMOR(who) : real->gateway->opener.openEntry(who));
            EXPECT_TRUE(eventually([&] { return serial() > before; }));
        } else if (name == u"person"_qs) {
            const webdriver::FindElement find{{webdriver::Using::Css, u"#pane-side span[title]"_qs}};
            const auto entry = webdriver::elementFrom(real->browser.client().send(find).valueOr({}));
            ASSERT_TRUE(entry);
            EXPECT_TRUE(real->browser.client().send(webdriver::ElementClick{*entry}).ok());
        } else if (name == u"reload"_qs || name == u"lose"_qs) {
            if (name == u"reload"_qs) ticks(1);
            real->page->refresh();
            EXPECT_TRUE(eventually([] {
                const PageLook look = real->page->look();
                return look.newChatControls == 1 && !look.chat.open;
            }));
            ticks(1);
        } else {
            EXPECT_EQ(name, u"read"_qs);
            ticks(4);
        }
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
    EXPECT_EQ(stored(), 4) << "all but the one whose writer types";
    act("typing", R"({"number": "628111", "typing": false})");
    ASSERT_TRUE(stores(5)) << rows();
    EXPECT_EQ(rows(),
              "6284444444||This message was deleted\n6283333333||Photo\nClub 🎉|Budi|hi all\n6282222222||12345\n"
              "Ayu||on top 😀👍");
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
              "6281111111111||unread before\n6281111111111||while open\nin two lines\n6281111111111||while opening\n"
              "Club|Budi|hello\nClub|Budi|hello\nClub|Budi|(photo)\n"
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

/// Steps of a conversation, and what must be stored: each message once.
struct Story {
    const char* what;
    const char* steps;  ///< a line each, see `play`
    const char* rows;
};

const Story kStories[] = {
    {"a voice note, emoji pictures in the name",
     "name 628111 Ani 🎉\nbehave {\"ornateEntries\": true}\nopen 628111\nkind 628111 voice 0:12",
     "628111||(voice message 0:12)"},
    {"the beginning of the next message", "in 628111 Hi\nread\nopen 628111\nin 628111 Hi\nin 628111 Hi, are you there?",
     "628111||Hi\n628111||Hi\n628111||Hi, are you there?"},
    {"somebody typed before",
     "in 628111 old\nread\ntyping 628111\nopen 628111\nin 628111 hello\nin 628111 typing error?",
     "628111||old\n628111||hello\n628111||typing error?"},
    {"the first message of an empty chat", "open 628111\nin 628111 first\nin 628111 second",
     "628111||first\n628111||second"},
    {"two chats whose marks stay", "behave {\"stickyBadges\": 100}\nin 628111 A\nin 628222 B\nread\nread\nread",
     "628222||B\n628111||A"},
    {"a menu's user", "in 628111 1\nread\nin 628111 1\nread\nin 628111 1\nread\nin 628111 1\nread\nin 628111 1",
     "628111||1\n628111||1\n628111||1\n628111||1\n628111||1"},
    {"several unread, and a draft in the list", "in 628111 one\nin 628111 two\\nlines\nin 628111 three",
     "628111||one\n628111||two\nlines\n628111||three"},
    {"unread when a message is written to them",
     "name 628111 Ani\nbefore 628111 read on the phone\nin 628111 one\nin 628111 two\nopen 628111",
     "628111||one\n628111||two"},
    {"two chats of one title",
     "name 628111 Ayu\nname 628222 Ayu\nin 628222 old\nread\nopen 628111\nin 628111 mine\nread\nin 628222 other",
     "628222||old\n628111||mine\n628222||other"},
    {"a group",
     "name 120363000000000001 Club\nin 120363000000000001 hello\nread\nopen Club\nkind 120363000000000001 image\nin "
     "120363000000000001 hello",
     "Club|Budi|hello\nClub|Budi|(photo)\nClub|Budi|hello"},
    {"no ids",
     "behave {\"messageIds\": \"none\"}\nin 628111 marked\nopen 628111\nopen 628222\nread\nin 628111 in the list",
     "+62 811-1||marked\n+62 811-1||in the list"},
    {"a person's chat",
     "in 628111 old\nread\nperson 628111\nin 628111 for the person\nopen 628222\nopen 628111\nin 628111 for the bot",
     "628111||old\n628111||for the bot"},
    {"the page is loaded anew", "open 628111\nin 628111 one\nreload\nopen 628111\nin 628111 two",
     "628111||one\n628111||two"},
    {"lost with a page that ended", "in 628111 one\nread\nreload\nbefore 628111 in the open chat\nopen 628111",
     "628111||one\n628111||in the open chat"},
    {"a page that ends before it was asked",
     "in 628111 old\nread\nopen 628111\nread\nin 628111 one\nin 628111 two\nlose\nin 628222 newer",
     "628111||old\n628111||one\n628111||two\n628222||newer"},
    {"what is no text",
     "kind 628111 image\nkind 628111 video see this\nkind 628111 sticker\nkind 628111 document offer.pdf\nkind 628111 "
     "location Jl. Mawar 7\n"
     "kind 628111 contact Budi\nkind 628111 poll Lunch?\nkind 628111 call\nin 628111 and a text\nin 628111 "
     "regretted\ndelete 628111",
     "628111||(photo)\n628111||(video) see this\n628111||(sticker)\n628111||(document offer.pdf)\n628111||(location "
     "Jl. Mawar 7)\n"
     "628111||(contact Budi)\n628111||(poll Lunch?)\n628111||and a text\n628111||(deleted)"},
};

TEST_F(InboxBrowser, EachMessageIsStoredOnceWhateverTheListShows) {
    for (const Story& story : kStories) {
        SCOPED_TRACE(story.what);
        SetUp();
        if (HasFatalFailure()) return;
        for (const QString& step : QString::fromUtf8(story.steps).split(u'\n')) play(step);
        EXPECT_TRUE(eventually(
            [&] {
                ticks(2);
                return rows() == story.rows;
            },
            5'000))
            << rows();
        ticks(3);
        EXPECT_EQ(rows(), story.rows);
    }
}

TEST_F(InboxBrowser, MoreUnreadMessagesThanThePageDrawsAreReadByScrollingUp) {
    std::string expected;
    for (int i = 1; i <= 150; ++i) {
        incoming((R"({"number": "628111", "text": "message )" + std::to_string(i) + "\"}").c_str());
        expected += (i > 1 ? "\n" : "") + ("628111||message " + std::to_string(i));
    }
    pageKnows();
    ASSERT_TRUE(stores(150)) << stored();
    EXPECT_EQ(rows(), expected);
    real->settings.InboxRead = u"last"_qs;
    play(u"in 628111 a"_qs);
    play(u"in 628111 b"_qs);
    ASSERT_TRUE(stores(151));
    ticks(3);
    EXPECT_EQ(rows(), expected + "\n628111||b");
    real->settings.InboxRead.clear();
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
