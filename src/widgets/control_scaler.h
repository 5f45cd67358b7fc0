#pragma once

#include <QPointer>
#include <QSize>
#include <QWidget>
#include <vector>

namespace kibo {

/// Scales a window's controls with the window. The design geometry of a control stands in its tag (the dynamic
/// property "tag"): left, top, width, height and font size in pixels, joined with blanks. Every resize computes
/// from these values, never from the last size, so rounding does not add up.
class ControlScaler {
 public:
    /// Font sizes leave this range for no window size: below it small text is unreadable, above it gets clipped.
    static constexpr int kSmallestFont = 11;
    static constexpr int kLargestFont = 22;

    /// `design`: the size of the controls' common area for which the recorded values hold.
    explicit ControlScaler(QSize design) : design_(design) {}

    /// Records every named direct child of `container`, except timers ("time…") and menu entries ("mn…").
    /// Shapes ("shap…") have no font size. Call it while the controls still have their design geometry.
    void record(const QWidget& container);

    /// Places all recorded controls for an area of `size`.
    void scale(QSize size) const;

 private:
    QSize design_;
    std::vector<QPointer<QWidget>> controls_;
};

}  // namespace kibo
