#pragma once

#include "weather/GribDrawing.h"
#include "weather/GribPoints.h"

#include <vector>

namespace kelvox {

/// Places over the visible part of a grid, a power of two of its cells apart (a half, one, two,
/// ...) and fixed to the grid, so that they keep still while the chart is moved.
struct GribLattice {
    enum class Spacing {
        AtLeast, ///< no nearer to each other than wanted: for markers
        AtMost, ///< no farther from each other than wanted: for lines
    };
    /// One for each time the grid shows: twice where the view reaches around the earth.
    [[nodiscard]] static std::vector<GribLattice> over(const GribGrid& grid, const GribView& view,
                                                       double spacing, Spacing rule);

    GribGrid grid;
    double longitudeShift = 0; ///< -360, 0 or 360
    double firstColumn = 0; ///< of the grid; with fractions where the lattice is finer
    double firstRow = 0;
    double columnStep = 1; ///< cells of the grid
    double rowStep = 1;
    int columns = 0;
    int rows = 0;

    /// Of the place in grid columns and rows; longitudes continue beyond ±180.
    [[nodiscard]] Position positionAt(double column, double row) const
    {
        return {
            .longitude = grid.first.longitude
                + (firstColumn + column * columnStep) * grid.longitudeIncrement + longitudeShift,
            .latitude = grid.first.latitude + (firstRow + row * rowStep) * grid.latitudeIncrement};
    }
};

/// Whether one of the grids has the field at that place.
[[nodiscard]] bool isCovered(const std::vector<const GribPoints*>& finer, GribField field,
                             Position position);

} // namespace kelvox
