#include "session/page_capture.h"

#include <QDir>
#include <QImage>
#include <QSaveFile>

#include "base/log.h"
#include "base/profile_number.h"

namespace kibo {

void PageCapture::capture() {
    if (!isYes(settings_.UseCapture) || !state_.Timer_KIBO.enabled()) return;
    if (state_.pageIsTaken() || state_.atWork()) return;
    const QImage picture = QImage::fromData(page_.pagePicture());
    if (picture.isNull()) return;
    const QDir folder(settings_.CaptureImage.isEmpty() ? programFolder_ : settings_.CaptureImage);
    folder.mkpath(QStringLiteral("."));
    QSaveFile file(folder.filePath(QStringLiteral("screen%1.jpg").arg(profile6(state_.cb_Profil.text))));
    const bool written = file.open(QIODevice::WriteOnly) && picture.save(&file, "JPG", 80) && file.commit();
    if (!written && !refused_)
        log::warning("session", QStringLiteral("the picture of the page can't be written to %1: %2")
                                    .arg(file.fileName(), file.errorString()));
    refused_ = !written;
}

}  // namespace kibo
