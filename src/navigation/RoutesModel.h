#pragma once

#include "navigation/RecordsModel.h"
#include "navigation/Route.h"
#include "navigation/WaypointsModel.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

[[nodiscard]] bool comesBefore(const Route& a, const Route& b); ///< by name

/// All routes of the user. Load the waypoints first: routes find theirs by name. See RecordsModel.
class RoutesModel final : public RecordsModel<Route>, private WaypointObserver {
public:
    RoutesModel(EditHistory& history, WaypointsModel& waypoints);
    ~RoutesModel() override;
    static RoutesModel& routes(); ///< the shared instance

    static constexpr const char* fileName = "Preferences/KelvoxRoutes.plist";

    [[nodiscard]] RoutePointer route(std::size_t index) const { return at(index); }
    [[nodiscard]] RoutePointer routeFromName(std::string_view name) const; ///< exactly that name
    /// "RT0001" to "RT9999", the first that is free; nothing when all are taken.
    [[nodiscard]] std::optional<std::string> uniqueName() const;
    bool setUniqueName(Route& route) const;
    /// The message "NSRouteAlreadyExists" is due when another route has the name.
    enum class Renamed { Done, AlreadyExists, NoName };
    Renamed rename(const RoutePointer& route, std::string_view name);

    using RecordsModel::remove;
    void removeWaypoint(const WaypointPointer& waypoint); ///< from every route
    [[nodiscard]] bool hasWaypoint(const WaypointPointer& waypoint) const; ///< in any route

    /// By name, or by a waypoint of the selected group that matches: see TextSearch.
    [[nodiscard]] std::vector<RoutePointer>
    routesThatMatch(std::optional<std::string_view> text) const;
    void setMatch(std::optional<std::string_view> text) { m_matches = routesThatMatch(text); }
    [[nodiscard]] std::size_t countMatch() const { return m_matches.size(); }
    [[nodiscard]] RoutePointer routeMatch(std::size_t index) const;
    bool removeMatch(std::size_t index);

    // For the list: distance and bearing at a waypoint of a route.
    /// NM from the waypoint `from` to `to`, or, in leg form, of the leg that ends at `to`.
    [[nodiscard]] float waypointDistance(const Route& route, std::size_t from,
                                         std::size_t to) const;
    /// Magnetic by the compass variation; `noValue` where there is no leg.
    [[nodiscard]] float waypointBearing(const Route& route, std::size_t from, std::size_t to) const;
    void setCompassVariation(float degrees) { m_compassVariation = degrees; }
    void toggleDistance() { m_cumulative = !m_cumulative; }
    [[nodiscard]] bool showsCumulativeDistance() const { return m_cumulative; }

    void setSelectedRoute(RoutePointer route) { m_selected = std::move(route); }
    [[nodiscard]] const RoutePointer& selectedRoute() const { return m_selected; }
    void saveSelected(); ///< remembers the selection by name, over a reload of the list
    void restoreSelected();

protected:
    [[nodiscard]] std::optional<Route> getDictionary(const PropertyFields& fields) override;
    void makeNameFree(Route& route) override;
    [[nodiscard]] bool isSaved(const Route& route) const override;
    void onNameFreed() override { m_lowestFree = 1; }
    void onLoaded() override;

private:
    void waypointRenamed(const WaypointPointer& waypoint) override;
    void waypointsRemoved(const std::unordered_set<const Waypoint*>& waypoints) override;

    WaypointsModel& m_waypoints;
    std::vector<RoutePointer> m_matches;
    RoutePointer m_selected;
    std::string m_savedSelection;
    float m_compassVariation = 0;
    bool m_cumulative = true;
    mutable int m_lowestFree = 1; // no free number lies below
};

} // namespace kelvox
