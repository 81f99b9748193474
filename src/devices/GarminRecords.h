#pragma once

#include "base/Position.h"
#include "devices/DeviceText.h"
#include "navigation/ChartMarker.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// A place in units of 180° / 2^31, as Garmin records keep it. East and north positive.
struct Semicircles {
    std::int32_t latitude = 0;
    std::int32_t longitude = 0;
    friend bool operator==(const Semicircles&, const Semicircles&) = default;
};
/// To the nearest one; 180° east is 180° west.
[[nodiscard]] Semicircles semicircles(Position position);
/// Unknown for the marker of an unknown place and for latitudes beyond the poles.
[[nodiscard]] Position positionOf(const Semicircles& place);

/// What a receiver says it can do, from its protocol capability array: entries of a tag character
/// and a number, low byte first; a last entry that is not whole is left out.
class GarminCapabilities {
public:
    GarminCapabilities() = default;
    explicit GarminCapabilities(std::string_view array);
    /// Whether the data type stands in the array, e.g. 108.
    [[nodiscard]] bool uses(std::uint16_t dataType) const;

    // Which waypoints, routes and tracks. Without any waypoint type, D100 counts.
    [[nodiscard]] bool usesD108WaypointType() const { return uses(108); }
    [[nodiscard]] bool usesD109WaypointType() const { return uses(109); }
    [[nodiscard]] bool usesD110WaypointType() const { return uses(110); }
    [[nodiscard]] bool usesD150WaypointType() const { return uses(150); }
    [[nodiscard]] bool usesD210RouteType() const { return uses(210); }
    [[nodiscard]] bool usesD300TrackType() const { return uses(300); }
    [[nodiscard]] bool usesD301TrackType() const { return uses(301); }
    [[nodiscard]] bool usesD302TrackType() const { return uses(302); }
    [[nodiscard]] bool usesD310TrackType() const { return uses(310); }
    [[nodiscard]] bool usesD311TrackType() const { return uses(311); }
    [[nodiscard]] bool usesD312TrackType() const { return uses(312); }

private:
    std::vector<std::uint16_t> m_dataTypes;
};

/// The records of the published Garmin Device Interface and ours, into each other.
///
/// Read are position, name, comment and symbol of waypoints; position, time, depth, temperature
/// and the begin of lines of tracks. A record without a place gives a marker without one. Bytes
/// past the last field do not count; a record that ends before gives nothing. In records written,
/// names and comments are cleaned and cut to what the type can hold; that no two names meet is for
/// DeviceNames to see to. Altitudes are neither read nor known.
class GarminRecords {
public:
    [[nodiscard]] static std::optional<Waypoint> makeWaypointWithD100(std::string_view record);
    [[nodiscard]] static std::optional<Waypoint> makeWaypointWithD108(std::string_view record);
    [[nodiscard]] static std::optional<Waypoint> makeWaypointWithD109(std::string_view record);
    [[nodiscard]] static std::optional<Waypoint> makeWaypointWithD110(std::string_view record);
    [[nodiscard]] static std::optional<Waypoint> makeWaypointWithD150(std::string_view record);

    [[nodiscard]] static std::string makeD100WaypointType(const Waypoint& waypoint); ///< 58 bytes
    [[nodiscard]] static std::string makeD108WaypointType(const Waypoint& waypoint); ///< 154
    [[nodiscard]] static std::string makeD109WaypointType(const Waypoint& waypoint); ///< 158
    [[nodiscard]] static std::string makeD110WaypointType(const Waypoint& waypoint); ///< 168
    [[nodiscard]] static std::string makeD150WaypointType(const Waypoint& waypoint); ///< 119

    /// Names that the waypoint type holds: of the short ones (D100, D150) and of the others.
    static const TextRule shortName;
    static const TextRule longName;
    static const TextRule routeName;

    /// The route header, 21 bytes; name in routeName.
    [[nodiscard]] static std::string makeD201RouteType(std::uint8_t number, std::string_view name);
    /// The link that leads to a route's next waypoint, 71 bytes: a straight one, whichever it is.
    [[nodiscard]] static std::string makeD210RouteType(const Waypoint& next);
    /// The name in a route header; empty where its type has none.
    [[nodiscard]] static std::string routeNameFromD201(std::string_view record);
    [[nodiscard]] static std::string routeNameFromD202(std::string_view record);

    struct TrackPoint {
        Track track; ///< its date unknown where the receiver does not know it
        bool startsLine = false;
    };
    [[nodiscard]] static std::optional<TrackPoint> makeTrackWithD300(std::string_view record);
    [[nodiscard]] static std::optional<TrackPoint> makeTrackWithD301(std::string_view record);
    [[nodiscard]] static std::optional<TrackPoint> makeTrackWithD302(std::string_view record);

    [[nodiscard]] static std::string makeD300TrackType(const TrackPoint& point); ///< 13 bytes
    [[nodiscard]] static std::string makeD301TrackType(const TrackPoint& point); ///< 21
    [[nodiscard]] static std::string makeD302TrackType(const TrackPoint& point); ///< 25

    /// The colour in a track header D310 or D312; nothing where it gives none.
    [[nodiscard]] static std::optional<TrackColor> colorFromD310(std::string_view record);
    /// D310 and D312 are alike but for a colour that is never written.
    [[nodiscard]] static std::string makeD310TrackType(std::string_view name, TrackColor color);
    [[nodiscard]] static std::string makeD311TrackType(std::uint16_t index);
};

} // namespace kelvox
