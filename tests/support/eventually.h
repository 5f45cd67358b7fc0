#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

namespace kibo::test {

/// Asks `condition` again, with events handled in between, until it holds; false after `withinMs`.
template <class Condition>
bool eventually(Condition condition, int withinMs = 10'000) {
    QElapsedTimer waited;
    waited.start();
    while (!condition()) {
        if (waited.elapsed() > withinMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
    return true;
}

}  // namespace kibo::test
