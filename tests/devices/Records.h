#pragma once

#include "exchange/ExchangeTarget.h"
#include "navigation/WaypointIcons.h"

#include <string>

namespace kelvox {

inline Waypoint place(const std::string& name, double latitude, double longitude,
                      const std::string& description = {}, const char* icon = "WAYPOINT")
{
    Waypoint waypoint;
    waypoint.name = name;
    waypoint.setPositionOnGPS({.longitude = longitude, .latitude = latitude});
    waypoint.description = description;
    waypoint.iconIndex = iconIndex(icon);
    return waypoint;
}

/// "WP0001 HARBOUR; …": names and comments, for comparing.
inline std::string namesOf(const std::vector<Waypoint>& waypoints)
{
    std::string text;
    for (const auto& waypoint : waypoints)
        text += (text.empty() ? "" : "; ") + waypoint.name + " " + waypoint.description;
    return text;
}

inline std::string bytes(std::initializer_list<int> values)
{
    std::string text;
    for (const int value : values)
        text += static_cast<char>(value);
    return text;
}

} // namespace kelvox
