#include "base/clock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace kibo {

void SystemClock::wait(int milliseconds) {
    const qint64 end = elapsed_.elapsed() + milliseconds;
    runPendingEvents();
    while (!waitingStopped_) {
        const qint64 left = end - elapsed_.elapsed();
        if (left <= 0) return;
        // The timer wakes the event loop at the end of the wait; whatever else happens before only runs.
        QTimer wake;
        wake.setSingleShot(true);
        wake.setTimerType(Qt::PreciseTimer);
        wake.start(static_cast<int>(left));
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void SystemClock::runPendingEvents() {
    QCoreApplication::processEvents();
}

}  // namespace kibo
