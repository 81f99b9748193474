#pragma once

#include "base/Executor.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>

namespace kelvox {

/// The test's own thread as the main thread: other threads' work waits until the test runs it.
class MainLoop final : public Executor {
public:
    void post(std::function<void()> work) override
    {
        const std::scoped_lock lock(m_mutex);
        m_work.push_back(std::move(work));
        m_changed.notify_all();
    }
    void performAndWait(std::function<void()> work) override
    {
        std::promise<void> done;
        post([&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }
    /// Runs work until the condition holds; false when that takes longer than a test may.
    template <typename Condition> bool runUntil(const Condition& condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            std::function<void()> work;
            {
                std::unique_lock lock(m_mutex);
                // Conditions may also change without work, so look again now and then.
                m_changed.wait_for(lock, std::chrono::milliseconds(5),
                                   [this] { return !m_work.empty(); });
                if (!m_work.empty()) {
                    work = std::move(m_work.front());
                    m_work.pop_front();
                }
            }
            if (work)
                work();
            else if (std::chrono::steady_clock::now() > deadline)
                return false;
        }
        return true;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_work;
};

} // namespace kelvox
