#include "widgets/log_lines.h"

#include <QScrollBar>
#include <algorithm>

#include "base/log.h"

namespace kibo {

LogLines::LogLines(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
    setMaximumBlockCount(200);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Only the operator decides to leave the end: a resize moves the bar too.
    QScrollBar* bar = verticalScrollBar();
    connect(bar, &QScrollBar::actionTriggered, this,
            [this, bar] { follows_ = bar->sliderPosition() == bar->maximum(); });
}

void LogLines::refresh() {
    const quint64 revision = log::revision();
    if (revision != revision_) {
        const QStringList lines = log::newestLines();
        const auto fresh = std::min<quint64>(revision - revision_, static_cast<quint64>(lines.size()));
        revision_ = revision;
        appendPlainText(lines.mid(lines.size() - static_cast<qsizetype>(fresh)).join(QLatin1Char('\n')));
    }
    QScrollBar* bar = verticalScrollBar();
    if (follows_ && bar->value() != bar->maximum()) bar->setValue(bar->maximum());
}

}  // namespace kibo
