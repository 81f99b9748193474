#pragma once

#include "app/ChartLayer.h"

namespace kelvox {

/// What stands on the glass rather than on the chart: scale bar and north arrow.
class FurnitureLayer final : public ChartLayer {
public:
    /// @param northUp called when the north arrow is double-clicked
    explicit FurnitureLayer(std::function<void()> northUp)
        : m_northUp(std::move(northUp))
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;

private:
    std::function<void()> m_northUp;
    QRectF m_arrow;
};

} // namespace kelvox
