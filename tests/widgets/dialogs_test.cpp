#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "widgets/qt_dialogs.h"

namespace kibo::test {
namespace {

template <class Box>
Box* standing() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* box = qobject_cast<Box*>(window); box && box->isVisible()) return box;
    return nullptr;
}

TEST(QtDialogsTest, answersComeAsCallsAndTheEndGivesNone) {
    const MessageBox question{QStringLiteral("t"), QStringLiteral("x"), {}, MessageBox::Buttons::YesNo};
    QtDialogs dialogs;
    QStringList answers;
    const auto noted = [&](bool yes) { answers.append(yes ? QStringLiteral("yes") : QStringLiteral("no")); };
    const auto entered = [&](const auto& text) { answers.append(text.value_or(QStringLiteral("cancelled"))); };
    dialogs.show(question, noted);
    EXPECT_TRUE(answers.isEmpty());
    QTest::mouseClick(standing<QMessageBox>()->button(QMessageBox::Yes), Qt::LeftButton);
    dialogs.show(question, noted);
    standing<QMessageBox>()->close();
    dialogs.ask({QStringLiteral("t"), QStringLiteral("x"), QStringLiteral("shop")}, entered);
    QTest::keyClick(standing<QInputDialog>(), Qt::Key_Return);
    dialogs.ask({QStringLiteral("t"), QStringLiteral("x"), QStringLiteral("shop")}, entered);
    QTest::keyClick(standing<QInputDialog>(), Qt::Key_Escape);
    EXPECT_EQ(answers.join(u' ').toStdString(), "yes no shop cancelled");

    const QString picture = QStringLiteral(KIBO_SOURCE_DIR "/docs/pictures/window.png");
    dialogs.choose({QStringLiteral("t"), {{QStringLiteral("JPEG"), QStringLiteral("*.jpg;*.jpeg")}}, picture}, entered);
    auto* files = standing<QFileDialog>();
    EXPECT_EQ(files->directory(), QFileInfo(picture).dir());
    EXPECT_EQ(files->nameFilters().join(u' '), QStringLiteral("JPEG (*.jpg *.jpeg)"));
    files->findChild<QLineEdit*>()->setText(picture);
    QTest::keyClick(files->findChild<QLineEdit*>(), Qt::Key_Return);
    dialogs.choose({QStringLiteral("t"), {}}, entered);
    QTest::keyClick(standing<QFileDialog>(), Qt::Key_Escape);
    EXPECT_EQ(answers.mid(4), QStringList({picture, QStringLiteral("cancelled")}));
    const QTemporaryDir folder;
    const QString written = folder.filePath(QStringLiteral("sent.csv"));
    dialogs.choose({QStringLiteral("t"), {}, written, QStringLiteral("sent.csv")}, entered);
    files = standing<QFileDialog>();
    EXPECT_EQ(files->findChild<QLineEdit*>()->text(), QStringLiteral("sent.csv"));
    QTest::keyClick(files->findChild<QLineEdit*>(), Qt::Key_Return);
    EXPECT_EQ(answers.last(), written) << "which need not be there";

    dialogs.show(question, noted);
    QTimer::singleShot(50, [&] { dialogs.closeForGood(); });
    EXPECT_FALSE(dialogs.showAndWait(question)) << "the end comes while it is waited for";
    EXPECT_FALSE(dialogs.showAndWait(question)) << "and after it nothing waits";
    EXPECT_EQ(standing<QMessageBox>(), nullptr);
    EXPECT_EQ(answers.size(), 7);
}

}  // namespace
}  // namespace kibo::test
