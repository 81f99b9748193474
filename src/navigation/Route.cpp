#include "navigation/Route.h"

#include "navigation/NavMath.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kelvox {

WaypointReferencePointer Route::waypointReference(std::size_t index) const
{
    return index < count() ? m_references[index] : nullptr;
}

WaypointReferencePointer
Route::nextWaypointReference(const WaypointReferencePointer& reference) const
{
    const auto index = indexOf(reference);
    return index == notFound ? nullptr : waypointReference(index + 1);
}

WaypointReferencePointer
Route::previousWaypointReference(const WaypointReferencePointer& reference) const
{
    const auto index = indexOf(reference);
    return index == notFound || index == 0 ? nullptr : m_references[index - 1];
}

WaypointReferencePointer Route::lastWaypointReference() const
{
    return m_references.empty() ? nullptr : m_references.back();
}

WaypointReferencePointer Route::waypointReferenceFromName(std::string_view waypoint) const
{
    const auto it = std::find_if(m_references.begin(), m_references.end(), [&](const auto& r) {
        return r->waypoint && r->waypoint->name == waypoint;
    });
    return it == m_references.end() ? nullptr : *it;
}

WaypointReferencePointer Route::waypointReferenceFromWaypoint(const WaypointPointer& waypoint) const
{
    const auto it = std::find_if(m_references.begin(), m_references.end(),
                                 [&](const auto& r) { return r->waypoint == waypoint; });
    return it == m_references.end() ? nullptr : *it;
}

std::size_t Route::indexOf(const WaypointReferencePointer& reference) const
{
    const auto it = std::find(m_references.begin(), m_references.end(), reference);
    return it == m_references.end() ? notFound
                                    : static_cast<std::size_t>(it - m_references.begin());
}

bool Route::hasWaypoint(const WaypointPointer& waypoint) const
{
    return waypointReferenceFromWaypoint(waypoint) != nullptr;
}

void Route::addWaypointReference(WaypointReferencePointer reference)
{
    insertWaypointReference(std::move(reference), count());
}

void Route::addWaypointReference(WaypointPointer waypoint)
{
    addWaypointReference(
        std::make_shared<const WaypointReference>(WaypointReference{std::move(waypoint)}));
}

void Route::insertWaypointReference(WaypointReferencePointer reference, std::size_t index)
{
    if (!reference)
        return;
    const auto at = static_cast<std::ptrdiff_t>(std::min(index, count()));
    m_references.insert(m_references.begin() + at, std::move(reference));
}

void Route::replaceWaypointReference(std::size_t index, WaypointReferencePointer reference)
{
    if (reference && index < count())
        m_references[index] = std::move(reference);
}

void Route::removeWaypointReference(const WaypointReferencePointer& reference)
{
    std::erase(m_references, reference);
}

void Route::removeWaypoints(const std::unordered_set<const Waypoint*>& waypoints)
{
    std::erase_if(m_references,
                  [&](const auto& r) { return waypoints.contains(r->waypoint.get()); });
}

void Route::exchangeWaypointReference(std::size_t index1, std::size_t index2)
{
    if (index1 < count() && index2 < count())
        std::swap(m_references[index1], m_references[index2]);
}

void Route::invertWaypointReferences()
{
    std::reverse(m_references.begin(), m_references.end());
}

float Route::distance(std::size_t a, std::size_t b) const
{
    if (a >= count() || b >= count())
        return 0;
    float sum = 0;
    const Waypoint* previous = nullptr;
    for (std::size_t i = std::min(a, b); i <= std::max(a, b); ++i) {
        const Waypoint* waypoint = m_references[i]->waypoint.get();
        if (!waypoint || !waypoint->hasPosition())
            continue;
        if (previous)
            sum += NavMath::distanceFromPoint(previous->positionOnGPS(), waypoint->positionOnGPS());
        previous = waypoint;
    }
    return sum;
}

float Route::bearing(std::size_t index) const
{
    if (index == 0 || index >= count())
        return static_cast<float>(noValue);
    const auto& from = m_references[index - 1]->waypoint;
    const auto& to = m_references[index]->waypoint;
    if (!from || !to || !from->hasPosition() || !to->hasPosition())
        return static_cast<float>(noValue);
    return NavMath::bearingFromPoint(from->positionOnGPS(), to->positionOnGPS());
}

void Route::write(PropertyWriter& writer) const
{
    writer.text("name", name);
    std::size_t number = 0;
    for (const auto& reference : m_references)
        if (reference->waypoint)
            writer.text(fmt::format("waypoint_{}", number++), reference->waypoint->name);
}

} // namespace kelvox
