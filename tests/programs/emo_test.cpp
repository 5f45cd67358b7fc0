#include <gtest/gtest.h>

#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include "emo/emoji_window.h"
#include "support/files.h"

namespace kibo::test {
namespace {

/// Against Unicode's own list, from which the short one was made: nothing is lost, nothing invented.
TEST(EmojiListTest, givesEveryEmojiInEveryTone) {
    QSet<QString> unicode, ours;
    for (const QByteArray& line : contentOf(QStringLiteral("/usr/share/unicode/emoji/emoji-test.txt")).split('\n')) {
        const qsizetype status = line.indexOf("; fully-qualified ");
        if (status < 0) continue;
        QString emoji;
        for (const QByteArray& code : line.left(status).simplified().split(' '))
            emoji += QString::fromUcs4(std::array{static_cast<char32_t>(code.toUInt(nullptr, 16))}.data(), 1);
        unicode.insert(emoji);
    }
    const EmojiList list;
    EXPECT_EQ(list.groups().size(), 9);
    for (const Emoji& emoji : list.all())
        for (int tone = 0; tone < kSkinTones; ++tone) ours.insert(emoji.inTone(static_cast<SkinTone>(tone)));
    EXPECT_GT(unicode.size(), 3000);
    EXPECT_EQ(ours, unicode);
}

TEST(EmojiListTest, findsByWordsTheBestFirst) {
    const EmojiList list;
    const auto found = [&](const char* words) {
        QStringList names;
        for (const Emoji& emoji : list.matching(QString::fromUtf8(words))) names.append(emoji.name);
        return names;
    };
    EXPECT_EQ(found("ROCK et").value(0), QStringLiteral("rocket"));
    EXPECT_EQ(found("🚀"), QStringList{QStringLiteral("rocket")});
    EXPECT_LT(found("car").indexOf(QStringLiteral("card file box")), found("car").indexOf(QStringLiteral("scarf")));
    EXPECT_EQ(found("handshake"), QStringList{QStringLiteral("handshake")});
    EXPECT_EQ(found("handshake dark").size(), 2 * 4 + 2 * 3) << "with medium-dark ones";
    EXPECT_EQ(found("no such thing") + found(" "), QStringList());
}

TEST(EmojiWindowTest, isWorkedByKeysAndRemembersWhatWasUsed) {
    const QTemporaryDir folder;
    QString file = folder.filePath(QStringLiteral("emo.recent"));
    QStringList taken;
    std::unique_ptr<EmojiWindow> window;
    const auto open = [&](EmojiWindow::Purpose purpose) {
        window = std::make_unique<EmojiWindow>(purpose, file, [&](const QString& emoji) { taken.append(emoji); });
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    };
    const auto key = [&](Qt::Key pressed, Qt::KeyboardModifiers with = {}) {
        QTest::keyClick(window->focusWidget(), pressed, with);
    };
    open(EmojiWindow::Purpose::HandOver);
    QTest::keyClicks(window->focusWidget(), QStringLiteral("thumbs"));
    key(Qt::Key_Down);
    key(Qt::Key_Right);
    key(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_TRUE(window->isVisible()) << "with Shift it goes on";
    QTest::keyClick(window->focusWidget(), Qt::Key_S, Qt::AltModifier);
    for (int i = 0; i < 3; ++i) key(Qt::Key_Down);
    key(Qt::Key_Tab);
    key(Qt::Key_Tab);
    QTest::keyClicks(window->focusWidget(), QStringLiteral(" "));
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(taken, QStringList({QStringLiteral("👎"), QStringLiteral("👎🏽")}));

    open(EmojiWindow::Purpose::Copy);
    QTest::keyClicks(window->focusWidget(), QStringLiteral("rocket"));
    key(Qt::Key_Enter);
    EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("said"))->text(), QStringLiteral("Copied: 🚀 rocket"));
    key(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(contentOf(file), "tone 3\n🚀\n👎\n");

    written(file, "tone 99\nno emoji\n🚀\n" + QByteArray(100, '\xff'));
    open(EmojiWindow::Purpose::Copy);
    auto* grid = window->findChild<QListView*>(QStringLiteral("grid"));
    EXPECT_EQ(grid->model()->rowCount(), 1) << "the last used ones come first";
    EXPECT_EQ(QAccessible::queryAccessibleInterface(grid)->child(0)->text(QAccessible::Name), QStringLiteral("rocket"));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->visualRect(grid->model()->index(0, 0)).center());
    EXPECT_EQ(taken.last(), QStringLiteral("🚀"));

    file = folder.filePath(QStringLiteral("none/emo.recent"));
    open(EmojiWindow::Purpose::Copy);
    key(Qt::Key_Return);
    EXPECT_EQ(taken.last(), QStringLiteral("😀")) << "what can't be kept is taken all the same";
    EXPECT_TRUE(window->findChild<QLabel*>(QStringLiteral("said"))->text().contains(QStringLiteral("not remembered")));
}

}  // namespace
}  // namespace kibo::test
