#include "widgets/qr_box.h"

#include <QFileInfo>
#include <algorithm>

namespace kibo {
namespace {

constexpr int kMargin = 12;
/// White around the code, without which a phone does not find it.
constexpr int kQuietZone = 16;

}  // namespace

QrBox::QrBox(QWidget* parent) : ColourPanel(parent, 0xFFFFFF, 0xD3DAE0), heading_(this), image_(this), hint_(this) {
    image_.setObjectName(QStringLiteral("Image1"));
    heading_.setText(tr("Scan to log in"));
    QFont bold = heading_.font();
    bold.setBold(true);
    heading_.setFont(bold);
    hint_.setText(tr("On the phone: WhatsApp › Linked devices › Link a device, then point the camera at this code."));
    hint_.setWordWrap(true);
    for (QLabel* label : {&heading_, &image_, &hint_}) {
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignCenter);
    }
}

void QrBox::showFile(const QString& file) {
    const QFileInfo info(file);
    if (file.isEmpty() || !info.isFile()) return;
    if (file == file_ && info.lastModified() == shownVersion_) return;
    const QPixmap picture(file);
    if (picture.isNull()) return;
    file_ = file;
    shownVersion_ = info.lastModified();
    picture_ = picture;
    placePicture();
}

void QrBox::resizeEvent(QResizeEvent* event) {
    ColourPanel::resizeEvent(event);
    const int line = fontMetrics().height();
    const int width = this->width() - 2 * kMargin;
    const int texts = 4 * line + 3 * kMargin;
    const int side = std::min(width - 2 * kQuietZone, height() - 2 * kMargin - texts);
    int top = (height() - side - texts) / 2;
    heading_.setGeometry(kMargin, top, width, line);
    top += line + kMargin;
    image_.setGeometry((this->width() - side) / 2, top, side, side);
    top += side + kMargin;
    hint_.setGeometry(kMargin, top, width, 3 * line);
    placePicture();
}

void QrBox::placePicture() {
    if (picture_.isNull() || image_.width() <= 0) return;
    const double ratio = devicePixelRatioF();
    QPixmap shown = picture_.scaled(image_.size() * ratio, Qt::KeepAspectRatio, Qt::FastTransformation);
    shown.setDevicePixelRatio(ratio);
    image_.setPixmap(shown);
}

}  // namespace kibo
