#include "widgets/window_place.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <QWidget>

#include "base/settings_file.h"
#include "widgets/queue_grid.h"

namespace kibo {
namespace {

const QString kSection = QStringLiteral("windows");
/// So much of it must be seen that it can be taken hold of.
constexpr int kSeen = 64;

}  // namespace

void WindowPlace::remember(QWidget* window, const QString& settingsFile) {
    new WindowPlace(window, settingsFile);
}

WindowPlace::WindowPlace(QWidget* window, const QString& settingsFile)
    : QObject(window), window_(window), file_(settingsFile) {
    restore();
    window->installEventFilter(this);
}

void WindowPlace::restore() {
    restorePlace();
    for (QueueGrid* grid : window_->findChildren<QueueGrid*>())
        grid->setOwnWidths(ReadIni(kSection, columnsKey(*grid), file_));
}

QString WindowPlace::columnsKey(const QueueGrid& grid) const {
    return window_->objectName() + u'.' + grid.objectName();
}

void WindowPlace::storeColumns() const {
    for (const QueueGrid* grid : window_->findChildren<QueueGrid*>()) {
        if (grid->objectName().isEmpty()) continue;
        const QString key = columnsKey(*grid), widths = grid->ownWidths();
        if (widths != ReadIni(kSection, key, file_)) WriteIni(kSection, key, widths, file_);
    }
}

void WindowPlace::restorePlace() {
    stored_ = ReadIni(kSection, window_->objectName(), file_);
    QList<int> numbers;
    for (const QString& number : stored_.split(u',')) {
        bool isNumber = false;
        numbers.append(number.toInt(&isNumber));
        if (!isNumber) return;
    }
    if (numbers.size() != 5) return;
    const QRect place(numbers[0], numbers[1], numbers[2], numbers[3]);
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect seen = place & screen->availableGeometry();
        if (seen.width() < kSeen || seen.height() < kSeen || place.top() < screen->availableGeometry().top()) continue;
        window_->resize(place.size().boundedTo(screen->availableSize()).expandedTo(window_->minimumSize()));
        window_->move(place.topLeft());
        if (numbers[4] != 0) window_->setWindowState(Qt::WindowMaximized);
        return;
    }
}

void WindowPlace::store() {
    const bool maximised = window_->isMaximized();
    const QRect place = maximised ? window_->normalGeometry() : QRect(window_->pos(), window_->size());
    if (window_->isMinimized() || !place.isValid()) return;
    const QString now = QStringLiteral("%1,%2,%3,%4,%5")
                            .arg(place.x())
                            .arg(place.y())
                            .arg(place.width())
                            .arg(place.height())
                            .arg(maximised ? 1 : 0);
    if (now == stored_) return;
    stored_ = now;
    WriteIni(kSection, window_->objectName(), now, file_);
}

bool WindowPlace::eventFilter(QObject* watched, QEvent* event) {
    // Not as it moves: the file would be written for every pixel.
    if (event->type() == QEvent::Hide && !event->spontaneous()) {
        store();
        storeColumns();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace kibo
