#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kelvox {

/// A few threads that live as long as the pool. Safe to use from any thread.
class WorkerPool {
public:
    explicit WorkerPool(unsigned threads);
    /// Finishes the work that was begun; what was only queued is dropped.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void post(std::function<void()> work);
    /// Runs work(0) to work(count - 1), on the pool and on the calling thread, and waits.
    void forEach(std::size_t count, const std::function<void(std::size_t)>& work);
    [[nodiscard]] unsigned size() const { return static_cast<unsigned>(m_threads.size()); }

private:
    void run();
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_queue;
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};

} // namespace kelvox
