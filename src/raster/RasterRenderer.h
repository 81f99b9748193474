#pragma once

#include "base/Position.h"
#include "raster/BSBChart.h"
#include "raster/Palette.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace kelvox {

/// A picture in memory that somebody else owns: 0xAARRGGBB, row by row from the top.
struct ArgbImage {
    std::span<std::uint32_t> pixels; ///< at least (height - 1) * stride + width
    int width = 0;
    int height = 0;
    std::size_t stride = 0; ///< pixels from one row to the next
};

/// Draws charts into a picture by going from each of its points back to the chart.
///
/// Points of the picture run from its upper left corner, x to the right and y downward; the centre
/// of its first pixel is (0.5, 0.5). Only pixels that are fully transparent (0) are filled, so what
/// is drawn first stays on top: several charts are drawn finest first, and each pixel is drawn
/// once. Pixels of a chart that its file does not hold stay as they are.
///
/// Reduced, the picture is taken from the nearest level of the pyramid and interpolated; magnified,
/// chart pixels become even squares with edges one picture pixel wide, at any turn. The chart's
/// place is found on a grid and interpolated in between, within an eighth of a picture pixel.
///
/// Stateless; several threads may draw bands of one picture at once.
class RasterRenderer {
public:
    /// Position of a picture point; the unknown position where there is none.
    using PointToPosition = std::function<Position(Point)>;
    /// Image point of the chart (y upward from the bottom row) for a picture point.
    using PointToImagePoint = std::function<Point(Point)>;

    /// Picture and chart in the same projection, or the view tied to the chart's pixels.
    ///
    /// @param borders draw only what lies inside the border polygon, leaving out the margin with
    /// its title and scales; a chart without one is drawn whole
    enum class Borders { Ignore, Respect };

    static void draw(const BSBChart& chart, const PointToImagePoint& toImagePoint,
                     PaletteScheme scheme, Borders borders, const ArgbImage& image);
    /// By way of positions, in whatever projection they come from.
    static void drawByPosition(const BSBChart& chart, const PointToPosition& toPosition,
                               PaletteScheme scheme, Borders borders, const ArgbImage& image);
    /// Several charts by their borders, in the order given; those without picture are passed over.
    static void drawQuilt(std::span<const BSBChart* const> charts,
                          const PointToPosition& toPosition, PaletteScheme scheme,
                          const ArgbImage& image);
};

/// How well a chart of one scale serves a view of another, smaller is better: the number of
/// doublings between the two. Magnifying counts one and a half times, since it shows less than the
/// view could hold. Charts that would be reduced more than 32 times or magnified more than 64 times
/// are of no use: infinite. A chart without scale comes last of the usable ones.
[[nodiscard]] double quiltCost(int chartScale, double viewScale);

/// The indexes of the charts that serve the view, best first: the order for drawQuilt().
[[nodiscard]] std::vector<std::size_t> quiltOrder(std::span<const int> chartScales,
                                                  double viewScale);

} // namespace kelvox
