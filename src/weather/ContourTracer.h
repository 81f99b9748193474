#pragma once

#include "base/Position.h"

#include <span>
#include <vector>

namespace kelvox {

/// One line of equal value through an array of samples.
struct ContourLine {
    double level = 0;
    std::vector<Point> points; ///< x is the column, y the row, with fractions
    bool closed = false; ///< the last point is then the first one again
};

/// Traces the lines of the levels (in rising order) through `columns` x rows samples, row by row.
/// A sample that is not a number has no value: lines end there. Marching squares (Lorensen and
/// Cline, 1987, in the plane); saddles are decided by the mean of the cell, so that lines of one
/// level never touch and those of two levels never cross.
[[nodiscard]] std::vector<ContourLine> traceContours(std::span<const float> samples, int columns,
                                                     std::span<const double> levels);

} // namespace kelvox
