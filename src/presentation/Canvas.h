#pragma once

#include "base/Path.h"
#include "presentation/DisplayColor.h"

namespace kelvox {

enum class LinePattern { Solid, Dash, Dott };

struct Stroke {
    DisplayColor color;
    float width = 1; ///< display points
    LinePattern pattern = LinePattern::Solid;

    friend bool operator==(const Stroke&, const Stroke&) = default;
};

/// What portrayal draws on. Paths are in pixels of the picture, x right, y down, already clipped to
/// its surroundings and no finer than can be seen; lengths of strokes are display points.
class Canvas {
public:
    virtual ~Canvas() = default;
    /// Fills the rings even-odd, each closed by its chord. Edges are not smoothed, so that areas
    /// with a common edge neither overlap nor gap.
    virtual void fillArea(const Path& rings, DisplayColor color) = 0;
    /// Strokes each sub-path as an open line.
    virtual void strokeLine(const Path& lines, const Stroke& stroke) = 0;
};

} // namespace kelvox
