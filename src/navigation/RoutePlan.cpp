#include "navigation/RoutePlan.h"

#include "navigation/NavMath.h"

namespace kelvox {

RoutePlan RoutePlan::of(const Route& route, float knots)
{
    RoutePlan plan;
    for (const auto& reference : route.waypointReferences()) {
        const auto& waypoint = reference->waypoint;
        if (!waypoint || !waypoint->hasPosition())
            continue;
        Row row{.waypoint = waypoint};
        if (!plan.rows.empty()) {
            const Row& before = plan.rows.back();
            const Position from = before.waypoint->positionOnGPS();
            const Position to = waypoint->positionOnGPS();
            row.legMiles = NavMath::distanceFromPoint(from, to);
            row.bearingTrue = NavMath::bearingFromPoint(from, to);
            row.totalMiles = before.totalMiles + row.legMiles;
            if (knots > 0)
                row.legHours = row.legMiles / knots;
        }
        if (knots > 0)
            row.totalHours = row.totalMiles / knots;
        plan.rows.push_back(std::move(row));
    }
    return plan;
}

} // namespace kelvox
