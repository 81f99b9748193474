#pragma once

#include "basemap/BaseMap.h"
#include "chartview/ViewFrame.h"
#include "painting/FigureImages.h"
#include "painting/WorkerPool.h"
#include "presentation/S57ObjectRender.h"
#include "raster/BSBChart.h"
#include "s57/CellGeometry.h"

#include <QImage>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kelvox {

/// What there is to draw: an unchanging snapshot that workers share.
struct ChartScene {
    /// Lies beneath all charts; none when null.
    std::shared_ptr<const BaseMap> baseMap;
    /// The best for the view first; drawn from the last to the first, so the first lies on top.
    std::vector<std::shared_ptr<const CellGeometry>> cells;
    /// Raster charts, best first; they lie beneath the cells.
    std::vector<std::shared_ptr<const BSBChart>> rasters;
    PaletteScheme palette = PaletteScheme::Day; ///< of the raster charts
    std::shared_ptr<const Portrayal> portrayal = std::make_shared<const Portrayal>();
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
    [[nodiscard]] std::shared_ptr<FigureImages> figuresFor(const ChartScene& scene,
                                                           double pixelsPerPoint) const;

    WorkerPool& m_pool;
    // The images of the scheme and sharpness painted last.
    mutable std::mutex m_mutex;
    mutable std::weak_ptr<const Portrayal> m_portrayal;
    mutable std::shared_ptr<FigureImages> m_figures;
};

} // namespace kelvox
