#include "navigation/WaypointsModel.h"

#include "navigation/RecordNames.h"
#include "navigation/TextSearch.h"

#include <algorithm>
#include <iterator>

namespace kelvox {

namespace {
constexpr float samePlaceNM = 0.01F; // what rounding in exchanged files may move a waypoint
} // namespace

bool comesBefore(const Waypoint& a, const Waypoint& b)
{
    return naturalLess(a.name, b.name);
}

WaypointsModel::WaypointsModel(EditHistory& history)
    : ChartMarkersModel(history, Journal::Collection::Waypoints)
{
}

WaypointPointer WaypointsModel::add(Waypoint waypoint, bool markChanged)
{
    const bool before = isChanged();
    auto added = add(std::move(waypoint));
    if (!markChanged)
        setChanged(before);
    return added;
}

bool WaypointsModel::remove(const WaypointPointer& waypoint)
{
    const EditHistory::Group group(history());
    // The routes first, so that taking the step back finds the waypoint in place for them.
    if (m_observer && waypoint)
        m_observer->waypointsRemoved({waypoint.get()});
    std::erase(m_matches, waypoint);
    return ChartMarkersModel::remove(waypoint);
}

void WaypointsModel::removeAll()
{
    const EditHistory::Group group(history());
    std::unordered_set<const Waypoint*> all;
    for (const auto& waypoint : objectEnumerator())
        all.insert(waypoint.get());
    if (m_observer)
        m_observer->waypointsRemoved(all);
    m_matches.clear();
    ChartMarkersModel::removeAll();
}

WaypointPointer WaypointsModel::waypointFromName(std::string_view name) const
{
    return named(std::string(trimmed(name)));
}

WaypointPointer WaypointsModel::waypointForPosition(Position position) const
{
    Waypoint wanted; // compared in the precision that waypoints keep
    wanted.setPositionOnGPS(position);
    const auto& all = objectEnumerator();
    const auto it = std::find_if(all.begin(), all.end(), [&](const auto& waypoint) {
        return waypoint->positionOnGPS() == wanted.positionOnGPS();
    });
    return it == all.end() ? nullptr : *it;
}

std::vector<WaypointPointer>
WaypointsModel::waypointsFromIndexes(const std::vector<std::size_t>& indexes) const
{
    std::vector<WaypointPointer> chosen;
    for (const auto index : indexes)
        if (auto waypoint = at(index))
            chosen.push_back(std::move(waypoint));
    return chosen;
}

std::optional<std::string> WaypointsModel::uniqueName() const
{
    return firstFreeName("WP", m_lowestFree,
                         [this](const std::string& name) { return named(name) != nullptr; });
}

bool WaypointsModel::setUniqueName(Waypoint& waypoint) const
{
    auto name = uniqueName();
    if (name)
        waypoint.name = std::move(*name);
    return name.has_value();
}

void WaypointsModel::makeNameFree(Waypoint& waypoint)
{
    if (waypoint.name.empty() && setUniqueName(waypoint))
        return;
    waypoint.name =
        numberedName(waypoint.name.empty() ? "WP" : waypoint.name,
                     [this](const std::string& name) { return named(name) != nullptr; });
}

void WaypointsModel::tidy(Waypoint& waypoint) const
{
    ChartMarkersModel::tidy(waypoint);
    std::set<std::string> groups;
    for (const auto& group : waypoint.groups)
        if (const auto name = std::string(trimmed(cleanText(group))); !name.empty())
            groups.insert(name);
    waypoint.groups = std::move(groups);
}

void WaypointsModel::onRenamed(const WaypointPointer& waypoint)
{
    if (m_observer)
        m_observer->waypointRenamed(waypoint);
}

void WaypointsModel::onLoaded()
{
    m_lowestFree = 1;
    m_matches.clear();
}

WaypointPointer WaypointsModel::createWaypointFromGPS(std::string_view name, Position position,
                                                      std::string_view description, int icon)
{
    if (auto old = waypointFromName(cleanText(name)); old && old->hasPosition()
        && NavMath::distanceFromPoint(old->positionOnGPS(), position) <= samePlaceNM) {
        edit(old, [&](Waypoint& waypoint) {
            if (!description.empty())
                waypoint.description = description;
            if (icon != 0)
                waypoint.iconIndex = icon;
        });
        return old;
    }
    return createWaypoint(name, description, icon, GroupCode::Imported, position);
}

WaypointPointer WaypointsModel::createWaypoint(std::string_view name, std::string_view description,
                                               int icon, GroupCode group, Position position)
{
    Waypoint waypoint;
    waypoint.name = name;
    waypoint.description = description;
    waypoint.iconIndex = icon;
    waypoint.setPositionOnGPS(position);
    if (group == GroupCode::Imported)
        waypoint.groups.insert(importedGroup);
    else if (group == GroupCode::Selected && !m_selectedGroup.empty())
        waypoint.groups.insert(m_selectedGroup);
    return add(std::move(waypoint));
}

bool WaypointsModel::editWaypointPosition(const WaypointPointer& waypoint, Position position)
{
    return edit(waypoint, [&](Waypoint& it) { it.setPositionOnGPS(position); });
}

std::vector<WaypointPointer> WaypointsModel::sortedByDistanceFromPosition() const
{
    std::vector<WaypointPointer> sorted(objectEnumerator().begin(), objectEnumerator().end());
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        const bool known = isKnown(a->distanceFromPosition); // those without come last
        if (known != isKnown(b->distanceFromPosition))
            return known;
        return a->distanceFromPosition < b->distanceFromPosition;
    });
    return sorted;
}

