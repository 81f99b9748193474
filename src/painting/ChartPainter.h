#pragma once

#include "chartview/ViewFrame.h"
#include "painting/WorkerPool.h"
#include "presentation/S57ObjectRender.h"
#include "s57/CellGeometry.h"

#include <QImage>

#include <atomic>
#include <memory>
#include <vector>

namespace kelvox {

/// What there is to draw: an unchanging snapshot that workers share.
struct ChartScene {
    /// The best for the view first; drawn from the last to the first, so the first lies on top.
    std::vector<std::shared_ptr<const CellGeometry>> cells;
    RenderColors colors;
    RenderSettings settings;
};

/// Paints pictures of the chart on a pool of workers and the calling thread.
class ChartPainter {
public:
    explicit ChartPainter(WorkerPool& pool)
        : m_pool(pool)
    {
    }
    /// A picture at the frame's size. Null when the flag was raised before it was finished.
    [[nodiscard]] QImage paint(const ChartScene& scene, const ViewFrame& frame,
                               const std::atomic<bool>& cancelled) const;
    [[nodiscard]] QImage paint(const ChartScene& scene, const ViewFrame& frame) const;

private:
    WorkerPool& m_pool;
};

} // namespace kelvox
