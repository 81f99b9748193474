#pragma once

#include "base/Result.h"
#include "library/ChartStore.h"

#include <functional>
#include <map>
#include <stop_token>

namespace kelvox {

/// What a look through the folders brought.
struct ScanReport {
    std::size_t found = 0; ///< charts that are there
    std::size_t read = 0; ///< of them new or changed, so read
    std::size_t removed = 0; ///< known before and gone
    std::vector<Error> problems; ///< folders and newly read files that cannot be used
};

/// Looks through folders, files and exchange-set catalogues for charts and keeps the index up to
/// date. What was read before and has not changed is not opened. Used by one thread at a time.
class ChartScan {
public:
    /// More charts than any publisher has; a wrong folder must not fill the memory.
    static constexpr std::size_t maximumCharts = 100'000;

    /// @param readers threads that read changed charts, the caller's included
    ChartScan(std::filesystem::path index, unsigned readers);

    /// What the index knows of charts in these places, before the disk is looked at.
    [[nodiscard]] ChartRecords known(const std::vector<std::filesystem::path>& places) const;

    struct Progress {
        ChartRecords changed; ///< new or read again since the last call
        std::vector<std::filesystem::path> removed; ///< in the last call only
        std::size_t done = 0;
        std::size_t total = 0; ///< charts to be read
    };
    /// @param progress called on the calling thread, soon after the first chart and ever more
    /// rarely; at least once
    [[nodiscard]] ScanReport scan(const std::vector<std::filesystem::path>& places,
                                  const std::function<void(const Progress&)>& progress,
                                  const std::stop_token& stop);

private:
    struct Found;
    [[nodiscard]] ChartRecords readAll(const std::vector<Found>& files,
                                       const std::function<void(const Progress&)>& progress,
                                       const std::stop_token& stop);

    unsigned m_readers;
    ChartStore m_store;
    std::map<std::filesystem::path, std::shared_ptr<const ChartRecord>> m_known;
};

/// Whether a path is a folder, an exchange-set catalogue or, by its name, a chart.
[[nodiscard]] bool mayHoldCharts(const std::filesystem::path& path);

/// Absolute and without detours, as paths stand in the index.
[[nodiscard]] std::filesystem::path normalPlace(const std::filesystem::path& path);

} // namespace kelvox
