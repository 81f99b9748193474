#include "connections/HandOver.h"

#include <condition_variable>
#include <mutex>

namespace kelvox {

struct HandOver::Shared {
    std::mutex mutex;
    std::condition_variable changed;
    bool closed = false;
};

HandOver::HandOver(Executor& main)
    : m_main(main)
    , m_mainThread(std::this_thread::get_id())
    , m_shared(std::make_shared<Shared>())
{
}

void HandOver::post(std::function<void()> work)
{
    m_main.post([shared = m_shared, work = std::move(work)] {
        {
            const std::scoped_lock lock(shared->mutex);
            if (shared->closed)
                return;
        }
        work();
    });
}

void HandOver::performAndWait(std::function<void()> work)
{
    if (std::this_thread::get_id() == m_mainThread) {
        work();
        return;
    }
    // close() runs on the main thread as the work does, so the work is never half done when the
    // one who waits for it goes.
    const auto done = std::make_shared<bool>(false);
    m_main.post([shared = m_shared, done, work = std::move(work)] {
        {
            const std::scoped_lock lock(shared->mutex);
            if (shared->closed)
                return;
        }
        work();
        const std::scoped_lock lock(shared->mutex);
        *done = true;
        shared->changed.notify_all();
    });
    std::unique_lock lock(m_shared->mutex);
    m_shared->changed.wait(lock, [&] { return *done || m_shared->closed; });
}

void HandOver::close()
{
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->closed = true;
    m_shared->changed.notify_all();
}

} // namespace kelvox
