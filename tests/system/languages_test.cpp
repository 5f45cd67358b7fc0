#include "inbox/inbox.h"
#include "real_gateway.h"
#include "support/eventually.h"
#include "support/files.h"

namespace kibo {
namespace {

using test::eventually;

constexpr const char* kAni = "6281111111111";
constexpr const char* kClub = "120363000000000001";

/// Messages both ways with a real Chrome, whatever language the page speaks and whatever it leaves out.
class Languages : public test::OnRealGateway<20> {
 protected:
    static void SetUpTestSuite() {
        real = std::make_unique<test::RealGateway>(test::RealGateway::speed(20));
        test::RealGateway& r = *real;
        r.settings.PageLanguage = u"tr"_qs;
        r.settings.GetNumberInbox = u"Y"_qs;
        r.openStore();
        r.connect();
        ASSERT_EQ(r.state.status.caption, u"Ready"_qs);
        inbox = std::make_unique<Inbox>(Inbox::Needs{r.state, r.settings, r.elements, r.database, *r.page, r.clock,
                                                     [] { return 0.5; }, *r.gateway, r.folder.path()});
        r.BACA_WA = [] { inbox->reader.BACA_WA(); };
        r.takeArrived = [](const auto& arrived) { inbox->arrivals.take(arrived); };
        picture = test::written(r.folder.filePath(u"p.png"_qs), "x");
    }
    static void TearDownTestSuite() {
        inbox.reset();
        OnRealGateway::TearDownTestSuite();
    }

    static std::string run(const char* script) {
        const webdriver::ExecuteScript command{QString::fromLatin1(script)};
        return real->browser.client().send(command).valueOr({}).toString().toStdString();
    }
    /// An empty page, inbox and queue; then the page behaves like this.
    static void begin(const std::string& behaviour) {
        real->standIn.reset();
        ASSERT_TRUE(real->database.Execute(u"delete from inbox"_qs));
        real->behave(R"({"chatOpenDelayMs": 0, "readyDelayMs": 0, "noticeDelayMs": 0, "previewDelayMs": 0,)"
                     R"( "uploadDelayMs": 0, "searchDelayMs": 0, "unknownNumbers": ["6289999999999"]})");
        real->standIn.addContact(kClub, "Club");
        real->behave(behaviour.c_str());
        ASSERT_TRUE(eventually([] { return real->page->look().newChatControls == 1; }));
        ASSERT_TRUE(real->tickUntil([] { return real->gateway->opener.linkPlanted(); }));
    }
    static void act(const char* name, const std::string& json) {
        const auto done = real->standIn.act(name, json);
        ASSERT_TRUE(done.ok()) << done.failure().text;
    }
    static void passes(int count) {
        for (int i = 0; i < count; ++i) {
            real->gateway->chatListWatch.Timer2_Timer();
            real->tick();
        }
    }
    static std::string rows() {
        QStringList found;
        for (Recordset set = real->database.OpenRecordset(u"select wa_no, SUB_NO, wa_text from inbox order by id"_qs);
             !set.eof(); set.moveNext())
            found << set.field(0) + u'|' + set.field(1) + u'|' + set.field(2);
        return found.join(u' ').toStdString();
    }
    static void stores(const std::string& wanted) {
        eventually([&] {
            passes(1);
            return rows() == wanted;
        });
        EXPECT_EQ(rows(), wanted);
    }
    static void incoming(const char* number, const std::string& more) {
        act("incoming", R"({"number": ")" + std::string(number) + "\", " + more + "}");
    }
    /// A text whose chat's row says that somebody types, which never is a row, and a group's text that is a number.
    static void receives() {
        const std::string who = R"({"number": ")" + std::string(kAni) + R"(", "typing": )";
        act("typing", who + "true}");
        incoming(kAni, R"("text": "hello")");
        incoming(kClub, R"("member": "Budi", "text": "4711")");
        real->standIn.waitUntilPageKnows(std::chrono::seconds(5));
        passes(3);
        act("typing", who + "false}");
        eventually([] {
            passes(1);
            return rows().size() > 30;
        });
        EXPECT_TRUE(rows() == "6281111111111||hello Club|Budi|4711" || rows() == "Club|Budi|4711 6281111111111||hello")
            << rows();
    }
    /// A text to a number, one to a name that messages hold too, a file, and one to a number that is unknown.
    static void sends() {
        const auto before = real->standIn.received().size();
        const int failed = real->state.failedCount;
        real->queue(QLatin1String(kAni), u"to the number, for Club"_qs);
        real->queue(u"Club"_qs, u"to the name"_qs, 2);
        real->queue(QLatin1String(kAni), u"caption"_qs, 0, picture);
        real->queue(u"6289999999999"_qs, u"to nobody"_qs);
        real->runQueue(200);
        std::string arrived;
        const auto received = real->standIn.received();
        for (auto i = before; i < received.size(); ++i)
            arrived += received[i].number.substr(0, 5) + ' ' + received[i].text + received[i].caption + '\n';
        EXPECT_EQ(arrived, "62811 to the number, for Club\n12036 to the name\n62811 caption\n");
        EXPECT_EQ(real->state.failedCount, failed + 1);
        EXPECT_EQ(real->lastReason(), "the number is not on WhatsApp");
    }
    static bool showsConnected(const char* banner, bool connected) {
        real->behave((R"({"banner": ")" + std::string(banner) + "\"}").c_str());
        real->tick();
        return (real->state.status.caption == u"Ready"_qs) == connected;
    }

