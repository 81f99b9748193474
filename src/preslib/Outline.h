#pragma once

#include "base/Position.h"

#include <vector>

namespace kelvox::preslib {

using Polyline = std::vector<Point>;

/// A vertex as written: a corner, or a point that a smooth curve runs through.
struct Knot {
    Point point;
    bool smooth = false;
};

// Geometry of the drawings in 0.01 mm, y down. Angles are degrees clockwise from the top.

/// Straight between corners, curved wherever one end of a piece is smooth.
[[nodiscard]] Polyline outline(const std::vector<Knot>& knots, bool closed);
[[nodiscard]] Polyline arc(Point center, double radiusX, double radiusY, double from, double to);
[[nodiscard]] Polyline ellipse(Point center, double radiusX,
                               double radiusY); ///< ends where it began
/// The line thickened to a width, as an area with square ends and mitred corners.
[[nodiscard]] Polyline band(const Polyline& line, double width);
/// Small discs along the line, evenly spread, about the spacing apart.
[[nodiscard]] std::vector<Polyline> dots(const Polyline& line, double spacing, double radius);
/// The pieces of the line that a dash pattern leaves; the pattern is stretched to end in a dash.
[[nodiscard]] std::vector<Polyline> dashes(const Polyline& line, double on, double off);
/// Twice the signed area; its sign tells which way the ring runs.
[[nodiscard]] double signedArea(const Polyline& ring);

} // namespace kelvox::preslib
