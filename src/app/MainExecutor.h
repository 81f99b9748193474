#pragma once

#include "base/Executor.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <chrono>

namespace kelvox {

/// The thread of the event loop.
class MainExecutor final : public Executor {
public:
    void post(std::function<void()> work) override
    {
        QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work),
                                  Qt::QueuedConnection);
    }
    void performAndWait(std::function<void()> work) override
    {
        auto* application = QCoreApplication::instance();
        if (QThread::currentThread() == application->thread())
            work();
        else
            QMetaObject::invokeMethod(application, std::move(work), Qt::BlockingQueuedConnection);
    }
};

/// The same thread, for what can wait until a burst of events is over: without the pause the thread
/// would be idle after each of hundreds a second.
class IdleExecutor final : public Executor {
public:
    void post(std::function<void()> work) override
    {
        constexpr auto pause = std::chrono::milliseconds(100);
        QTimer::singleShot(pause, QCoreApplication::instance(), std::move(work));
    }
    void performAndWait(std::function<void()> work) override { work(); }
};

} // namespace kelvox