    static inline std::unique_ptr<Inbox> inbox;
    static inline QString picture;
};

TEST_F(Languages, ThePageIsAskedForTheOneThatWasChosen) {
    begin(R"({"language": "browser"})");
    EXPECT_EQ(run("return document.documentElement.lang + ' ' + navigator.language"), "tr tr");
}

TEST_F(Languages, EachIsReadAndWritten) {
    for (const char* language : {"en", "id", "ms", "pt", "es", "hi", "ar", "tr", "de", "fr", "it", "ru"}) {
        SCOPED_TRACE(language);
        begin(R"({"language": ")" + std::string(language) + "\"}");
        ASSERT_EQ(run("return document.documentElement.lang"), language);
        receives();
        sends();
        EXPECT_TRUE(showsConnected("phoneOff", false) && showsConnected("computerOff", false) &&
                    showsConnected("", true));
        real->behave(R"({"updateNotice": true})");
        real->tick();
        EXPECT_TRUE(real->state.pageNotice.contains(u"update"_qs));
        real->behave(R"({"openElsewhere": true})");
        EXPECT_TRUE(real->tickUntil([] { return !real->standIn.behaviour().openElsewhere; }));
    }
}

/// The row is told by its lines, chats and buttons by their icons and places.
TEST_F(Languages, NoSingleSignIsNeeded) {
    for (const char* missing : {R"("testIds": false)", R"("labels": false)", R"("messageIds": "none")",
                                R"("testIds": false, "labels": false)"}) {
        SCOPED_TRACE(missing);
        begin(R"({"language": "ar", )" + std::string(missing) + "}");
        receives();
        sends();
        EXPECT_TRUE(showsConnected("phoneOff", false) && showsConnected("", true));
    }
}

/// Messages go out meanwhile, and what came in is read as soon as the locator is right again.
TEST_F(Languages, AListThatCantBeReadIsToldAndLeftAlone) {
    begin(R"({"language": "en"})");
    for (const auto& [name, wrong] :
         {std::pair(u"XX_EntryTitle"_qs, u".//b"_qs), std::pair(u"XX_ReadMessage"_qs, u"//*[@id='pane-side']"_qs)}) {
        const QString right = real->elements[name];
        real->elements.set(name, wrong);
        for (int i = 0; i < 5; ++i) incoming(("628222222222" + std::to_string(i)).c_str(), R"("text": "unread")");
        const auto isTold = [&, name = name] {
            passes(1);
            return real->state.readingChanged == name;
        };
        EXPECT_TRUE(eventually(isTold)) << real->state.readingChanged.toStdString();
        EXPECT_EQ(rows(), "");
        real->queue(QLatin1String(kAni), u"hello"_qs);
        real->runQueue(200);
        EXPECT_EQ(real->standIn.received().back().text, "hello");
        real->elements.set(name, right);
        EXPECT_TRUE(eventually([&] {
            passes(1);
            return real->count("select count(*) from inbox") == 5;
        })) << rows();
        EXPECT_EQ(real->state.readingChanged, QString());
        ASSERT_TRUE(real->database.Execute(u"delete from inbox"_qs));
    }
}

}  // namespace
}  // namespace kibo
