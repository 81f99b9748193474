#pragma once

#include "chartview/ViewFrame.h"
#include "presentation/Dashes.h"
#include "s57/CellGeometry.h"

namespace kelvox {

/// Makes the paths of features for one picture: simplified to what can be seen, clipped to the
/// picture and a margin in double precision, in pixels. One builder for each thread.
class ViewPathBuilder {
public:
    static constexpr double margin = 16; ///< pixels around the picture that are still drawn
    static constexpr double tolerance = 0.3; ///< pixels that a simplified line may stray

    /// @param longitudeShift degrees to add: 360 or -360 for a cell on the far side of 180°
    /// @param reach pixels around the picture to which paths are clipped
    ViewPathBuilder(const ViewFrame& frame, double longitudeShift, double reach = margin);

    /// Rings of an area, to be filled even-odd. Valid until the next call.
    const Path& areaPath(const CellGeometry& geometry, std::size_t feature);
    /// Lines, each edge its own sub-path where it enters the picture. Also the outline of areas.
    const Path& linePath(const CellGeometry& geometry, std::size_t feature);
    /// The same line as dashes of so many pixels. They are counted from the line's start, wherever
    /// it enters the picture, so that they stay on their places while the chart is panned.
    const Path& dashedPath(const CellGeometry& geometry, std::size_t feature, Dashes dashes);

private:
    template <typename Flush>
    void walkLine(const CellGeometry& geometry, std::size_t feature, Flush flush);
    void appendUse(const CellGeometry& geometry, const CellGeometry::Use& use);
    void flushRing();
    void flushLine();
    void flushDashes(Dashes dashes, double& along);
    [[nodiscard]] bool insideClip(const Rect& lonOrdinate) const;

    AffineTransform m_toPixels;
    Rect m_clip;
    std::uint8_t m_minimumDetail;
    bool m_clipping = true;
    std::vector<Point> m_points;
    std::vector<Point> m_scratch;
    Path m_path;
};

} // namespace kelvox
