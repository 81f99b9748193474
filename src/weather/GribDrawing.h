#pragma once

#include "base/Path.h"
#include "base/Rect.h"
#include "weather/Beaufort.h"

#include <functional>
#include <string>
#include <vector>

namespace kelvox {

/// The chart view that weather is drawn in. View points may run upwards or downwards and the chart
/// may be turned: north is found from the functions themselves.
struct GribView {
    /// Takes longitudes beyond ±180 degrees too and continues the chart there.
    std::function<Point(Position)> positionToPoint;
    std::function<Position(Point)> pointToPosition;
    Rect visible; ///< in view points
};

struct GribStroke {
    Path path;
    GribColor color;
    double width = 1; ///< view points; round caps and joins look best
};

struct GribFill {
    Path path; ///< sub-paths are closed by their chord
    GribColor color;
};

struct GribLabel {
    std::string text;
    Point center;
    double angle =
        0; ///< radians from the x axis towards the y axis of the view, within ±90 degrees
    double height = 11; ///< of the font, view points
    GribColor color;
    bool bold = false;
};

/// What is to be painted, in this order: fills, strokes, labels. Labels want a thin halo in the
/// colour of the paper.
struct GribDrawing {
    std::vector<GribFill> fills;
    std::vector<GribStroke> strokes;
    std::vector<GribLabel> labels;

    void append(GribDrawing other)
    {
        std::move(other.fills.begin(), other.fills.end(), std::back_inserter(fills));
        std::move(other.strokes.begin(), other.strokes.end(), std::back_inserter(strokes));
        std::move(other.labels.begin(), other.labels.end(), std::back_inserter(labels));
    }
};

/// The width that a label's text is taken to need, in view points.
[[nodiscard]] inline double labelWidth(const GribLabel& label)
{
    return 0.62 * label.height * static_cast<double>(label.text.size());
}

} // namespace kelvox
