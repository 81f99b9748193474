#pragma once

#include "app/ChartLayer.h"
#include "library/ChartRecord.h"

#include <functional>

namespace kelvox {

/// Says what the chart is worth where one looks: drawn larger than it was made for, or no chart at
/// all.
class ChartNotesLayer final : public ChartLayer {
public:
    /// @param records the charts that are known, asked at each painting
    explicit ChartNotesLayer(std::function<const ChartRecords&()> records)
        : m_records(std::move(records))
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

    /// The scale of the finest chart that covers a position; nothing where none does. 0 for a chart
    /// that does not say.
    [[nodiscard]] static std::optional<int> finestScaleAt(const ChartRecords& records,
                                                          Position position);

private:
    std::function<const ChartRecords&()> m_records;
};

} // namespace kelvox
