#pragma once

#include <span>
#include <string_view>

namespace kelvox {

/// One picture a waypoint can have. Waypoints hold its place in the table.
struct WaypointIcon {
    std::string_view name; ///< capitals without blanks: the name of the picture and in files
    std::string_view gpxSymbol; ///< the published symbol name that other programs write
    int deviceCode; ///< the symbol number of GPS receivers
};

[[nodiscard]] std::span<const WaypointIcon> waypointIcons();
/// Null for a number that names no icon.
[[nodiscard]] const WaypointIcon* waypointIcon(int index);
/// By name, then by symbol name; case, blanks, commas and slashes do not count. 0, the plain
/// waypoint, for a name that is not known.
[[nodiscard]] int iconIndex(std::string_view name);
[[nodiscard]] int iconIndexForDeviceCode(int code); ///< 0 for a code that is not known

} // namespace kelvox
