#pragma once

#include "presentation/Canvas.h"

#include <span>

namespace kelvox {

/// How a broken line is made: so long drawn, so long left out.
struct Dashes {
    double on = 12;
    double off = 6;

    [[nodiscard]] Dashes scaled(double factor) const { return {on * factor, off * factor}; }
    [[nodiscard]] double period() const { return on + off; }
};

/// In display points.
[[nodiscard]] constexpr Dashes dashesOf(LinePattern pattern)
{
    return pattern == LinePattern::Dott ? Dashes{2, 4} : Dashes{12, 6};
}

/// Appends the dashes of a line, each as a sub-path of its own; one that turns a corner keeps it.
/// @param along length of the line before its first point: a line drawn in parts keeps its rhythm
void appendDashes(std::span<const Point> line, Dashes dashes, double along, Path& result);

} // namespace kelvox
