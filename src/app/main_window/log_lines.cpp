#include "main_window/log_lines.h"

#include <algorithm>

#include "app/log.h"

namespace kibo {

LogLines::LogLines(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setMaximumBlockCount(200);
}

void LogLines::refresh() {
    const quint64 revision = log::revision();
    if (revision == revision_) return;
    const QStringList lines = log::newestLines();
    const auto fresh = std::min<quint64>(revision - revision_, static_cast<quint64>(lines.size()));
    revision_ = revision;
    appendPlainText(lines.mid(lines.size() - static_cast<qsizetype>(fresh)).join(QLatin1Char('\n')));
}

}  // namespace kibo
