#include "exchange/ExchangeTarget.h"

#include "navigation/RecordNames.h"

#include <unordered_set>
#include <utility>

namespace kelvox {

std::string ExchangeRecords::waypoint(Waypoint waypoint)
{
    waypoints.push_back(std::move(waypoint));
    return waypoints.back().name;
}

std::string ExchangeRecords::routePoint(Waypoint waypoint)
{
    m_openRoute.push_back(std::move(waypoint));
    return m_openRoute.back().name;
}

void ExchangeRecords::endRoute(std::string name)
{
    routes.push_back({std::move(name), std::exchange(m_openRoute, {})});
}

void ExchangeRecords::nameTheNameless()
{
    std::unordered_set<std::string> taken;
    const auto isTaken = [&](const std::string& name) { return taken.contains(name); };
    const auto nameRecord = [&](auto& record, const char* prefix, int& lowestFree) {
        if (record.name.empty())
            record.name = firstFreeName(prefix, lowestFree, isTaken).value_or(prefix);
        taken.insert(record.name);
    };
    for (const auto& waypoint : waypoints)
        taken.insert(waypoint.name);
    for (const auto& route : routes)
        for (const auto& waypoint : route.points)
            taken.insert(waypoint.name);
    int lowestWaypoint = 1;
    for (auto& waypoint : waypoints)
        nameRecord(waypoint, "WP", lowestWaypoint);
    for (auto& route : routes)
        for (auto& waypoint : route.points)
            nameRecord(waypoint, "WP", lowestWaypoint);

    taken.clear();
    for (const auto& route : routes)
        taken.insert(route.name);
    int lowestRoute = 1;
    for (auto& route : routes)
        nameRecord(route, "RT", lowestRoute);
}

} // namespace kelvox
