#pragma once

#include "weather/GribContours.h"
#include "weather/GribMarkers.h"

#include <string>

namespace kelvox {

/// The placemarks of weather fields for a KML document: every line ends with a line feed, positions
/// are "longitude,latitude,0" with six decimals. Header and footer are the document writer's.
///
/// A grid is drawn on a flat sheet where its points lie one marker apart, and the lines of that
/// drawing become line strings, so that any globe viewer shows barbs and arrows without pictures.
class GribKml {
public:
    explicit GribKml(const GribModel& model);

    [[nodiscard]] std::string wind(const GribMarkerOptions& options) const;
    [[nodiscard]] std::string current(const GribMarkerOptions& options) const;
    [[nodiscard]] std::string waves(const GribMarkerOptions& options) const;
    [[nodiscard]] std::string contours(const GribContourOptions& options) const;
    /// The levels of the lines and the centres, as named points without a picture.
    [[nodiscard]] std::string labels(const GribContourOptions& options) const;

private:
    /// The sheet that holds all grids of the viewed time.
    [[nodiscard]] GribView sheet() const;

    const GribModel& m_model;
};

} // namespace kelvox
