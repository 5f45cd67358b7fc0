#include "app/help.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "platform/machine.h"
#include "platform/shell.h"

namespace kibo {
namespace {

struct Chapter {
    const char *window, *anchor;
};

constexpr Chapter kChapters[] = {
    {"frm_Gateway2", "the-main-window"}, {"frm_element", "the-element-screen"}, {"frm_Send1_v2", "the-full-form"},
    {"frm_Send2_v2", "quick-reply"},     {"frm_Sent", "sent-messages"},         {"frm_Config", "the-settings-screen"},
};

}  // namespace

QString Help::folderBesideProgram() {
    const QFileInfo program(QString::fromStdString(platform::executableFile()));
    return program.dir().filePath(QStringLiteral("help"));
}

QString Help::chapterOf(const QString& window) {
    const auto* chapter = std::find_if(std::begin(kChapters), std::end(kChapters),
                                       [&](const Chapter& one) { return window == QLatin1String(one.window); });
    return chapter == std::end(kChapters) ? QString() : QLatin1String(chapter->anchor);
}

void Help::open(const QString& window) const {
    const QString page =
        QDir::toNativeSeparators(QDir(folder_).filePath(QStringLiteral("operator/%1.html").arg(chapterOf(window))));
    QString trouble;
    if (!QFileInfo::exists(page)) {
        trouble = QStringLiteral("The help is not installed here. It should be in the folder\n%1")
                      .arg(QDir::toNativeSeparators(folder_));
    } else if (const auto opened = platform::openForOperator(page.toStdString()); !opened) {
        trouble = QStringLiteral("The help can't be opened: %1\nIts page is the file\n%2")
                      .arg(QString::fromStdString(opened.failure().text), page);
    }
    if (!trouble.isEmpty()) dialogs_.show({QStringLiteral("Help"), trouble, MessageBox::Icon::Information});
}

}  // namespace kibo
