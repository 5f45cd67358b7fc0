#pragma once

#include <QLabel>

#include "base/controls.h"

namespace kibo {

/// A rounded mark with the colours that the state gives it. Its text is plain, elided to fit, and centred.
class ColourLabel : public QLabel {
    Q_OBJECT

 public:
    explicit ColourLabel(QWidget* parent) : QLabel(parent) {
        setTextFormat(Qt::PlainText);
        setAlignment(Qt::AlignCenter);
    }

    void setColours(Colour background, Colour foreground);
    Colour background() const { return background_; }
    Colour foreground() const { return foreground_; }

 protected:
    void paintEvent(QPaintEvent* event) override;

 private:
    Colour background_ = colour::kGrey;
    Colour foreground_ = colour::kBlack;
};

/// A one-line label that shortens its text with "…" instead of clipping it.
class ElidedLabel : public QLabel {
    Q_OBJECT

 public:
    explicit ElidedLabel(QWidget* parent) : QLabel(parent) { setTextFormat(Qt::PlainText); }

 protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A rounded panel behind other controls.
class ColourPanel : public QWidget {
    Q_OBJECT

 public:
    ColourPanel(QWidget* parent, Colour fill, Colour outline) : QWidget(parent), fill_(fill), outline_(outline) {}

 protected:
    void paintEvent(QPaintEvent* event) override;

 private:
    Colour fill_;
    Colour outline_;
};

}  // namespace kibo
