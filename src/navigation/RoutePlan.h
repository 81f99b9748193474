#pragma once

#include "navigation/Route.h"

#include <string>
#include <vector>

namespace kelvox {

/// A route as a table to sail by: each row one waypoint and the leg that leads to it.
struct RoutePlan {
    struct Row {
        WaypointPointer waypoint;
        float legMiles =
            static_cast<float>(noValue); ///< NM, great circle; no value at the first row
        float totalMiles = 0; ///< NM from the first waypoint
        float bearingTrue = static_cast<float>(noValue); ///< degrees at the beginning of the leg
        float legHours =
            static_cast<float>(noValue); ///< no value at the first row and without a speed
        float totalHours = static_cast<float>(noValue); ///< no value without a speed
    };
    std::vector<Row> rows;

    /// Waypoints without a position are left out.
    /// @param knots speed over ground that is planned with; 0 or less: none
    [[nodiscard]] static RoutePlan of(const Route& route, float knots);
    [[nodiscard]] float totalMiles() const { return rows.empty() ? 0 : rows.back().totalMiles; }
};

} // namespace kelvox
