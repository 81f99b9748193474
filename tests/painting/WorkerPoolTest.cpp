#include "painting/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace kelvox {

TEST(WorkerPool, RunsEachNumberOnceAndWaits)
{
    WorkerPool pool(3);
    for (const std::size_t count : {0U, 1U, 2U, 500U}) {
        std::vector<std::atomic<int>> runs(count);
        pool.forEach(count, [&](std::size_t i) { ++runs[i]; });
        for (const auto& one : runs)
            EXPECT_EQ(one, 1);
    }
}

TEST(WorkerPool, CallersNeedNotWaitForABusyPool)
{
    WorkerPool pool(1);
    std::promise<void> release;
    std::promise<void> begun;
    pool.post([&] {
        begun.set_value();
        release.get_future().wait();
    });
    begun.get_future().wait();
    std::atomic<int> runs = 0;
    pool.forEach(10, [&](std::size_t) { ++runs; }); // all on this thread
    EXPECT_EQ(runs, 10);
    // Work on the pool may itself share out work there.
    std::promise<int> inner;
    pool.post([&] {
        std::atomic<int> sum = 0;
        pool.forEach(5, [&](std::size_t i) { sum += static_cast<int>(i); });
        inner.set_value(sum);
    });
    release.set_value();
    EXPECT_EQ(inner.get_future().get(), 10);
}

TEST(WorkerPool, DropsWhatWasOnlyQueued)
{
    std::atomic<int> runs = 0;
    {
        std::promise<void> begun;
        std::promise<void> release;
        auto pool = std::make_unique<WorkerPool>(1);
        pool->post([&] {
            begun.set_value();
            release.get_future().wait();
            ++runs;
        });
        begun.get_future().wait();
        for (int i = 0; i < 100; ++i)
            pool->post([&] { ++runs; });
        auto gone = std::async(std::launch::async, [&] { pool.reset(); });
        release.set_value();
        gone.get();
    }
    // The work under way was finished; of the queue at most what began before the end was asked.
    EXPECT_GE(runs, 1);
    EXPECT_EQ(WorkerPool(0).size(), 1U);
}

} // namespace kelvox
