#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace kelvox {

/// Lets the event loop run until the condition holds; false when that takes longer than a test may.
template <typename Condition> bool runUntil(const Condition& condition)
{
    constexpr qint64 longest = 30'000; // milliseconds
    QElapsedTimer since;
    since.start();
    QTimer wake; // so that waiting for events ends now and then
    wake.start(20);
    while (!condition()) {
        if (since.elapsed() > longest)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace kelvox
