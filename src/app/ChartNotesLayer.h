#pragma once

#include "app/ChartLayer.h"
#include "library/ChartRecord.h"

#include <functional>

namespace kelvox {

/// Says what the chart is worth where one looks: drawn larger than it was made for, or no chart at
/// all.
class ChartNotesLayer final : public ChartLayer {
public:
    /// Both are asked at each painting.
    /// @param records the charts that are known
    /// @param covered how many widget pixels at the left a panel takes
    explicit ChartNotesLayer(
        std::function<const ChartRecords&()> records,
        std::function<int()> covered = [] { return 0; })
        : m_records(std::move(records))
        , m_covered(std::move(covered))
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

    /// The scale of the finest chart that covers a position; nothing where none does. 0 for a chart
    /// that does not say.
    [[nodiscard]] static std::optional<int> finestScaleAt(const ChartRecords& records,
                                                          Position position);

private:
    std::function<const ChartRecords&()> m_records;
    std::function<int()> m_covered;
};

} // namespace kelvox
