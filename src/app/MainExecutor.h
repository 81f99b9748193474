#pragma once

#include "base/Executor.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

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

/// The same thread, but only when it has nothing else to do.
class IdleExecutor final : public Executor {
public:
    void post(std::function<void()> work) override
    {
        QTimer::singleShot(0, QCoreApplication::instance(), std::move(work));
    }
    void performAndWait(std::function<void()> work) override { work(); }
};

} // namespace kelvox
