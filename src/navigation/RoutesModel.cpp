#include "navigation/RoutesModel.h"

#include "navigation/NavMath.h"
#include "navigation/RecordNames.h"
#include "navigation/TextSearch.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

namespace kelvox {

bool comesBefore(const Route& a, const Route& b)
{
    return naturalLess(a.name, b.name);
}

RoutesModel::RoutesModel(EditHistory& history, WaypointsModel& waypoints)
    : RecordsModel(history, Journal::Collection::Routes)
    , m_waypoints(waypoints)
{
    m_waypoints.setObserver(this);
}

RoutesModel::~RoutesModel()
{
    m_waypoints.setObserver(nullptr);
}

RoutePointer RoutesModel::routeFromName(std::string_view name) const
{
    return named(std::string(name));
}

std::optional<std::string> RoutesModel::uniqueName() const
{
    return firstFreeName("RT", m_lowestFree,
                         [this](const std::string& name) { return named(name) != nullptr; });
}

bool RoutesModel::setUniqueName(Route& route) const
{
    auto name = uniqueName();
    if (name)
        route.name = std::move(*name);
    return name.has_value();
}

void RoutesModel::makeNameFree(Route& route)
{
    if (route.name.empty() && setUniqueName(route))
        return;
    route.name = numberedName(route.name.empty() ? "RT" : route.name,
                              [this](const std::string& name) { return named(name) != nullptr; });
}

RoutesModel::Renamed RoutesModel::rename(const RoutePointer& route, std::string_view name)
{
    const std::string wanted(trimmed(cleanText(name)));
    if (wanted.empty())
        return Renamed::NoName;
    const auto other = named(wanted);
    if (other && other != route)
        return Renamed::AlreadyExists;
    return edit(route, [&](Route& it) { it.name = wanted; }) ? Renamed::Done : Renamed::NoName;
}

void RoutesModel::removeWaypoint(const WaypointPointer& waypoint)
{
    if (waypoint)
        waypointsRemoved({waypoint.get()});
}

void RoutesModel::waypointsRemoved(const std::unordered_set<const Waypoint*>& waypoints)
{
    const EditHistory::Group group(history());
    for (const auto& route : objectEnumerator()) {
        const auto& references = route->waypointReferences();
        if (std::any_of(references.begin(), references.end(), [&](const auto& reference) {
                return waypoints.contains(reference->waypoint.get());
            }))
            edit(route, [&](Route& it) { it.removeWaypoints(waypoints); });
    }
}

bool RoutesModel::hasWaypoint(const WaypointPointer& waypoint) const
{
    const auto& all = objectEnumerator();
    return std::any_of(all.begin(), all.end(),
                       [&](const auto& route) { return route->hasWaypoint(waypoint); });
}

void RoutesModel::waypointRenamed(const WaypointPointer& waypoint)
{
    std::vector<RoutePointer> through;
    for (const auto& route : objectEnumerator())
        if (route->hasWaypoint(waypoint))
            through.push_back(route);
    touch(through);
}

std::vector<RoutePointer> RoutesModel::routesThatMatch(std::optional<std::string_view> text) const
{
    const TextSearch search(text.value_or(""));
    std::unordered_set<const Waypoint*> waypoints;
    for (const auto& waypoint : m_waypoints.waypointsThatMatch(text))
        waypoints.insert(waypoint.get());
    std::vector<RoutePointer> matches;
    for (const auto& route : objectEnumerator()) {
        const auto& references = route->waypointReferences();
        if (search.matches(route->name)
            || std::any_of(references.begin(), references.end(), [&](const auto& reference) {
                   return waypoints.contains(reference->waypoint.get());
               }))
            matches.push_back(route);
    }
    return matches;
}

RoutePointer RoutesModel::routeMatch(std::size_t index) const
{
    return index < countMatch() ? m_matches[index] : nullptr;
}

bool RoutesModel::removeMatch(std::size_t index)
{
    const auto route = routeMatch(index);
    if (!route || !remove(route))
        return false;
    m_matches.erase(m_matches.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

float RoutesModel::waypointDistance(const Route& route, std::size_t from, std::size_t to) const
{
    if (m_cumulative)
        return route.distance(from, to);
    return to == 0 ? 0 : route.distance(to - 1, to);
}

float RoutesModel::waypointBearing(const Route& route, std::size_t from, std::size_t to) const
{
    const auto start = route.waypointReference(from);
    const auto end = route.waypointReference(to);
    if (!start || !end || from == to || !start->waypoint->hasPosition()
        || !end->waypoint->hasPosition())
        return static_cast<float>(noValue);
    return NavMath::magneticBearing(
        NavMath::bearingFromPoint(start->waypoint->positionOnGPS(), end->waypoint->positionOnGPS()),
        m_compassVariation);
}

void RoutesModel::saveSelected()
{
    m_savedSelection = m_selected ? m_selected->name : std::string();
}

void RoutesModel::restoreSelected()
{
    m_selected = routeFromName(m_savedSelection);
}

std::optional<Route> RoutesModel::getDictionary(const PropertyFields& fields)
{
    Route route;
    route.name = fields.text("name").value_or("");
    for (std::size_t number = 0;; ++number) {
        const auto name = fields.text(fmt::format("waypoint_{}", number));
        if (!name)
            break;
        // A waypoint that has gone makes the route shorter, nothing more.
        if (auto waypoint = m_waypoints.waypointFromName(*name))
            route.addWaypointReference(std::move(waypoint));
    }
    return route;
}

bool RoutesModel::isSaved(const Route& route) const
{
    return RecordsModel::isSaved(route) && route.count() > 0;
}

void RoutesModel::onLoaded()
{
    m_lowestFree = 1;
    m_matches.clear();
    m_selected.reset();
}

} // namespace kelvox
