#pragma once

#include <QDateTime>
#include <QLabel>

#include "widgets/colour_label.h"

namespace kibo {

/// The login QR code (`pQR`) with the picture `Image1`, scaled without smoothing and on white, so that a phone
/// reads it from the screen.
class QrBox : public ColourPanel {
    Q_OBJECT

 public:
    explicit QrBox(QWidget* parent);

    /// Shows the picture in `file`, reading it again only when the file has changed since the last call. While
    /// the file is missing or only half written, the last picture stays.
    void showFile(const QString& file);

 protected:
    void resizeEvent(QResizeEvent* event) override;

 private:
    void placePicture();

    QLabel heading_;
    QLabel image_;
    QLabel hint_;
    QString file_;
    QDateTime shownVersion_;
    QPixmap picture_;
};

}  // namespace kibo
