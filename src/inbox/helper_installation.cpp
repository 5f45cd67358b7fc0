#include "inbox/helper_installation.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include "base/log.h"

namespace kibo {
namespace {

bool replaceFile(const QString& source, const QString& target) {
    QFile from(source);
    QSaveFile to(target);  // the old helper stays whole until the new one is
    if (!from.open(QIODevice::ReadOnly) || !to.open(QIODevice::WriteOnly)) return false;
    to.write(from.readAll());
    to.setPermissions(from.permissions());
    return from.error() == QFile::NoError && to.commit();
}

}  // namespace

void installDownloadHelper(const QString& programFolder) {
    const QDir folder(programFolder);
    const QString packed = folder.filePath(QStringLiteral("Downloadmedia.kb"));
    // Names as the directory spells them. The helper itself is spelled otherwise, so that every start renews it: an
    // update brings a new "Downloadmedia.kb" and nothing else.
    const QStringList present = folder.entryList({QStringLiteral("Downloadmedia.exe")}, QDir::Files);
    if (present.contains(QStringLiteral("DownloadMedia.exe")) || !QFile::exists(packed)) return;
    if (replaceFile(packed, folder.filePath(QStringLiteral("Downloadmedia.exe")))) {
        log::info("inbox", QStringLiteral("the download helper was put in place"));
    } else {
        log::warning("inbox", QStringLiteral("the download helper can't be put in place"));
    }
}

}  // namespace kibo
