#pragma once

#include "library/ChartRecord.h"
#include "raster/BSBChart.h"
#include "s57/CellGeometry.h"

#include <map>
#include <mutex>

namespace kelvox {

/// A chart in memory: the record it was loaded by and one of the two.
struct LoadedChart {
    std::shared_ptr<const ChartRecord> record;
    std::shared_ptr<const CellGeometry> cell;
    std::shared_ptr<const BSBChart> raster;
    std::size_t bytes = 0; ///< of memory, by estimate

    [[nodiscard]] bool isEmpty() const { return !cell && !raster; }
};

/// Knows the charts that any window has in memory, so that the next one takes them from there
/// instead of reading the file again. Keeps none alive itself. Any thread.
class SharedCharts {
public:
    /// Empty when nobody has the chart as its file is now.
    [[nodiscard]] LoadedChart find(const std::shared_ptr<const ChartRecord>& record) const;
    void add(const LoadedChart& chart);

private:
    struct Entry {
        FileStamp stamp;
        std::weak_ptr<const CellGeometry> cell;
        std::weak_ptr<const BSBChart> raster;
        std::size_t bytes = 0;
    };
    mutable std::mutex m_mutex;
    std::map<std::filesystem::path, Entry> m_charts;
};

} // namespace kelvox
