#include "main_window/window_picture.h"

#include <QDir>
#include <QPixmap>
#include <QSaveFile>

#include "base/log.h"

namespace kibo {

WindowPicture::WindowPicture(QWidget& window, const GatewayState& state, QString folder,
                             std::function<void(const QString& file)> savePage)
    : window_(window), state_(state), folder_(std::move(folder)), savePage_(std::move(savePage)) {}

void WindowPicture::look() {
    const int ended = state_.sentCount + state_.failedCount;
    const bool queueEmpty = state_.ms_out.rowCount() == 1;
    const bool due = ended != ended_ || (queueEmpty && !queueEmpty_);
    ended_ = ended;
    queueEmpty_ = queueEmpty;
    if (due && !save()) log::warning("window", QStringLiteral("window.png can't be written"));
}

bool WindowPicture::save() const {
    const QDir folder(folder_);
    if (savePage_) savePage_(folder.filePath(QStringLiteral("page.png")));
    // Whoever watches the folder never finds half a picture.
    QSaveFile file(folder.filePath(QStringLiteral("window.png")));
    return file.open(QIODevice::WriteOnly) && window_.grab().save(&file, "PNG") && file.commit();
}

}  // namespace kibo
