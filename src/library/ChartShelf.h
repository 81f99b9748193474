#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "library/SharedCharts.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace kelvox {

/// The charts in memory. Loads what is wanted on threads of its own, the most needed first, and
/// keeps what was used last within a budget.
///
/// Lives on the executor's thread, where it also reports. The executor outlives it.
class ChartShelf {
public:
    struct Options {
        std::size_t budget = std::size_t{384} << 20; ///< bytes; what is wanted now may exceed it
        unsigned threads = 1;
        /// What the other windows have; null when there are none.
        std::shared_ptr<SharedCharts> shared;
        /// Run on a loading thread for each cell before this shelf shows it.
        std::function<void(const CellGeometry&)> prepare;
    };
    /// Something arrived or failed.
    using Arrived = std::function<void(const ChartRecord&, const std::vector<Error>& notes)>;

    ChartShelf(Executor& main, Options options, Arrived arrived);
    /// Waits for the charts at work; what was not begun is dropped.
    ~ChartShelf();
    ChartShelf(const ChartShelf&) = delete;
    ChartShelf& operator=(const ChartShelf&) = delete;

    /// What should be in memory, in the order of need. Wishes of before that were not begun are
    /// withdrawn. A chart whose file has changed is loaded again; the old one stays meanwhile.
    void want(const ChartRecords& charts);
    /// Null while it is not in memory.
    [[nodiscard]] const LoadedChart* find(const std::filesystem::path& path) const;
    /// Whether the chart, as its file is now, is in memory or cannot be loaded.
    [[nodiscard]] bool isSettled(const ChartRecord& chart) const;
    /// Wanted charts that are still to come.
    [[nodiscard]] std::size_t missing() const;
    [[nodiscard]] std::size_t bytes() const { return m_bytes; }
    [[nodiscard]] std::size_t count() const { return m_charts.size(); }
    /// Prepares all cells anew, also those that are just being loaded: what it depends on has
    /// changed.
    void prepareAgain();

private:
    struct Entry {
        LoadedChart chart;
        std::uint64_t lastWanted = 0;
    };
    struct Job {
        std::shared_ptr<const ChartRecord> record;
    };
    struct Outcome {
        LoadedChart chart;
        std::vector<Error> notes;
        unsigned preparation = 0;
    };
    /// What the threads share with the owner.
    struct Shared {
        std::mutex mutex;
        std::condition_variable wake;
        std::deque<Job> queue;
        std::set<std::filesystem::path> atWork;
        bool stopping = false;
    };
    void run();
    [[nodiscard]] Outcome load(const std::shared_ptr<const ChartRecord>& record) const;
    void read(const ChartRecord& record, Outcome& outcome) const;
    void take(Outcome outcome);
    void evict();

    Executor& m_main;
    Options m_options;
    Arrived m_arrived;
    std::shared_ptr<bool> m_alive; ///< read on the executor's thread only
    ChartRecords m_wanted;
    std::map<std::filesystem::path, Entry> m_charts;
    std::map<std::filesystem::path, FileStamp> m_failed;
    std::uint64_t m_turn = 0;
    std::atomic<unsigned> m_preparation = 0; ///< counts up with prepareAgain()
    std::size_t m_bytes = 0;
    Shared m_shared;
    std::vector<std::jthread> m_threads;
};

} // namespace kelvox
