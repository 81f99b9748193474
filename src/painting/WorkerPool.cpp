#include "painting/WorkerPool.h"

#include "base/Background.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace kelvox {

WorkerPool::WorkerPool(unsigned threads)
{
    for (unsigned i = 0; i < std::max(threads, 1U); ++i)
        m_threads.emplace_back([this] { run(); });
}

WorkerPool::~WorkerPool()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_queue.clear();
    }
    m_wake.notify_all();
    for (auto& thread : m_threads)
        thread.join();
}

void WorkerPool::post(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(std::move(work));
    }
    m_wake.notify_one();
}

void WorkerPool::run()
{
    workInBackground(); // the window is moved and drawn meanwhile
    for (;;) {
        std::function<void()> work;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
            if (m_stopping)
                return;
            work = std::move(m_queue.front());
            m_queue.pop_front();
        }
        work();
    }
}

void WorkerPool::forEach(std::size_t count, const std::function<void(std::size_t)>& work)
{
    // Whoever comes first takes the next number; the caller works too, so a busy pool cannot
    // block it.
    struct Shared {
        std::atomic<std::size_t> next = 0;
        std::size_t done = 0;
        std::mutex mutex;
        std::condition_variable finished;
    };
    const auto shared = std::make_shared<Shared>();
    const auto take = [shared, count](const std::function<void(std::size_t)>& job) {
        for (std::size_t i = shared->next++; i < count; i = shared->next++) {
            job(i);
            const std::lock_guard lock(shared->mutex);
            if (++shared->done == count)
                shared->finished.notify_all();
        }
    };
    for (std::size_t i = 1; i < std::min<std::size_t>(count, m_threads.size() + 1); ++i)
        post([take, &work, shared, count] {
            if (shared->next < count)
                take(work);
        });
    take(work);
    std::unique_lock lock(shared->mutex);
    shared->finished.wait(lock, [&] { return shared->done == count; });
}

} // namespace kelvox
