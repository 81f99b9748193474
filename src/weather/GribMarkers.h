#pragma once

#include "weather/GribDrawing.h"
#include "weather/GribModel.h"

namespace kelvox {

struct GribMarkerOptions {
    enum class Style { Barbs, Beaufort };
    Style style = Style::Barbs; ///< of wind
    double size = 1; ///< of the user's slider; 1 is a staff of 26 view points
    GribColor color{20, 20, 60};
};

/// One marker stands for the wind at its foot (barbs) or middle (all others). Markers keep about
/// two staffs of distance at every zoom: they thin out when zoomed out and are interpolated when
/// zoomed in. Of grids that overlap the finest is drawn.

/// Barbs after the WMO: the staff points to where the wind comes from; a half feather is 5 knots,
/// a feather 10, a pennant 50, a ring less than 2.5. Feathers stand on the side of lower pressure:
/// clockwise of the staff north of the equator, anticlockwise south of it. Or darts that fly with
/// the wind in the colour of its Beaufort force.
[[nodiscard]] GribDrawing drawGribWind(const GribModel& model, const GribView& view,
                                       const GribMarkerOptions& options);

/// Arrows that point to where the current sets. Feathers at the tail: a half one is half a knot,
/// a feather 1, a pennant 5; a dot is less than a quarter.
[[nodiscard]] GribDrawing drawGribCurrent(const GribModel& model, const GribView& view,
                                          const GribMarkerOptions& options);

/// Arrows that run with the waves, longer for higher ones, with the height in the user's unit.
[[nodiscard]] GribDrawing drawGribWaves(const GribModel& model, const GribView& view,
                                        const GribMarkerOptions& options);

} // namespace kelvox