std::vector<std::string> WaypointsModel::createGroupsFromWaypoints() const
{
    std::set<std::string> groups;
    for (const auto& waypoint : objectEnumerator())
        groups.insert(waypoint->groups.begin(), waypoint->groups.end());
    std::vector<std::string> sorted(groups.begin(), groups.end());
    std::sort(sorted.begin(), sorted.end(), &naturalLess);
    return sorted;
}

void WaypointsModel::renameGroupsInWaypoints(const std::string& from, const std::string& to)
{
    const EditHistory::Group step(history());
    for (const auto& waypoint : waypointsForGroup(from))
        edit(waypoint, [&](Waypoint& it) {
            it.groups.erase(from);
            it.groups.insert(to);
        });
    if (m_selectedGroup == from)
        m_selectedGroup = to;
}

void WaypointsModel::assignGroup(const std::string& group, const WaypointPointer& waypoint)
{
    edit(waypoint, [&](Waypoint& it) { it.groups.insert(group); });
}

void WaypointsModel::removeFromGroup(const std::string& group, const WaypointPointer& waypoint)
{
    edit(waypoint, [&](Waypoint& it) { it.groups.erase(group); });
}

std::vector<WaypointPointer> WaypointsModel::waypointsForGroup(const std::string& group) const
{
    std::vector<WaypointPointer> members;
    std::copy_if(objectEnumerator().begin(), objectEnumerator().end(), std::back_inserter(members),
                 [&](const auto& waypoint) { return groupHasWaypoint(group, *waypoint); });
    return members;
}

bool WaypointsModel::groupHasWaypoint(const std::string& group, const Waypoint& waypoint)
{
    return group.empty() || waypoint.groups.contains(group);
}

bool WaypointsModel::selectedGroupHasWaypoint(const Waypoint& waypoint) const
{
    return groupHasWaypoint(m_selectedGroup, waypoint);
}

std::vector<WaypointPointer>
WaypointsModel::waypointsThatMatch(std::optional<std::string_view> text) const
{
    const TextSearch search(text.value_or(""));
    std::vector<WaypointPointer> matches;
    for (const auto& waypoint : objectEnumerator())
        if (selectedGroupHasWaypoint(*waypoint)
            && search.matches(waypoint->name, waypoint->description))
            matches.push_back(waypoint);
    return matches;
}

WaypointPointer WaypointsModel::waypointMatch(std::size_t index) const
{
    return index < countMatch() ? m_matches[index] : nullptr;
}

std::size_t WaypointsModel::indexOfMatch(const WaypointPointer& waypoint) const
{
    const auto it = std::find(m_matches.begin(), m_matches.end(), waypoint);
    return it == m_matches.end() ? notFound : static_cast<std::size_t>(it - m_matches.begin());
}

bool WaypointsModel::removeMatch(std::size_t index)
{
    return remove(waypointMatch(index));
}

} // namespace kelvox
