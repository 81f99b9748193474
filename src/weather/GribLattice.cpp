#include "weather/GribLattice.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
/// Longitudes and latitudes that the view shows, from its border and its middle.
Rect visibleDegrees(const GribView& view)
{
    constexpr int parts = 8;
    Rect degrees;
    for (int i = 0; i <= parts; ++i)
        for (int j = 0; j <= parts; ++j) {
            const Point point{view.visible.left + view.visible.width() * i / parts,
                              view.visible.bottom + view.visible.height() * j / parts};
            const Position position = view.pointToPosition(point);
            degrees.include(Point{position.longitude, position.latitude});
        }
    return degrees;
}

double powerOfTwo(double wantedCells, GribLattice::Spacing rule)
{
    const double exponent = std::log2(wantedCells);
    return std::exp2(rule == GribLattice::Spacing::AtLeast ? std::ceil(exponent)
                                                           : std::floor(exponent));
}

double distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// The first place and the number of places from `low` to `high`, both in cells.
int placesBetween(double low, double high, double step, double& first)
{
    first = std::ceil(low / step - 1e-9) * step;
    return std::max(0, static_cast<int>(std::floor((high - first) / step + 1e-9)) + 1);
}
} // namespace

std::vector<GribLattice> GribLattice::over(const GribGrid& grid, const GribView& view,
                                           double spacing, Spacing rule)
{
    constexpr double tallest = 85; // the projection runs away towards the poles
    std::vector<GribLattice> lattices;
    if (view.visible.isEmpty() || grid.longitudeCount < 2 || grid.latitudeCount < 2)
        return lattices;
    const Rect shown = visibleDegrees(view);
    if (!std::isfinite(shown.width()) || !std::isfinite(shown.height()))
        return lattices;

    // Cells are smallest in the view nearest to the equator.
    const double latitude = std::clamp(0.0, std::max(shown.bottom, -tallest),
                                       std::max(-tallest, std::min(shown.top, tallest)));
    const Position middle{shown.center().x, latitude};
    const Point here = view.positionToPoint(middle);
    constexpr double degree = 0.5;
    const double cellWidth =
        distance(here, view.positionToPoint({middle.longitude + degree, latitude})) / degree
        * grid.longitudeIncrement;
    const double cellHeight =
        distance(here, view.positionToPoint({middle.longitude, latitude + degree})) / degree
        * std::abs(grid.latitudeIncrement);
    if (!(cellWidth > 0) || !(cellHeight > 0))
        return lattices;
    GribLattice lattice{.grid = grid,
                        .columnStep = powerOfTwo(spacing / cellWidth, rule),
                        .rowStep = powerOfTwo(spacing / cellHeight, rule)};

    // One place more all around, so that lines leave the view and markers at its edge are whole.
    const double south = std::max(shown.bottom, -tallest);
    const double north = std::min(shown.top, tallest);
    double low = (south - grid.first.latitude) / grid.latitudeIncrement;
    double high = (north - grid.first.latitude) / grid.latitudeIncrement;
    if (low > high)
        std::swap(low, high);
    lattice.rows = placesBetween(std::max(low - lattice.rowStep, 0.0),
                                 std::min<double>(high + lattice.rowStep, grid.latitudeCount - 1),
                                 lattice.rowStep, lattice.firstRow);
    const bool lines = rule == Spacing::AtMost;
    const double lastColumn = grid.wraps() && lines ? grid.longitudeCount : grid.longitudeCount - 1;
    for (const double shift : {-360.0, 0.0, 360.0}) {
        const double origin = grid.first.longitude + shift;
        const double west = (shown.left - origin) / grid.longitudeIncrement - lattice.columnStep;
        const double east = (shown.right - origin) / grid.longitudeIncrement + lattice.columnStep;
        lattice.longitudeShift = shift;
        lattice.columns = placesBetween(std::max(west, 0.0), std::min(east, lastColumn),
                                        lattice.columnStep, lattice.firstColumn);
        if (lattice.columns > 0 && lattice.rows > 0)
            lattices.push_back(lattice);
    }
    return lattices;
}

bool isCovered(const std::vector<const GribPoints*>& finer, GribField field, Position position)
{
    return std::any_of(finer.begin(), finer.end(), [&](const GribPoints* points) {
        return points->valueAt(field, position).has_value();
    });
}

} // namespace kelvox
