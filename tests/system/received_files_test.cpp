#include <QDir>

#include "inbox/inbox.h"
#include "real_gateway.h"
#include "support/eventually.h"
#include "support/files.h"

namespace kibo {
namespace {

using test::eventually;

/// Pictures, videos, voice notes and documents that came in, saved by a real Chrome from the stand-in page.
class ReceivedFiles : public ::testing::Test {
 protected:
    static void SetUpTestSuite() {
        real = std::make_unique<test::RealGateway>(test::RealGateway::speed(3));
        test::RealGateway& r = *real;
        r.settings.InboxMedia = u"Y"_qs;
        r.openStore();
        r.connect();
        ASSERT_EQ(r.state.status.caption, u"Ready"_qs);
        inbox = std::make_unique<Inbox>(Inbox::Needs{r.state, r.settings, r.elements, r.database, *r.page, r.clock,
                                                     [] { return 0.5; }, *r.gateway, r.folder.path()});
        r.BACA_WA = [] { inbox->reader.BACA_WA(); };
        r.takeArrived = [](const auto& arrived) { inbox->arrivals.take(arrived); };
    }
    static void TearDownTestSuite() {
        inbox.reset();
        real.reset();
    }
    void SetUp() override {
        test::RealGateway& r = *real;
        r.standIn.reset();
        ASSERT_TRUE(r.database.Execute(u"delete from inbox"_qs) && r.database.Execute(u"delete from kibo_inbox"_qs));
        ASSERT_TRUE(QDir(folder()).removeRecursively());
        r.behave(R"({"chatOpenDelayMs": 0, "readyDelayMs": 0})");
        ASSERT_TRUE(eventually([&] { return r.page->look().newChatControls == 1; }));
        for (int i = 0; i < 3; ++i) r.tick();
    }

    static QString folder() { return real->folder.filePath(u"inbox"_qs); }
    static void incoming(const char* rest) {
        const auto done = real->standIn.act("incoming", R"({"number": "628111", )" + std::string(rest) + "}");
        ASSERT_TRUE(done.ok()) << done.failure().text;
    }
    static bool passes(const std::function<bool()>& holds, int milliseconds = 40'000) {
        const auto holdsNow = [&] {
            real->gateway->chatListWatch.Timer2_Timer();
            inbox->reader.storeWaiting();
            real->tick();
            return holds();
        };
        return eventually(holdsNow, milliseconds);
    }
    /// Kind of each message, how its file ends and how large it is.
    static std::string saved() {
        QStringList found;
        const QString query = u"select kind, file from kibo_inbox order by id"_qs;
        for (Recordset set = real->database.OpenRecordset(query); !set.eof(); set.moveNext()) {
            const QFileInfo file(set.field(1));
            found << u"%1 %2 %3"_qs.arg(set.field(0), file.suffix()).arg(file.size());
        }
        found.sort();  // some may come in while their chat is being read
        return found.join(u'\n').toStdString();
    }
    static bool saves(const char* expected) {
        return passes([=] { return saved() == expected; });
    }

    static inline std::unique_ptr<test::RealGateway> real;
    static inline std::unique_ptr<Inbox> inbox;
};

TEST_F(ReceivedFiles, EachKindIsSavedFromEachMarkup) {
    constexpr const char* kAll =
        "document file 9\ndocument pdf 5000\nphoto png 3000\nphoto png 70\nvideo mp4 24\nvoice opus 2000";
    for (const char* behaviour : {R"({"mediaStyle": "held"})", R"({"mediaStyle": "control", "mediaDelayMs": 200})",
                                  R"({"mediaStyle": "label", "testIds": false})", R"({"mediaStyle": "menu"})",
                                  R"({"mediaStyle": "menu", "language": "ar", "messageIds": "lid"})"}) {
        SCOPED_TRACE(behaviour);
        SetUp();
        real->behave(behaviour);
        incoming(R"("kind": "image")");
        incoming(R"("kind": "image", "text": "with a caption", "fileSize": 3000)");
        incoming(R"("kind": "video")");
        incoming(R"("kind": "voice", "fileName": "0:12", "fileSize": 2000)");
        incoming(R"("kind": "document", "fileName": "Offer 7.PDF", "fileSize": 5000)");
        incoming(R"("kind": "document", "fileName": "../../Offer.pdf.exe")");
        EXPECT_TRUE(saves(kAll)) << saved();
        EXPECT_EQ(QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 6);
    }
}

TEST_F(ReceivedFiles, LargeOneArrivesWhileMessagesAreSent) {
    real->behave(R"({"mediaStyle": "control", "mediaDelayMs": 6000})");
    incoming(R"("kind": "document", "fileName": "a.pdf", "fileSize": 30000000)");
    EXPECT_TRUE(passes([] { return real->count("select count(*) from kibo_inbox") == 1; }));
    real->queue(u"628222"_qs, u"hello"_qs);
    real->runQueue();
    EXPECT_EQ(saved(), "document  0");
    EXPECT_TRUE(saves("document pdf 30000000")) << saved();
}

}  // namespace
}  // namespace kibo
