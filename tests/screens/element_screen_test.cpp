#include "screens/element_screen.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>
#include <QUuid>

#include "base/settings_file.h"
#include "browser/raw_server.h"
#include "support/answering_dialogs.h"
#include "support/files.h"
#include "support/stores.h"

namespace kibo::test {
namespace {

/// An element service on a free port of this computer. It answers a fetch with "//fetched/" and the name.
class Service {
 public:
    /// The requests so far: their paths and parameters.
    std::vector<QUrl> requests() const {
        std::vector<QUrl> urls;
        for (const std::string& request : server_->requests())
            urls.push_back(QUrl::fromEncoded(QByteArray::fromStdString(request).split(' ').value(1)));
        return urls;
    }
    static std::string parameter(const QUrl& request, const char* name) {
        const QUrlQuery query(request);
        return query.queryItemValue(QLatin1String(name), QUrl::FullyDecoded).toStdString();
    }
    QString address() const { return QString::fromStdString(server_->address()) + QStringLiteral("/base/"); }
    void stop() { server_.reset(); }

    std::map<std::string, std::string> answers;  // by name; set them before a request

 private:
    RawServer::Reply answer(int number) const {
        const std::string key = parameter(requests()[static_cast<std::size_t>(number)], "key");
        const auto prepared = answers.find(key);
        return {prepared == answers.end() ? RawServer::answer("//fetched/" + key + "\n") : prepared->second};
    }

