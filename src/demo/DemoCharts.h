#pragma once

#include "base/Result.h"

#include <filesystem>

namespace kelvox {

/// The demo charts: an invented stretch of coast around Kelmouth harbour as S-57 cells.
class DemoCharts {
public:
    static constexpr int largest = 4;
    static constexpr const char* updatedChart = "KV5K1011"; ///< the one that has an update

    /// Writes the cells, one update and CATALOG.031 into the folder: an overview, a coastal, an
    /// approach and two adjacent harbour charts. The same bytes on every machine.
    /// @param size 1 for charts of the usual size; 2 or 4 for charts with more detail, contours and
    ///             soundings, to measure speed with: up to 1.3 million vertices and 20,000
    ///             soundings in one chart
    [[nodiscard]] static Result<void> write(const std::filesystem::path& folder, int size = 1);

    static constexpr int mostCells = 9'999;
    /// Writes so many small cells of one scale, side by side in a square, and an overview of them
    /// all: a folder as a publisher fills it, to measure a chart library with. No catalogue.
    [[nodiscard]] static Result<void> writeGrid(const std::filesystem::path& folder, int cells);
};

} // namespace kelvox
