#include "screens/about_screen.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "support/answering_dialogs.h"

namespace kibo::test {
namespace {

TEST(AboutTest, TypesItsLinesOutAndCopiesNothingPrivate) {
    TypedLines typed({QStringLiteral("abc"), QStringLiteral("x"), QStringLiteral("longer")});
    EXPECT_TRUE(typed.tick() && typed.tick());
    EXPECT_EQ(typed.shown(0) + typed.shown(1) + typed.shown(2), QStringLiteral("abxlo"));
    EXPECT_FALSE(typed.tick());
    EXPECT_EQ(typed.shown(2), QStringLiteral("longer")) << "the first one ends it for all";

    const QString report = factsForReport({{QStringLiteral("a"), QStringLiteral("/home/ani/kibo")},
                                           {QStringLiteral("b"), QStringLiteral("/home/anita/kibo")},
                                           {QStringLiteral("c"), QStringLiteral("/media/Ani/kibo.ini")},
                                           {QStringLiteral("d"), QStringLiteral("ChromeDriver 116")}},
                                          QStringLiteral("/home/ani"));
    EXPECT_EQ(report.toStdString(), "a: ~/kibo\nb: /home/anita/kibo\nc: /media/…/kibo.ini\nd: ChromeDriver 116\n");

    QTemporaryDir folder;
    Settings settings;
    settings.ChromeDriver = folder.filePath(QStringLiteral("none"));
    settings.SupportNumber = QStringLiteral("no number");
    SystemClock clock;
    ErrorPolicy policy;
    Database database(clock, policy);
    AnsweringDialogs dialogs;
    const auto make = [&] {
        return AboutScreen({settings, database, dialogs, folder.path(), folder.filePath(QStringLiteral("kibo.ini"))});
    };
    AboutScreen nobody = make();
    EXPECT_EQ(nobody.findChild<QPushButton*>(QStringLiteral("Label3")), nullptr) << "nothing to click";
    settings.SupportNumber = QStringLiteral("+62 812-1");
    AboutScreen screen = make();
    screen.open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&screen));
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return screen.findChild<QPushButton*>(QStringLiteral("Label3"))->text().endsWith(QStringLiteral("+628121"));
    }));
    EXPECT_TRUE(QTest::qWaitFor([&] {
        const auto labels = screen.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [](auto* one) { return one->text() == u"not known"; });
    })) << "the driver";
    QTest::mouseClick(screen.findChild<QPushButton*>(QStringLiteral("copyReport")), Qt::LeftButton);
    const QString copied = QApplication::clipboard()->text();
    EXPECT_TRUE(copied.contains(QLatin1String(qVersion())) && !copied.contains(QStringLiteral("8121")));
    QTest::keyClick(&screen, Qt::Key_Escape);
    EXPECT_FALSE(screen.isVisible());
}

}  // namespace
}  // namespace kibo::test
