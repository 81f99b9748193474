#pragma once

#include "navigation/ChartMarker.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kelvox {

/// One place of a route. A route may pass a waypoint twice: the references are then two.
struct WaypointReference {
    WaypointPointer waypoint;
};
using WaypointReferencePointer = std::shared_ptr<const WaypointReference>;

/// An ordered list of references to waypoints, so that moving a waypoint moves every route through
/// it. Copying a route copies the list, not the waypoints.
class Route {
public:
    static constexpr std::size_t notFound = static_cast<std::size_t>(-1);
    std::string name;

    [[nodiscard]] std::size_t count() const { return m_references.size(); }
    [[nodiscard]] const std::vector<WaypointReferencePointer>& waypointReferences() const
    {
        return m_references;
    }
    // Null where there is none.
    [[nodiscard]] WaypointReferencePointer waypointReference(std::size_t index) const;
    [[nodiscard]] WaypointReferencePointer
    nextWaypointReference(const WaypointReferencePointer& reference) const;
    [[nodiscard]] WaypointReferencePointer
    previousWaypointReference(const WaypointReferencePointer& reference) const;
    [[nodiscard]] WaypointReferencePointer lastWaypointReference() const;
    [[nodiscard]] WaypointReferencePointer
    waypointReferenceFromName(std::string_view waypoint) const;
    [[nodiscard]] WaypointReferencePointer
    waypointReferenceFromWaypoint(const WaypointPointer& waypoint) const;
    [[nodiscard]] std::size_t indexOf(const WaypointReferencePointer& reference) const;
    [[nodiscard]] bool hasWaypoint(const WaypointPointer& waypoint) const;

    void addWaypointReference(WaypointReferencePointer reference);
    void addWaypointReference(WaypointPointer waypoint); ///< makes the reference
    void insertWaypointReference(WaypointReferencePointer reference, std::size_t index);
    void replaceWaypointReference(std::size_t index, WaypointReferencePointer reference);
    void removeWaypointReference(const WaypointReferencePointer& reference);
    /// Every reference to one of these.
    void removeWaypoints(const std::unordered_set<const Waypoint*>& waypoints);
    void removeAllWaypointReferences() { m_references.clear(); }
    void exchangeWaypointReference(std::size_t index1, std::size_t index2);
    void invertWaypointReferences();
    [[nodiscard]] Route copy() const { return *this; }

    /// NM along the waypoints from index a to index b, leaving out those without a position; 0 for
    /// indexes outside the route.
    [[nodiscard]] float distance(std::size_t a, std::size_t b) const;
    /// Of the leg that ends at the waypoint; `noValue` where there is no such leg.
    [[nodiscard]] float bearing(std::size_t index) const;

    void write(PropertyWriter& writer) const;

private:
    std::vector<WaypointReferencePointer> m_references;
};
using RoutePointer = std::shared_ptr<const Route>;

} // namespace kelvox
