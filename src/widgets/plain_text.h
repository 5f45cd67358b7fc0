#pragma once

#include <QString>
#include <QTextDocument>

namespace kibo {

/// `text` for places that take it for markup when it looks like some, and can't be told not to: tooltips, the prompt of
/// an input box. A stranger's text with an image in it would be loaded there; it is shown as it is written.
inline QString asPlainText(const QString& text) {
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text;
}

/// The same for a hint of any length: it is broken into lines instead of leaving the screen.
inline QString asHint(const QString& text) {
    return text.isEmpty() ? text : Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal);
}

}  // namespace kibo
