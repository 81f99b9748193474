#pragma once

#include "weather/ContourTracer.h"
#include "weather/GribDrawing.h"
#include "weather/GribModel.h"

#include <span>

namespace kelvox {

struct GribContourOptions {
    GribField field = GribField::Pressure;
    GribColor color{90, 30, 110};
    double width = 1.5;
    double labelHeight = 11; ///< 0: no labels
    /// Between lines, in the user's unit; 0 chooses a round one for what the view shows.
    double interval = 0;
};

/// The fields that have contours, in the order of the chooser.
[[nodiscard]] std::span<const GribField> gribContourFields();

/// In what the user reads: hPa, his degrees, feet or metres, seconds, rain per hour.
[[nodiscard]] double gribUserValue(const GribModel& model, GribField field, float value);

/// A traced line in geographic positions; longitudes continue beyond ±180 degrees.
struct GribContourLine {
    double level = 0; ///< in the user's unit
    std::vector<Position> positions;
};

/// A centre of high or low pressure (or geopotential height), between the grid points.
struct GribCentre {
    Position position;
    double value = 0; ///< in the user's unit
    bool high = false;
};

/// Lines of equal value of the viewed forecast: the field is resampled with a smooth surface
/// through its points (Catmull-Rom in both directions) about every 8 view points and traced there,
/// which makes smooth lines that never cross. They end where values are missing.
[[nodiscard]] std::vector<GribContourLine>
gribContourLines(const GribModel& model, const GribView& view, const GribContourOptions& options);

/// Highest and lowest points within about 4 degrees around that stand out from what is there by
/// 1.5 hPa (12 m of geopotential height), away from the edge of the grid.
[[nodiscard]] std::vector<GribCentre> gribCentres(const GribModel& model, GribField field);

/// The lines, labels that follow them (each line is open under its label), and centres as "H" and
/// "L" over their value. No two labels touch, and all lie within the view.
[[nodiscard]] GribDrawing drawGribContours(const GribModel& model, const GribView& view,
                                           const GribContourOptions& options);

} // namespace kelvox
