#include "real_gateway.h"

namespace kibo {
namespace {

const QString kAni = QStringLiteral("6281234567890");
const QString kFamily = QStringLiteral("120363000000000001");

/// Files and names on the real page, with contacts of which two share a name.
class RealFilesAndNames : public test::OnRealGateway<10> {
 protected:
    static void SetUpTestSuite() {
        OnRealGateway::SetUpTestSuite();
        real->standIn.addContact(kAni.toStdString(), "Ani");
        real->standIn.addContact(kFamily.toStdString(), "Ani's Family");
        real->standIn.addContact("6281300000001", "Budi");
        real->standIn.addContact("6281300000002", "Budi ");
        for (int i = 0; i < 60; ++i)
            real->standIn.addContact(std::to_string(6285000000000 + i), "Crowd " + std::to_string(i));
    }
    void SetUp() override { first = real->standIn.received().size(); }

    QString write(const QString& name, const QByteArray& content) {
        QFile file(real->folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    }
    /// Sends one message; what arrived, as "number kind fileName text" each.
    QStringList send(const QString& to, const QString& text, const QString& media = {}, const QString& file = {}) {
        const size_t before = real->standIn.received().size();
        const int failed = real->state.failedCount;
        real->queue(to, text, 0, media, file);
        real->runQueue();
        const bool came = real->standIn.waitForReceived(before + 1, std::chrono::milliseconds(500));
        EXPECT_EQ(came, real->state.failedCount == failed);
        QStringList arrived;
        const auto all = real->standIn.received();
        for (size_t i = before; i < all.size(); ++i)
            arrived.append(QString::fromStdString(all[i].number + ' ' + all[i].kind + ' ' + all[i].fileName + ' ' +
                                                  all[i].text + all[i].caption));
        return arrived;
    }
    QString lastReason() const { return real->state.ms2.text(real->state.ms2.rowCount() - 1, 3); }

    size_t first = 0;
    // The smallest picture that a browser draws.
    const QByteArray kPixel = QByteArray::fromBase64(
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==");
};

TEST_F(RealFilesAndNames, FilesArriveWithTheirCaptions) {
    const QString picture = write(QString::fromUtf8("a \"best\" 'pïcture' 😀.png"), kPixel);
    const QString document = write(QStringLiteral("bill 1.pdf"), "%PDF");
    EXPECT_EQ(send(kAni, QString::fromUtf8("caption 😀\nof two lines"), picture, document),
              QStringList({kAni + QString::fromUtf8(" image a \"best\" 'pïcture' 😀.png caption 😀\nof two lines"),
                           kAni + QStringLiteral(" document bill 1.pdf ")}))
        << lastReason().toStdString();
    EXPECT_EQ(send(kAni, {}, {}, document), QStringList(kAni + QStringLiteral(" document bill 1.pdf ")));

    real->behave(R"({"losePreview": 1, "previewDelayMs": 700, "uploadDelayMs": 1500})");
    EXPECT_EQ(send(kAni, QStringLiteral("x"), picture), QStringList());
    EXPECT_EQ(lastReason(), QStringLiteral("the page showed no preview of the file"));
    EXPECT_EQ(send(kAni, QStringLiteral("slow"), picture).size(), 1) << lastReason().toStdString();
    real->behave(R"({"dropPreview": 1, "previewDelayMs": 0, "uploadDelayMs": 0})");
    EXPECT_EQ(send(kAni, QStringLiteral("x"), picture), QStringList());
    EXPECT_TRUE(lastReason().startsWith(QStringLiteral("the message was not sent")));
    EXPECT_EQ(send(kAni, QStringLiteral("goes on")), QStringList(kAni + QStringLiteral(" text  goes on")));
}

TEST_F(RealFilesAndNames, NamesAreFoundInTheSearchBox) {
    const QString picture = write(QStringLiteral("p.png"), kPixel);
    EXPECT_EQ(send(QStringLiteral("ani"), QStringLiteral("Ani, %name%")),
              QStringList(kAni + QStringLiteral(" text  Ani, Ani")))
        << lastReason().toStdString();
    EXPECT_EQ(send(QStringLiteral("Ani"), QStringLiteral("again")).size(), 1)
        << "its own messages hold the name by now: " << lastReason().toStdString();
    EXPECT_EQ(send(QStringLiteral("Ani's Family"), QStringLiteral("for all"), picture),
              QStringList(kFamily + QStringLiteral(" image p.png for all")));
    EXPECT_EQ(send(QStringLiteral("Budi"), QStringLiteral("x")), QStringList());
    EXPECT_EQ(lastReason(), QStringLiteral("ambiguous: 2 chats have this name"));
    EXPECT_EQ(send(QStringLiteral("crowd"), QStringLiteral("x")), QStringList());
    EXPECT_EQ(lastReason(), QStringLiteral("no chat has this name"));
    real->behave(R"({"searchDelayMs": 150})");
    EXPECT_EQ(send(QStringLiteral("Crowd 5"), QStringLiteral("x")),
              QStringList(QStringLiteral("6285000000005 text  x")));
    EXPECT_EQ(real->page->lookAtSearch()->text, QString());
}

TEST_F(RealFilesAndNames, TextIsTypedByKeysWhenTheBoxDoesNotTakeIt) {
    real->behave(R"({"loseEdits": 3})");
    EXPECT_EQ(send(kAni, QStringLiteral("two\nlines & more")),
              QStringList(kAni + QStringLiteral(" text  two\nlines & more")))
        << lastReason().toStdString();
    EXPECT_LE(real->standIn.behaviour().loseEdits, 1) << "the paste and a typed line are lost";
}

}  // namespace
}  // namespace kibo
