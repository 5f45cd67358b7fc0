#include "widgets/help_page.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include "platform/machine.h"
#include "platform/shell.h"

namespace kibo {
QString helpFolder() {
    const QFileInfo program(QString::fromStdString(platform::executableFile()));
    return program.dir().filePath(QStringLiteral("help"));
}

Result<void> openHelpPage(const QString& folder, const QString& chapter) {
    const QString page =
        QDir::toNativeSeparators(QDir(folder).filePath(QStringLiteral("operator/%1.html").arg(chapter)));
    if (!QFileInfo::exists(page))
        return Failure{
            FailureKind::NotFound,
            QCoreApplication::translate("Help", "The help is not installed here. It should be in the folder\n%1")
                .arg(QDir::toNativeSeparators(folder))
                .toStdString(),
            {}};
    const Result<void> opened = platform::openForOperator(page.toStdString());
    if (opened) return {};
    return Failure{opened.failure().kind,
                   QCoreApplication::translate("Help", "The help can't be opened: %1\nIts page is the file\n%2")
                       .arg(QString::fromStdString(opened.failure().text), page)
                       .toStdString(),
                   {}};
}

}  // namespace kibo
