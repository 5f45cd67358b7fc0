// kibo.exe as an operator unpacks it, under Wine on a display of its own. Chrome, the page and the server run on
// Debian's side and are reached over loopback.
#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSet>
#include <QUrl>

#include "browser/driver_process.h"
#include "driver_relay.h"
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
    /// Waits for the window, which Ctrl and `letter` open from the main one if there is a letter, and closes it. Asks
    /// again: Wine drops a request that comes at a busy moment.
    static bool closed(const char* title, char letter = 0) {
        const auto shown = [title, letter] {
            if (letter != 0 && test::pressCtrl("KB App", letter)) QThread::msleep(500);
            return test::closeWindow(title);
        };
        const auto gone = [title] {
            if (!test::closeWindow(title)) return true;
            QThread::msleep(500);
            return false;
        };
        return test::eventually(shown, kSlowMs) && test::eventually(gone, kSlowMs);
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
    ASSERT_TRUE(closed("Kibo")) << "tells that there is no Access driver: " << content("kibo.log").toStdString();
    ASSERT_TRUE(closed("KB App")) << "the window itself";
    ASSERT_TRUE(ended());
    EXPECT_EQ(program_.exitCode(), 0);

    const QByteArray settings = content("kibo.ini").replace("\r\n", "\n").simplified();
    EXPECT_EQ(settings.left(settings.indexOf(" [windows]")).toStdString(),
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

TEST_F(WindowsProgram, OpensItsScreensAndEndsWithItsWindow) {
    test::createStores(home_.path());
    writeSettings(QStringLiteral("[DB]\r\nUseMDB=Y\r\n"));
    start();
    EXPECT_TRUE(closed("Send a message", 'n')) << content("kibo.log").toStdString();
    EXPECT_TRUE(closed("Quick reply", 'r')) << content("kibo.log").toStdString();
    EXPECT_TRUE(closed("Sent messages", 'l')) << content("kibo.log").toStdString();
    EXPECT_TRUE(closed("How it works ??", 'g')) << content("kibo.log").toStdString();
    EXPECT_TRUE(closed("Update", 'u')) << content("kibo.log").toStdString();
    EXPECT_TRUE(closed("About", 'i')) << content("kibo.log").toStdString();
    EXPECT_TRUE(closed("DATA AUTO CHAT", 'k')) << content("kibo.log").toStdString();
    ASSERT_TRUE(closed("KB App")) << content("kibo.log").toStdString();
    ASSERT_TRUE(ended()) << content("kibo.log").toStdString();
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(content("kibo.log").contains("Kibo ends"));
    EXPECT_EQ(content("kibo.crash"), "");
}

TEST_F(WindowsProgram, TheEmojiProgramHandsOverWhatIsTaken) {
    wine->start(program_, home_.filePath(QStringLiteral("emo.exe")), {}, {QStringLiteral("--print")});
    const auto taken = [this] {
        (void)test::clickWindow("Emoji", 200, 70);  // again and again: a window that isn't drawn yet takes no click
        QThread::msleep(500);
        return program_.state() == QProcess::NotRunning;
    };
    ASSERT_TRUE(test::eventually(taken, kSlowMs));
    EXPECT_EQ(program_.readAll().trimmed().toStdString(), "😀");
    EXPECT_EQ(content("emo.recent").replace("\r\n", "\n"), "tone 0\n😀\n");
}

const std::string kAni = "6281230000001";
const std::string kUnknown = "6280000000000";

/// A row of the queue, and what comes of it.
struct Row {
    std::string to, text;
    std::string arrives = text;  ///< where it begins with '^', a pattern; empty: nothing does, the row fails
    std::string media = {}, file = {}, kind = "text";
};

/// What people send, and then what no font of a computer has: the window draws every text of it twice.
std::vector<Row> rowsOfEveryKind(const std::string& video, const std::string& address) {
    const std::string picture = KIBO_SOURCE_DIR "/docs/pictures/chat.png";
    const std::string lines = "one\ntwo";
    return {
        {kAni, "A plain message."},
        {kAni, "[Good morning|Good day|Hello], %name%!", "^(Good morning|Good day|Hello), Ani Wijaya!$"},
        {kAni, "First line~rsecond line\\nthird line", "First line\nsecond line\nthird line"},
        {kAni, "It is %time%.", "^It is .*[0-9]:[0-5][0-9]:[0-5][0-9].*[.]$"},
        {kAni, "It's \"quoted\", with back\\slashes and emoji 😀👩‍👩‍👧"},
        {kUnknown, "Nobody gets this.", ""},
        {"+62 (812) 3000-0002", "مرحبا، هذه رسالة تجريبية"},
        {kAni, "A picture for %name%.", "A picture for Ani Wijaya.", picture, "", "image"},
        {kAni, "A video.", "A video.", video, "", "video"},
        {kAni, "A document, from an address.", "A document, from an address.", "", address, "document"},
        {"Ani Wijaya", "To %name%, found by name.", "To Ani Wijaya, found by name."},
        {"Office", "To the whole group."},
        {kAni, "one\vtwo", lines},
        {kAni, "one\rtwo", lines},
        {kAni, "one\r\ntwo", lines},
        {kAni, "one\ttwo\x01\x7f", "one two"},
        {kAni, "one\u2028two", lines},
        {kAni, "\u202bעברית\u202c \u200fשלום\u200e السلام عليكم \u061c\u2067فارسی\u2069"},
        {kAni, "हिन्दी क्षत्रिय বাংলা தமிழ் ਪੰਜਾਬੀ తెలుగు ಕನ್ನಡ മലയാളം සිංහල"},
        {kAni, "ภาษาไทย ພາສາລາວ ភាសាខ្មែរ မြန်မာ བོད་ཡིག ᠮᠣᠩᠭᠣᠯ"},
        {kAni, "ქართული አማርኛ Հայերեն ᏣᎳᎩ 中文 日本語 한국어 ᄒ\u1161ᆫ 𠀀𪚥"},
        {kAni,
         "👍🏿👨🏽‍🚀🏳️‍🌈🇮🇩1️⃣☺︎ e\u0301\u0300\u0323 \u200b\u2060\ufeff𝒜 𐎀 "
         "𓀀"},
        {kAni, "\ue000\uf8ff\U000f0000\U0010fffd \ufdd0\ufffe\uffff\ufffd\u0378\U0001ffff\U000e0001"},
        {kAni, std::string(65'000, 'x')},
    };
}

TEST_F(WindowsProgram, SendsWhatTheServerHoldsUntilItIsStopped) {
    standin::StandIn standIn;
    standin::Behaviour behaviour = standIn.behaviour();
    behaviour.chatOpenDelayMs = {0, 0};
    behaviour.unknownNumbers = {kUnknown};
    standIn.setBehaviour(behaviour);
    standIn.addContact(kAni, "Ani Wijaya");
    standIn.addContact("120363000000000001", "Office");
    test::MariaDbServer& server = test::MariaDbServer::shared();
    const Settings database = server.settings(false);
    DriverProcess driver(QStringLiteral("chromedriver"));
    const Result<QByteArray> driverAddress = driver.start();
    ASSERT_TRUE(driverAddress.ok()) << driverAddress.failure().text;
    const test::DriverRelay relay(QUrl(QString::fromUtf8(driverAddress.value())).port());
    test::createStores(home_.path());

    // Incognito: the browser is Debian's and could do nothing with a Windows folder as its profile.
    writeSettings(
        QStringLiteral("[DB]\r\nUseMDB=N\r\nMySQL_WithoutDSN=Y\r\nMySQL_Server=%1\r\nMySQL_DB=%2\r\nuser=%3\r\n"
                       "password=%4\r\nPort=%5\r\n[kibo]\r\nProfil=1\r\nAutoStart=Y\r\nIncognito=Y\r\n"
                       "Headless=Y\r\nChromeDriver=%6\r\nStartAddress=%7\r\nChatAddress=%8\r\n")
            .arg(database.MySQL_Server, database.MySQL_DB, database.user, database.password, database.Port,
                 relay.address(), QString::fromStdString(standIn.address()),
                 QString::fromStdString(standIn.chatAddress())));
    QFile video(folder_.filePath(QStringLiteral("clip.mp4")));
    ASSERT_TRUE(video.open(QIODevice::WriteOnly) && video.write("nothing to be played") > 0 && video.flush());
    const std::vector<Row> rows =
        rowsOfEveryKind(video.fileName().toStdString(), standIn.address() + "control/received.txt");
    const auto bytes = [](const std::string& text) {
        return QStringLiteral("_utf8mb4 x'%1'").arg(QString::fromLatin1(QByteArray::fromStdString(text).toHex()));
    };
    const auto toArrive = static_cast<std::size_t>(
        std::count_if(rows.begin(), rows.end(), [](const Row& row) { return !row.arrives.empty(); }));
    for (const Row& row : rows)
        server.run(QStringLiteral("insert into outbox (wa_no, wa_text, wa_media, wa_file) values (%1, %2, %3, %4)")
                       .arg(bytes(row.to), bytes(row.text), bytes(row.media), bytes(row.file)));

    ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("pictures")));
    const QDir pictures(folder_.filePath(QStringLiteral("pictures")));
    QProcessEnvironment variables;
    variables.insert(QStringLiteral("KIBO_PICTURES"), test::Wine::windowsPath(pictures.path()));
    start(variables);

    const auto marks = [&] { return server.run(QStringLiteral("select wa_no, status from sent order by id")); };
    const auto over = [&] { return standIn.received().size() == toArrive || program_.state() == QProcess::NotRunning; };
    EXPECT_TRUE(test::eventually(over, 4 * kSlowMs)) << content("kibo.log").toStdString();
    // A text is drawn once more after it was sent.
    EXPECT_FALSE(program_.waitForFinished(2000)) << content("kibo.crash").toStdString();
    EXPECT_TRUE(test::eventually([&] { return pictures.exists(QStringLiteral("window.png")); }));
    // Where the button Stop stands in the window.
    const auto press = [] { return test::clickWindow("KB App", 347, 50); };
    ASSERT_TRUE(test::eventually(press, kSlowMs)) << content("kibo.log").toStdString();
    // A busy machine may lose a click that is sent from outside; nobody presses Stop only once then.
    for (int more = 0; more < 3 && !program_.waitForFinished(kSlowMs / 4); ++more) press();
    ASSERT_TRUE(ended()) << content("kibo.log").toStdString();
    EXPECT_EQ(program_.exitCode(), 0);

    const auto received = standIn.received();
    std::size_t next = 0;
    std::string expectedMarks;
    for (const Row& row : rows) {
        expectedMarks += row.to + (row.arrives.empty() ? "\tfail\n" : "\t\n");
        if (row.arrives.empty()) continue;
        ASSERT_LT(next, received.size()) << row.text;
        const auto& came = received[next++];
        EXPECT_EQ(came.kind, row.kind);
        if (row.arrives.front() == '^') {
            EXPECT_THAT(came.text, ::testing::MatchesRegex(row.arrives));
        } else {
            EXPECT_EQ(came.text + came.caption, row.arrives);
        }
    }
    EXPECT_EQ(next, received.size());
    EXPECT_EQ(marks().toStdString(), expectedMarks);
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
