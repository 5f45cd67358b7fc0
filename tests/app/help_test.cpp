#include "app/help.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include "app/screen_list.h"
#include "support/answering_dialogs.h"
#include "widgets/help_page.h"

namespace kibo::test {
namespace {

const QDir kPages(helpFolder());

QString pageText(const QString& name) {
    QFile file(kPages.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// A heading that was renamed is found here, whoever leads to it: a screen, the page of a chapter, another guide.
TEST(HelpPages, eachScreenHasItsChapterAndNoLinkLeadsAstray) {
    const QString guide = pageText(QStringLiteral("operator.html"));
    for (const QString& window : ScreenList::names() + QStringList{QStringLiteral("frm_Gateway2")}) {
        const QString chapter = Help::chapterOf(window);
        EXPECT_FALSE(chapter.isEmpty()) << window.toStdString();
        EXPECT_TRUE(guide.contains(QStringLiteral(" id=\"%1\"").arg(chapter))) << chapter.toStdString();
        EXPECT_TRUE(pageText(QStringLiteral("operator/%1.html").arg(chapter))
                        .contains(QStringLiteral("../operator.html#%1\"").arg(chapter)));
    }
    EXPECT_TRUE(guide.contains(QStringLiteral(" id=\"emoji\""))) << "of the program emo";
    static const QRegularExpression link(QStringLiteral("(?:href|src)=\"(?!https?:)([^\"#]*)(?:#([^\"]*))?\""));
    int links = 0;
    for (const QString& name : kPages.entryList({QStringLiteral("*.html")})) {
        const QString page = pageText(name);
        for (auto found = link.globalMatch(page); found.hasNext(); ++links) {
            const QRegularExpressionMatch one = found.next();
            const QString file = one.captured(1).isEmpty() ? name : one.captured(1), anchor = one.captured(2);
            ASSERT_TRUE(kPages.exists(file)) << name.toStdString() << ": " << file.toStdString();
            EXPECT_TRUE(anchor.isEmpty() || pageText(file).contains(QStringLiteral(" id=\"%1\"").arg(anchor)))
                << name.toStdString() << ": " << one.captured().toStdString();
        }
    }
    EXPECT_GT(links, 100);
}

TEST(HelpPages, whatIsNotInstalledIsSaidWithItsPlace) {
    AnsweringDialogs dialogs;
    Help(dialogs, QStringLiteral("/no/such/help")).open(QStringLiteral("frm_Sent"));
    ASSERT_EQ(dialogs.shown.size(), 1);
    EXPECT_NE(dialogs.said(0).find("/no/such/help"), std::string::npos);
}

}  // namespace
}  // namespace kibo::test
