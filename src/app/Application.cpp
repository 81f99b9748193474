#include "app/Application.h"

#include <QThread>

#include <ctime>
#include <utility>

namespace kelvox {

namespace {
/// Processor time of this thread.
std::chrono::nanoseconds workedSoFar()
{
    timespec used{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}
} // namespace

Application::Application(int& argc, char** argv)
    : QApplication(argc, argv)
{
    if (qEnvironmentVariableIsSet("KELVOX_WATCHDOG"))
        m_handler = [](std::chrono::milliseconds duration, std::chrono::milliseconds working,
                       const QByteArray& receiver) {
            qWarning("the window was held up for %lld ms, %lld of them working, by an event of %s",
                     static_cast<long long>(duration.count()),
                     static_cast<long long>(working.count()), receiver.constData());
        };
}

bool Application::notify(QObject* receiver, QEvent* event)
{
    using Clock = std::chrono::steady_clock;
    if (!m_handler || QThread::currentThread() != thread())
        return QApplication::notify(receiver, event);
    // Who it is for is asked first: it may be gone afterwards.
    const QByteArray name =
        QByteArray(receiver->metaObject()->className()) + ' ' + receiver->objectName().toUtf8();
    const int level = thread()->loopLevel();
    if (level == m_level)
        return QApplication::notify(receiver, event); // part of the event that is measured
    const int outer = std::exchange(m_level, level);
    if (outer >= 0)
        ++m_innerEvents; // the outer event runs a loop of its own: it is no stall
    const int innerEvents = m_innerEvents;
    const auto worked = workedSoFar();
    const auto begin = Clock::now();
    const bool result = QApplication::notify(receiver, event);
    const auto duration = Clock::now() - begin;
    m_level = outer;
    if (m_innerEvents == innerEvents && duration > longestStall)
        m_handler(std::chrono::duration_cast<std::chrono::milliseconds>(duration),
                  std::chrono::duration_cast<std::chrono::milliseconds>(workedSoFar() - worked),
                  name);
    return result;
}

} // namespace kelvox
