// kibo.exe as an operator unpacks it, under Wine on a display of its own. Chrome, the page and the server run on
// Debian's side and are reached over loopback.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSet>

#include "browser/driver_process.h"
#include "standin/stand_in.h"
#include "support/eventually.h"
#include "support/mariadb_server.h"
#include "support/processes.h"
#include "support/stores.h"
#include "support/virtual_display.h"
#include "wine.h"

namespace kibo {
namespace {

const QString kPackage = QStringLiteral(KIBO_BINARY_DIR "/windows/kibo-windows.zip");
constexpr int kSlowMs = 60'000;

class WindowsProgram : public ::testing::Test {
 protected:
    static void SetUpTestSuite() {
        if (Wine::loader().isEmpty() || !QFile::exists(kPackage)) return;
        display = std::make_unique<test::VirtualDisplay>();
        wine = std::make_unique<test::Wine>();
    }
    static void TearDownTestSuite() {
        wine.reset();
        display.reset();
    }
    using Wine = test::Wine;

    void SetUp() override {
        if (!wine) GTEST_SKIP() << "needs Wine and build/windows/kibo-windows.zip, which scripts/windows makes";
        QProcess unpack;
        unpack.setWorkingDirectory(folder_.path());
        unpack.start(QStringLiteral("cmake"),
                     {QStringLiteral("-E"), QStringLiteral("tar"), QStringLiteral("xf"), kPackage});
        ASSERT_TRUE(unpack.waitForFinished());
        // A name that a program with too narrow an idea of texts, or of quoting, stumbles over.
        ASSERT_TRUE(QDir(folder_.path()).rename(QStringLiteral("kibo-windows"), home_.dirName()));
    }
    void TearDown() override {
        // Wine's processes run outside of ours and would hold the folder: the prefix' end takes them along.
        program_.kill();
        program_.waitForFinished();
    }

