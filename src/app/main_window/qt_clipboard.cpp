#include "main_window/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <utility>

namespace kibo {
namespace {

/// The clipboard's own object dies with the next change, and its formats are fetched when they are asked for.
std::unique_ptr<QMimeData> copyOf(const QMimeData* data) {
    auto copy = std::make_unique<QMimeData>();
    if (!data) return copy;
    const QStringList formats = data->formats();
    for (const QString& format : formats) copy->setData(format, data->data(format));
    return copy;
}

}  // namespace

QtClipboard::~QtClipboard() = default;

void QtClipboard::lend(const QString& text) {
    if (!kept_) kept_ = copyOf(QGuiApplication::clipboard()->mimeData());
    lent_ = text;
    QGuiApplication::clipboard()->setText(text);
}

void QtClipboard::giveBack() {
    if (!kept_) return;
    std::unique_ptr<QMimeData> kept = std::exchange(kept_, nullptr);
    QClipboard& clipboard = *QGuiApplication::clipboard();
    if (clipboard.text() != lent_) return;
    if (kept->formats().isEmpty()) {
        clipboard.clear();
    } else {
        clipboard.setMimeData(kept.release());
    }
}

}  // namespace kibo