    std::unique_ptr<RawServer> server_ = std::make_unique<RawServer>([this](int number) { return answer(number); });
};

class PreparedPage : public PageProbe {
 public:
    Result<Matches> outline(const QString& locator) override {
        asked.append(locator);
        if (closed) return Failure{FailureKind::ConnectionLost, "no session"};
        if (whileAsked) whileAsked();
        return matches;
    }
    Result<QString> report() override {
        if (closed) return Failure{FailureKind::ConnectionLost, "no session"};
        return QStringLiteral("body");
    }
    Matches matches;
    bool closed = false;
    QStringList asked;
    std::function<void()> whileAsked;
};

class ElementScreenTest : public testing::Test {
 protected:
    void SetUp() override {
        createStores(folder.path());
        ASSERT_TRUE(database.OpenElementStore(storeFile()).ok());
        elements = ElementTable([this](const QString& name) { return store.LoadElement(name); });
    }
    ElementScreen& open(const QString& server) {
        screen = std::make_unique<ElementScreen>(ElementScreen::Parts{elements, store, page, state, dialogs,
                                                                      ElementService(server, ini()), ini(),
                                                                      [](const auto& step) { step(); }});
        screen->open();
        return *screen;
    }
    QString storeFile() const { return folder.filePath(QStringLiteral("element.sys")); }
    QString ini() const { return folder.filePath(QStringLiteral("kibo.ini")); }
    QLineEdit* box(const char* name) const { return screen->findChild<QLineEdit*>(QLatin1String(name)); }
    QPushButton* button(const char* name) const { return screen->findChild<QPushButton*>(QLatin1String(name)); }
    std::string verdict(const char* box) const {
        return screen->findChild<QLabel*>(QStringLiteral("verdict_") + QLatin1String(box))->text().toStdString();
    }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    /// Clicks and waits for the box at the end.
    MessageBox boxAfter(const char* name) {
        const std::size_t before = dialogs.shown.size();
        click(name);
        const bool came = QTest::qWaitFor([&] { return dialogs.shown.size() > before; }, 20'000);
        EXPECT_TRUE(came) << name;
        return came ? dialogs.shown.back() : MessageBox{};
    }
    QString outside(const char* sql) const { return sqlite(storeFile(), QLatin1String(sql)).trimmed(); }

    QTemporaryDir folder;
    SystemClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    ElementStore store{database};
    ElementTable elements;
    PreparedPage page;
    GatewayState state;
    AnsweringDialogs dialogs;
    Service service;
    std::unique_ptr<ElementScreen> screen;
};

TEST_F(ElementScreenTest, ShowsEveryNameWithItsValueAndWhatItIsFor) {
    elements.set(QStringLiteral("XXTyping"), QString());
    open({});
    int shown = 0;
    for (const ElementGroup& group : elementGroups()) {
        for (const ElementRow& one : group.rows) {
            ++shown;
            EXPECT_EQ(box(qPrintable(one.box))->text(), elements[one.name]) << one.name.toStdString();
            EXPECT_FALSE(one.description.isEmpty()) << "describe " << one.name.toStdString();
        }
    }
    EXPECT_EQ(shown, ElementTable::names().size());
    for (const char* name : {"nn_QRReload", "nn_sendButton", "nn_ReadMessage"}) EXPECT_NE(box(name), nullptr) << name;
    EXPECT_EQ(box("nn_Info3")->placeholderText(), QStringLiteral("Phone number shared via url is invalid."));
    EXPECT_EQ(box("nn_Typing")->text(), QStringLiteral("typing")) << "a name without a row has its built-in value";
}

TEST_F(ElementScreenTest, FetchFillsBoxesInOrderAndStoresNothing) {
    service.answers = {
        {"XX_QR", RawServer::answer("a[title=\"caf\xC3\xA9 + more\"]")}, {"XX_To", RawServer::answer("")},
        {"XX_Info", RawServer::answer("<html>log in</html>")},           {"XX_Update", RawServer::answer("\xFF\xFE")},
        {"XX_SendButton", RawServer::answer(std::string(20'000, 'x'))},  {"XX_NewChat", RawServer::answer("", 404)}};
    open(service.address());
    EXPECT_EQ(boxAfter("cmd_Fetch").icon, MessageBox::Icon::Information);
    EXPECT_EQ(dialogs.said(0), "Done..|Element updated.. \nPlease SAVE then CLOSE APP");
    std::string order;
    const std::string id = ReadIni(QStringLiteral("kibo"), QStringLiteral("InstallId"), ini()).toStdString();
    EXPECT_FALSE(QUuid::fromString(QString::fromStdString(id)).isNull());
    for (const QUrl& request : service.requests()) {
        order += Service::parameter(request, "key") + ' ';
        EXPECT_EQ(request.path(), QStringLiteral("/base/element.php"));
        EXPECT_EQ(Service::parameter(request, "id"), id);
        EXPECT_NE(Service::parameter(request, "xx"), "");
    }
    EXPECT_EQ(order,
              "XX_QR XX_To XX_Info XX_Update XX_ChatBox XX_NewChat XX_QRReload XX_SendButton XX_ReadMessage "
              "XX_InvalidNumber XX_SendFileButton ");
    EXPECT_EQ(box("nn_QR")->text(), QStringLiteral("a[title=\"café + more\"]"));
    EXPECT_EQ(box("nn_ChatBox")->text(), QStringLiteral("//fetched/XX_ChatBox"));
    for (const char* name : {"XX_To", "XX_Info", "XX_Update", "XX_NewChat"}) {
        const QString now = box(("nn" + std::string(name + 2)).c_str())->text();
        EXPECT_EQ(now, elements[QLatin1String(name)]) << name << " must stay as it was";
    }
    EXPECT_EQ(verdict("sendButton"), "the answer is larger than 16384 bytes");
    EXPECT_EQ(verdict("NewChat"), "the server answered with status 404");
    EXPECT_EQ(outside("select count(*) from element where isi like '%fetched%'"), QStringLiteral("0"));
    EXPECT_NE(elements[QStringLiteral("XX_ChatBox")], QStringLiteral("//fetched/XX_ChatBox"));
}

TEST_F(ElementScreenTest, WithoutAServiceNothingIsAskedTwice) {
    open({});
    EXPECT_TRUE(boxAfter("cmd_Fetch").text.contains(QStringLiteral("ElementServer=")));
    EXPECT_TRUE(boxAfter("cmd_Upload").text.contains(QDir::toNativeSeparators(ini())));
    open(service.address());
    service.stop();
    const QString before = box("nn_QR")->text();
    EXPECT_EQ(boxAfter("cmd_Fetch").icon, MessageBox::Icon::Critical);
    EXPECT_EQ(box("nn_QR")->text(), before);
    EXPECT_EQ(verdict("To"), "") << "after the first that isn't answered the rest isn't asked";
    EXPECT_TRUE(button("cmd_Fetch")->isEnabled());
}

TEST_F(ElementScreenTest, UploadNeedsTheAccessCodeAndSendsEveryName) {
    open(service.address());
    box("nn_ChatBox")->setText(QStringLiteral("//a[@t=\"x + y\"]&key=z"));
    dialogs.texts = {QStringLiteral("guess")};
    click("cmd_Upload");
    click("cmd_Upload");  // and cancelled
    ASSERT_EQ(dialogs.asked.size(), 2);
    EXPECT_EQ(dialogs.asked[0].title, QStringLiteral("Upload Update"));
    EXPECT_EQ(dialogs.asked[0].prompt, QStringLiteral("Password"));
    QTest::qWait(50);
    EXPECT_TRUE(service.requests().empty());
    dialogs.texts = {QStringLiteral("qtrwz")};
    boxAfter("cmd_Upload");
    EXPECT_EQ(dialogs.said(0), "Okay..|New Update Element Uploaded..");
    QStringList names;
    for (const QUrl& request : service.requests()) {
        names.append(QString::fromStdString(Service::parameter(request, "key")));
        EXPECT_EQ(request.path(), QStringLiteral("/base/updateelement.php"));
        const bool changed = names.last() == QStringLiteral("XX_ChatBox");
        EXPECT_EQ(Service::parameter(request, "data"),
                  changed ? "//a[@t='x plus y']&key=z" : elements[names.last()].toStdString());
    }
    EXPECT_EQ(names, ElementTable::names());
}

TEST_F(ElementScreenTest, SaveStoresAllOrNothing) {
    open({});
    box("nn_ChatBox")->setText(QStringLiteral("//div[@a=\"b\"]"));
    box("nn_Typing")->clear();
    const QString rows = outside("select nama, isi from element order by nama");
    outside(
        "create trigger t before insert on element when new.nama = 'XX_SearchBox' begin select raise(abort, 'no'); "
        "end");
    EXPECT_EQ(boxAfter("cmd_Save").icon, MessageBox::Icon::Critical);
    EXPECT_EQ(outside("select nama, isi from element order by nama"), rows);

    outside("drop trigger t");
    boxAfter("cmd_Save");
    EXPECT_EQ(dialogs.said(1), "Okay..|Element updated..\nPlease Re-Open Kibo");
    EXPECT_EQ(elements[QStringLiteral("XX_ChatBox")], QStringLiteral("//div[@a='b']"));
    EXPECT_EQ(elements[QStringLiteral("XXTyping")], QStringLiteral("typing"));
    EXPECT_EQ(outside("select isi from element where nama in ('XX_ChatBox', 'XXTyping') and isi <> ''"),
              QStringLiteral("//div[@a='b']"));

    dialogs.answers = {false};
    box("nn_QR")->setText(QStringLiteral("other"));
    screen->close();
    EXPECT_TRUE(screen->isVisible()) << "unsaved changes aren't lost without a question";
    screen->close();
    EXPECT_FALSE(screen->isVisible());
}

TEST_F(ElementScreenTest, AnOlderStoreGetsTodaysRowsButForThoseThatWereEdited) {
    const QString today = outside("select nama, isi from element order by nama");
    outside("update element set isi = 'typing' where nama = 'XXTyping'");
    outside("delete from element where nama = 'XXUseHereText'");
    store.complete();
    EXPECT_EQ(outside("select nama, isi from element order by nama"), today);
    outside("update element set isi = 'mengetik' where nama = 'XXTyping'");
    outside("update element set isi = '' where nama = 'XXUseHereText'");
    const QString edited = outside("select nama, isi from element order by nama");
    store.complete();
    EXPECT_EQ(outside("select nama, isi from element order by nama"), edited);
}

TEST_F(ElementScreenTest, TestsTellWhatTheBoxFindsAndLeaveARunningMessageAlone) {
    open({});
    state.stepRunning = true;
    EXPECT_EQ(boxAfter("test_To").title, QStringLiteral("Test"));
    EXPECT_TRUE(page.asked.isEmpty());
    state.stepRunning = false;

    page.closed = true;
    for (const char* test : {"test_To", "test_Info1"})
        EXPECT_EQ(boxAfter(test).text, QStringLiteral("Please Connect first to test.."));
    EXPECT_TRUE(boxAfter("cmd_Report").text.startsWith(QStringLiteral("Please Connect first")));
    EXPECT_FALSE(screen->pageInUse());
    page.closed = false;
    const QString written = folder.filePath(QStringLiteral("page-report.txt"));
    EXPECT_TRUE(boxAfter("cmd_Report").text.contains(written));
    EXPECT_EQ(contentOf(written), "body\n");

    const std::pair<Matches, const char*> cases[] = {{{true, 3, 3, {}}, "3 matches"},
                                                     {{true, 1, 0, {}}, "1 match, not visible"},
                                                     {{true, 0, 0, {}}, "no match"},
                                                     {{false, 0, 0, {}}, "neither XPath nor CSS"}};
    for (const auto& [matches, text] : cases) {
        page.matches = matches;
        box("nn_To")->setText(QStringLiteral("//b"));
        QTest::keyClick(box("nn_To"), Qt::Key_Return);
        EXPECT_EQ(verdict("To"), text);
        EXPECT_EQ(page.asked.last(), QStringLiteral("//b")) << "what stands in the box is tried, not what is saved";
    }
}

TEST_F(ElementScreenTest, NoticeTestsAskForTheSituationAndWaitForTheNotice) {
    open({});
    for (const auto& [name, request] : {std::pair("Info1", "Please Disconnect Your Phone to test.."),
                                        {"Info2", "Please Disconnect Your Computer to test.."}}) {
        const std::string test = std::string("test_") + name;
        page.matches = {};
        page.whileAsked = [&, text = box((std::string("nn_") + name).c_str())->text(), looks = 0]() mutable {
            const bool asked = ++looks > 1;  // the first look is whether there is a page
            EXPECT_EQ(screen->pageInUse(), asked);
            EXPECT_EQ(button(test.c_str())->text() == QStringLiteral("Test"), asked);
            if (looks == 3) page.matches.texts = QStringList{text.section(u'|', 0, 0).remove(u'*')};
        };
        dialogs.leaveOpen = true;
        EXPECT_EQ(boxAfter(test.c_str()).text, QLatin1String(request));
        EXPECT_FALSE(screen->pageInUse()) << "a box that is left open holds nothing";
        dialogs.leaveOpen = false;
        dialogs.answerOpen();
        EXPECT_TRUE(QTest::qWaitFor([&] { return verdict(name) == "found"; }, 20'000)) << verdict(name);
        EXPECT_EQ(button(test.c_str())->text(), QStringLiteral("Ready"));
        EXPECT_FALSE(screen->pageInUse());
        EXPECT_EQ(page.asked.last(), box("nn_Info")->text());
    }
    page.whileAsked = nullptr;
    page.matches.texts = QStringList{QStringLiteral("Something else")};
    click("test_Info3");
    EXPECT_EQ(verdict("Info3"), "the page says: Something else");
    EXPECT_EQ(page.asked.last(), box("nn_InvalidNumber")->text());
}

}  // namespace
}  // namespace kibo::test
