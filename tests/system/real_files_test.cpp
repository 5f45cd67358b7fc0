#include "real_gateway.h"
#include "support/files.h"

namespace kibo {
namespace {

const QString kAni = u"6281234567890"_qs;
const QString kFamily = u"120363000000000001"_qs;

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
    QString write(const QString& name, const QByteArray& content) {
        return test::written(real->folder.filePath(name), content);
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

    // The smallest picture that a browser draws.
    const QByteArray kPixel = QByteArray::fromBase64(
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==");
};

TEST_F(RealFilesAndNames, FilesArriveWithTheirCaptions) {
    const QString picture = write(u"a \"best\" 'pïcture' 😀.PNG"_qs, kPixel);
    const QString document = write(u"bill 1.pdf"_qs, "%PDF");
    EXPECT_EQ(send(kAni, u"caption 😀\nfor %name%"_qs, picture, document),
              QStringList({kAni + u" image a \"best\" 'pïcture' 😀.PNG caption 😀\nfor Ani"_qs,
                           kAni + u" document bill 1.pdf "_qs}))
        << real->lastReason();
    EXPECT_EQ(send(kAni, {}, {}, document), QStringList(kAni + u" document bill 1.pdf "_qs));
    EXPECT_EQ(send(kAni, {}, write(u"p.svg"_qs, "<svg/>")), QStringList(kAni + u" document p.svg "_qs))
        << "the page can't show it as a picture";

    real->behave(R"({"losePreview": 1, "previewDelayMs": 700, "uploadDelayMs": 1500})");
    EXPECT_EQ(send(kAni, u"x"_qs, picture), QStringList());
    EXPECT_EQ(real->lastReason(), "the page showed no preview of the file");
    EXPECT_EQ(send(kAni, u"slow"_qs, picture).size(), 1) << real->lastReason();
    real->behave(R"({"dropPreview": 1, "previewDelayMs": 0, "uploadDelayMs": 0})");
    EXPECT_EQ(send(kAni, u"x"_qs, picture), QStringList());
    EXPECT_TRUE(real->lastReason().starts_with("the message was not sent"));
    EXPECT_EQ(send(kAni, u"goes on"_qs), QStringList(kAni + u" text  goes on"_qs));
}

TEST_F(RealFilesAndNames, NamesAreFoundInTheSearchBox) {
    const QString picture = write(u"p.png"_qs, kPixel);
    EXPECT_EQ(send(u"\u00a0aNI \u200e"_qs, u"Ani, %name%"_qs), QStringList(kAni + u" text  Ani, Ani"_qs))
        << real->lastReason();
    EXPECT_EQ(send(u"Ani"_qs, u"again"_qs).size(), 1)
        << "its own messages hold the name by now: " << real->lastReason();
    EXPECT_EQ(send(u"Ani's Family"_qs, u"for all"_qs, picture), QStringList(kFamily + u" image p.png for all"_qs));
    EXPECT_EQ(send(u"Budi"_qs, u"x"_qs), QStringList());
    EXPECT_EQ(real->lastReason(), "ambiguous: 2 chats have this name");
    EXPECT_EQ(send(u"crowd"_qs, u"x"_qs), QStringList());
    EXPECT_EQ(real->lastReason(), "no chat has this name") << "a part of a name is none";
    real->behave(R"({"searchDelayMs": 150})");
    EXPECT_EQ(send(u"Crowd 5"_qs, u"x"_qs), QStringList(u"6285000000005 text  x"_qs));
    EXPECT_EQ(real->page->lookAtSearch()->text, QString());
    EXPECT_EQ(send(u"+62 812-3456-7890"_qs, u"by number~rfor %NAME%"_qs),
              QStringList(kAni + u" text  by number\nfor ANI"_qs));
}

TEST_F(RealFilesAndNames, TextIsTypedByKeysWhenTheBoxDoesNotTakeIt) {
    real->behave(R"({"loseEdits": 3})");
    EXPECT_EQ(send(kAni, u"two\nlines & more"_qs), QStringList(kAni + u" text  two\nlines & more"_qs))
        << real->lastReason();
    EXPECT_LE(real->standIn.behaviour().loseEdits, 1) << "the paste and a typed line are lost";
}

}  // namespace
}  // namespace kibo
