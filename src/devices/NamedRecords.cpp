#include "devices/NamedRecords.h"

#include <unordered_set>

namespace kelvox {

NamedRecords::NamedRecords(const ExchangeRecords& records, const TextRule& waypointName,
                           const TextRule& routeName)
    : m_waypoints(records.waypoints)
    , m_routes(records.routes)
{
    DeviceNames names(waypointName);
    DeviceNames routeNames(routeName);
    for (const auto& waypoint : m_waypoints)
        names.announce(waypoint);
    for (std::size_t i = 0; i < m_routes.size(); ++i) {
        routeNames.announce(std::to_string(i), m_routes[i].name);
        for (const auto& waypoint : m_routes[i].points)
            names.announce(waypoint);
    }
    m_renamed = names.assign();
    const auto& renamedRoutes = routeNames.assign();
    m_renamed.insert(m_renamed.end(), renamedRoutes.begin(), renamedRoutes.end());

    std::unordered_set<std::string> added;
    const auto rename = [&](Waypoint& waypoint) {
        waypoint.name = names.name(waypoint);
        if (added.insert(waypoint.name).second)
            m_allWaypoints.push_back(waypoint);
    };
    for (auto& waypoint : m_waypoints)
        rename(waypoint);
    for (std::size_t i = 0; i < m_routes.size(); ++i) {
        m_routes[i].name = routeNames.name(std::to_string(i));
        for (auto& waypoint : m_routes[i].points)
            rename(waypoint);
    }
}

} // namespace kelvox
