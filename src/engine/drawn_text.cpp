#include "engine/drawn_text.h"

#include <QRegularExpression>

namespace kibo {

QString essence(const QString& text) {
    static const QRegularExpression kDrawn(
        QStringLiteral("[\\s*_~`\\x{200B}-\\x{200F}\\x{2028}-\\x{202E}\\x{2066}-\\x{2069}]"));
    return QString(text).remove(kDrawn);
}

}  // namespace kibo
