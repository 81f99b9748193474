#pragma once

#include "devices/DeviceText.h"
#include "exchange/ExchangeTarget.h"

#include <vector>

namespace kelvox {

/// Records under names that a receiver can hold, the same for a waypoint wherever it occurs.
class NamedRecords {
public:
    NamedRecords(const ExchangeRecords& records, const TextRule& waypointName,
                 const TextRule& routeName);

    [[nodiscard]] const std::vector<Waypoint>& waypoints() const { return m_waypoints; }
    /// Those of the routes among them, each once.
    [[nodiscard]] const std::vector<Waypoint>& allWaypoints() const { return m_allWaypoints; }
    [[nodiscard]] const std::vector<ExchangeRecords::NamedRoute>& routes() const
    {
        return m_routes;
    }
    [[nodiscard]] const DeviceNames::Renamed& renamed() const { return m_renamed; }

private:
    std::vector<Waypoint> m_waypoints;
    std::vector<Waypoint> m_allWaypoints;
    std::vector<ExchangeRecords::NamedRoute> m_routes;
    DeviceNames::Renamed m_renamed;
};

} // namespace kelvox
