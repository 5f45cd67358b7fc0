#include "base/table_text.h"

#include <algorithm>

namespace kibo {

QString quotedCell(const QString& text) {
    const bool plain = std::none_of(text.begin(), text.end(),
                                    [](QChar c) { return c == u'\t' || c == u'\n' || c == u'\r' || c == u'"'; });
    if (plain) return text;
    QString quoted = text;
    return u'"' + quoted.replace(u'"', QStringLiteral("\"\"")) + u'"';
}

}  // namespace kibo
