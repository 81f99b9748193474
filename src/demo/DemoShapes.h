#pragma once

#include "base/Rect.h"

#include <vector>

namespace kelvox {

/// Lines and rings in metres; a ring does not repeat its first point.
using DemoLine = std::vector<Point>;

/// A band along a line, with square ends and mitred corners, as a ring.
[[nodiscard]] DemoLine ribbon(const DemoLine& line, double halfWidth);
/// The line moved to its left; to its right where negative.
[[nodiscard]] DemoLine beside(const DemoLine& line, double distance);
[[nodiscard]] DemoLine circle(Point center, double radius);
/// A natural-looking ring, e.g. a lake.
[[nodiscard]] DemoLine blob(Point center, double radius, unsigned seed);
[[nodiscard]] DemoLine box(const Rect& rect);

[[nodiscard]] bool isInsideRing(const DemoLine& ring, Point p);

/// The pieces of a line inside a box. The same point results on both sides of a shared border.
[[nodiscard]] std::vector<DemoLine> clippedLine(const DemoLine& line, const Rect& box);
/// The part of a ring inside a box; empty when there is none.
[[nodiscard]] DemoLine clippedRing(const DemoLine& ring, const Rect& box);

} // namespace kelvox
