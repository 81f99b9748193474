#include "library/SharedCharts.h"

namespace kelvox {

LoadedChart SharedCharts::find(const std::shared_ptr<const ChartRecord>& record) const
{
    const std::lock_guard lock(m_mutex);
    const auto it = m_charts.find(record->path);
    if (it == m_charts.end() || it->second.stamp != record->stamp)
        return {};
    const Entry& entry = it->second;
    return {record, entry.cell.lock(), entry.raster.lock(), entry.bytes};
}

void SharedCharts::add(const LoadedChart& chart)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_charts, [](const auto& entry) {
        return entry.second.cell.expired() && entry.second.raster.expired();
    });
    m_charts[chart.record->path] = {chart.record->stamp, chart.cell, chart.raster, chart.bytes};
}

} // namespace kelvox
