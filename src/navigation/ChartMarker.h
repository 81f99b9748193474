#pragma once

#include "base/NoValue.h"
#include "base/Position.h"
#include "base/Rect.h"
#include "navigation/PropertyList.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace kelvox {

/// What waypoints and track points have in common: a name and a place.
struct ChartMarker {
    std::string name; ///< a record without a name is never saved
    float latitude = noCoordinate; ///< single precision on purpose, as in the file
    float longitude = noCoordinate;

    /// Where the marker was last drawn; a cache of the view, no part of the record.
    mutable std::optional<Point> positionOnChart = std::nullopt;
    void resetPositionOnChart() const { positionOnChart.reset(); }

    [[nodiscard]] Position positionOnGPS() const { return {longitude, latitude}; }
    void setPositionOnGPS(Position position)
    {
        longitude = static_cast<float>(position.longitude);
        latitude = static_cast<float>(position.latitude);
    }
    [[nodiscard]] bool hasPosition() const { return positionOnGPS().isKnown(); }
    /// Files keep a marker only strictly inside the date line and the poles.
    [[nodiscard]] bool isInsideTheChart() const
    {
        return longitude > -180 && longitude < 180 && latitude > -90 && latitude < 90;
    }

    void write(PropertyWriter& writer) const;
    void read(const PropertyFields& fields);
};

/// A named place of the user's.
struct Waypoint : ChartMarker {
    int iconIndex = 0; ///< place in waypointIcons()
    std::string description;
    bool show = true;
    std::set<std::string> groups; ///< names of the groups it belongs to

    // Seen from the vessel, for lists; no part of the record.
    mutable float distanceFromPosition = 0; ///< NM
    mutable float bearingFromPosition = 0;
    mutable float timeToGoFromPosition = 0; ///< hours
    mutable Rect hitRect{}; ///< of its symbol on the screen

    void write(PropertyWriter& writer) const;
    void read(const PropertyFields& fields);
};

struct TrackColor {
    float red = 0; ///< each from 0 to 1
    float green = 0;
    float blue = 0;

    friend bool operator==(const TrackColor&, const TrackColor&) = default;
};

/// One recorded point of the vessel's track. Unknown values are `noValue`.
struct Track : ChartMarker {
    std::optional<Date> date = std::nullopt;
    float cog = noValue; ///< degrees true
    float sog = noValue; ///< knots
    std::string description;
    float heading = noValue; ///< degrees true
    float speed = noValue; ///< through water, knots
    float depth = noValue; ///< feet
    float temperature = noValue; ///< degrees Fahrenheit
    float windAngle = noValue; ///< degrees relative to the bow
    float windSpeed = noValue; ///< knots
    TrackColor color = {};

    void set(Position position, std::optional<Date> newDate, float newCog, float newSog,
             float newHeading, float newSpeed, float newDepth, float newTemperature,
             float newWindAngle, float newWindSpeed, std::string newDescription,
             TrackColor newColor);
    void write(PropertyWriter& writer) const;
    void read(const PropertyFields& fields);
};

/// Records are shared and read-only; a model's edit() changes them, so that every change reaches
/// the journal and can be undone.
using WaypointPointer = std::shared_ptr<const Waypoint>;
using TrackPointer = std::shared_ptr<const Track>;

} // namespace kelvox