    QByteArray content(const char* name) const {
        QFile file(home_.filePath(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeSettings(const QString& text) const {
        QFile ini(home_.filePath(QStringLiteral("kibo.ini")));
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(text.toUtf8());
    }
    void start(const QProcessEnvironment& variables = {}) {
        wine->start(program_, home_.filePath(QStringLiteral("kibo.exe")), variables);
    }
    /// Waits for the window and closes it. Asks again: Wine drops a request that comes at a busy moment.
    static bool closed(const char* title) {
        return test::eventually([title] { return test::closeWindow(title); }, kSlowMs) &&
               test::eventually(
                   [title] {
                       if (!test::closeWindow(title)) return true;
                       QThread::msleep(500);
                       return false;
                   },
                   kSlowMs);
    }
    bool ended() {
        return test::eventually([this] { return program_.state() == QProcess::NotRunning; }, kSlowMs);
    }

    static std::unique_ptr<test::VirtualDisplay> display;
    static std::unique_ptr<test::Wine> wine;
    QTemporaryDir folder_;
    const QDir home_{folder_.filePath(QStringLiteral("Kibo & Söhne"))};
    QProcess program_;
};

std::unique_ptr<test::VirtualDisplay> WindowsProgram::display;
std::unique_ptr<test::Wine> WindowsProgram::wine;

TEST_F(WindowsProgram, FirstStartMakesSettingsAndStoresAndIsReady) {
    start();
    ASSERT_TRUE(closed("KB App")) << "tells that there is no Access driver: " << content("kibo.log").toStdString();
    ASSERT_TRUE(closed("KB App")) << "the window itself";
    ASSERT_TRUE(ended());
    EXPECT_EQ(program_.exitCode(), 0);

    EXPECT_EQ(content("kibo.ini").replace("\r\n", "\n").simplified().toStdString(),
              "[kibo] GetNumberInbox=Y Prefix=0 NoSandBox=N UseIE=Y ShowIE=N UseMDB=N NoAgent=Y Speed=NORMAL "
              "Scheduled=N ChromePortable=N HideChrome=N [DB] Port=3306 UseMDB=Y");
    QDir shipped(folder_.filePath(QStringLiteral("shipped")));
    test::createStores(shipped.path());
    for (const char* store : {"kb.mdb", "element.sys"}) {
        const auto dump = [store](const QDir& dir) {
            return test::sqlite(dir.filePath(QLatin1String(store)), QStringLiteral(".dump"));
        };
        EXPECT_EQ(dump(home_), dump(shipped)) << store;
    }
    EXPECT_EQ(home_.entryList({QStringLiteral("new-*")}, QDir::Files), QStringList());
}

TEST_F(WindowsProgram, EndsWithItsWindow) {
    test::createStores(home_.path());
    writeSettings(QStringLiteral("[DB]\r\nUseMDB=Y\r\n"));
    start();
    ASSERT_TRUE(closed("KB App")) << content("kibo.log").toStdString();
    ASSERT_TRUE(ended()) << content("kibo.log").toStdString();
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(content("kibo.log").contains("KB App ends"));
}

TEST_F(WindowsProgram, SendsWhatTheServerHoldsUntilItIsStopped) {
    standin::StandIn standIn;
    standin::Behaviour behaviour = standIn.behaviour();
    behaviour.chatOpenDelayMs = {0, 0};
    behaviour.unknownNumbers = {"6280000000000"};
    standIn.setBehaviour(behaviour);
    test::MariaDbServer& server = test::MariaDbServer::shared();
    const Settings database = server.settings(false);
    DriverProcess driver(QStringLiteral("chromedriver"));
    const Result<QByteArray> driverAddress = driver.start();
    ASSERT_TRUE(driverAddress.ok()) << driverAddress.failure().text;
    test::createStores(home_.path());

    // Incognito: the browser is Debian's and could do nothing with a Windows folder as its profile.
    writeSettings(
        QStringLiteral("[DB]\r\nUseMDB=N\r\nMySQL_WithoutDSN=Y\r\nMySQL_Server=%1\r\nMySQL_DB=%2\r\nuser=%3\r\n"
                       "password=%4\r\nPort=%5\r\n[kibo]\r\nProfil=1\r\nAutoStart=Y\r\nIncognito=Y\r\n"
                       "Headless=Y\r\nChromeDriver=%6\r\nStartAddress=%7\r\nChatAddress=%8\r\n")
            .arg(database.MySQL_Server, database.MySQL_DB, database.user, database.password, database.Port,
                 QString::fromUtf8(driverAddress.value()), QString::fromStdString(standIn.address()),
                 QString::fromStdString(standIn.chatAddress())));
    server.run(
        QStringLiteral("insert into outbox (wa_no, wa_text) values ('6281230000001', 'A plain message.'), "
                       "('6280000000000', 'Nobody gets this.'), ('6281230000002', 'Zwölf 😀 مرحبا')"));

    ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("pictures")));
    const QDir pictures(folder_.filePath(QStringLiteral("pictures")));
    QProcessEnvironment variables;
    variables.insert(QStringLiteral("KIBO_PICTURES"), test::Wine::windowsPath(pictures.path()));
    start(variables);

    const auto marks = [&] { return server.run(QStringLiteral("select wa_no, status from sent order by id")); };
    EXPECT_TRUE(test::eventually(
        [&] { return standIn.received().size() == 2 && marks().contains(QLatin1String("fail")); }, 2 * kSlowMs))
        << content("kibo.log").toStdString();
    EXPECT_TRUE(test::eventually([&] { return pictures.exists(QStringLiteral("window.png")); }));
    // Where the button Stop stands in the window.
    const auto press = [] { return test::clickWindow("KB App", 347, 50); };
    ASSERT_TRUE(test::eventually(press, kSlowMs)) << content("kibo.log").toStdString();
    // A busy machine may lose a click that is sent from outside; nobody presses Stop only once then.
    for (int more = 0; more < 3 && !program_.waitForFinished(kSlowMs / 4); ++more) press();
    ASSERT_TRUE(ended()) << content("kibo.log").toStdString();
    EXPECT_EQ(program_.exitCode(), 0);

    std::vector<std::string> texts;
    for (const auto& message : standIn.received()) texts.push_back(message.text);
    EXPECT_EQ(texts, (std::vector<std::string>{"A plain message.", "Zwölf 😀 مرحبا"}));
    EXPECT_EQ(marks(), QStringLiteral("6281230000001\t\n6280000000000\tfail\n6281230000002\t\n"));
    EXPECT_EQ(server.run(QStringLiteral("select count(*) from outbox")), QStringLiteral("0\n"));
    EXPECT_FALSE(content("kibo.log").contains("Nobody gets")) << "the log holds no texts";

    // The browser has ended with the session, the program with everything it started.
    EXPECT_TRUE(test::eventually([&] { return platform::descendants(driver.process().id).empty(); }));
    EXPECT_TRUE(test::eventually([&] { return test::processesNaming(folder_.path()).empty(); }));

    // The documents' picture is taken by this case too (scripts/pictures).
    const QString copy = qEnvironmentVariable("KIBO_WINDOWS_PICTURE");
    if (!copy.isEmpty()) {
        QFile::remove(copy);
        EXPECT_TRUE(QFile::copy(pictures.filePath(QStringLiteral("window.png")), copy));
    }
    const QImage picture(pictures.filePath(QStringLiteral("window.png")));
    EXPECT_GE(picture.width(), 900);
    EXPECT_GE(picture.height(), 600);
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 2)
        for (int x = 0; x < picture.width(); x += 2) colours.insert(picture.pixel(x, y));
    EXPECT_GT(colours.size(), 50) << "texts, frames and marks are drawn";
}

}  // namespace
}  // namespace kibo
