#include "exchange/ModelImport.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvox {

namespace {
/// Whether the name is one that the models made of the wanted one, which may be missing.
bool isMadeOf(std::string_view name, std::string_view wanted)
{
    const auto digitsFollow = [&](std::string_view start) {
        return name.size() > start.size() && name.starts_with(start)
            && name.find_first_not_of("0123456789", start.size()) == std::string_view::npos;
    };
    if (wanted.empty())
        return digitsFollow("WP");
    return name == wanted || digitsFollow(std::string(wanted) + ' ');
}

std::string kindText(const char* what, const ImportSummary::Kind& kind)
{
    std::string text = fmt::format("{} {}: {} new, {} the same", kind.created + kind.same, what,
                                   kind.created, kind.same);
    if (!kind.renamed.empty())
        text += fmt::format(", {} of the new renamed", kind.renamed.size());
    return text;
}
} // namespace

std::string ImportSummary::text() const
{
    std::string text = kindText("waypoints", waypoints) + "; " + kindText("routes", routes)
        + fmt::format("; {} track points", trackPoints);
    if (passedOver > 0)
        text += fmt::format("; {} passed over", passedOver);
    return text;
}

ModelImport::ModelImport(WaypointsModel& waypoints, RoutesModel& routes, TracksModel& tracks)
    : m_step(waypoints.history())
    , m_waypoints(waypoints)
    , m_routes(routes)
    , m_tracks(tracks)
{
    for (const auto& waypoint : waypoints.objectEnumerator())
        m_atPlace.emplace(Place(waypoint->latitude, waypoint->longitude), waypoint);
}

/// The name under which a waypoint of the file stands at its place already, else its own.
std::string ModelImport::nameHere(const Waypoint& waypoint) const
{
    auto wanted = std::string(trimmed(cleanText(waypoint.name)));
    const auto [first, last] = m_atPlace.equal_range({waypoint.latitude, waypoint.longitude});
    for (auto it = first; it != last; ++it)
        if (isMadeOf(it->second->name, wanted))
            return it->second->name;
    return wanted;
}

WaypointPointer ModelImport::create(const Waypoint& waypoint)
{
    const auto before = m_waypoints.count();
    const auto name = nameHere(waypoint);
    auto created = m_waypoints.createWaypointFromGPS(name, waypoint.positionOnGPS(),
                                                     waypoint.description, waypoint.iconIndex);
    const bool isNew = m_waypoints.count() > before;
    if (isNew) {
        m_atPlace.emplace(Place(created->latitude, created->longitude), created);
        ++m_summary.waypoints.created;
        if (!name.empty() && created->name != name)
            m_summary.waypoints.renamed.emplace_back(name, created->name);
    }
    if (m_counted.insert(created.get()).second && !isNew)
        ++m_summary.waypoints.same;
    return created;
}

std::string ModelImport::waypoint(Waypoint waypoint)
{
    return create(waypoint)->name;
}

std::string ModelImport::routePoint(Waypoint waypoint)
{
    auto created = create(waypoint);
    auto name = created->name;
    m_openRoute.addWaypointReference(std::move(created));
    return name;
}

void ModelImport::endRoute(std::string name)
{
    Route route = std::exchange(m_openRoute, {});
    route.name = std::string(trimmed(cleanText(name)));
    const auto through = [](const Route& it) {
        std::vector<const Waypoint*> waypoints;
        for (const auto& reference : it.waypointReferences())
            waypoints.push_back(reference->waypoint.get());
        return waypoints;
    };
    const auto points = through(route);
    const auto& all = m_routes.objectEnumerator();
    const bool have = std::any_of(all.begin(), all.end(), [&](const RoutePointer& old) {
        return through(*old) == points
            && (route.name.empty() ? old->name.starts_with("RT")
                                   : old->name == route.name
                        || old->name.starts_with(route.name + ' ') || old->name.starts_with("RT"));
    });
    if (have) {
        ++m_summary.routes.same;
        return;
    }
    const auto wanted = route.name;
    if (m_routes.routeFromName(wanted))
        (void)m_routes.setUniqueName(route);
    const auto added = m_routes.add(std::move(route));
    ++m_summary.routes.created;
    if (!wanted.empty() && added->name != wanted)
        m_summary.routes.renamed.emplace_back(wanted, added->name);
}

Track* ModelImport::heldOf(Date date)
{
    // Nearly every file tells its points in the order of time: a newer one needs no search.
    if (m_isAscending && (!m_newest || date > *m_newest)) {
        m_newest = date;
        return nullptr;
    }
    if (std::exchange(m_isAscending, false))
        for (std::size_t i = 0; i < m_points.size(); ++i)
            if (const auto& other = m_points[i].date)
                m_byDate.emplace(other->time_since_epoch().count(), m_dropped + i);
    const auto [known, isNew] =
        m_byDate.try_emplace(date.time_since_epoch().count(), m_dropped + m_points.size());
    return isNew ? nullptr : &m_points[known->second - m_dropped];
}

void ModelImport::trackPoint(Track point)
{
    ++m_summary.trackPoints;
    if (Track* const held = point.date ? heldOf(*point.date) : nullptr) {
        *held = std::move(point);
        return;
    }
    m_points.push_back(std::move(point));
    if (m_points.size() <= TracksModel::mostPoints)
        return;
    if (!m_isAscending && m_points.front().date)
        m_byDate.erase(m_points.front().date->time_since_epoch().count());
    m_points.pop_front();
    ++m_dropped;
}

bool ModelImport::handOver(std::size_t most)
{
    if (m_points.empty())
        return true;
    m_byDate = decltype(m_byDate)(); // the model knows the dates of those handed over
    m_isAscending = true;
    m_newest.reset();
    for (; most > 0 && !m_points.empty(); --most) {
        m_tracks.add(std::move(m_points.front()), std::chrono::seconds(0));
        m_points.pop_front();
    }
    if (!m_points.empty())
        return false;
    m_dropped = 0;
    m_tracks.setChanged(true);
    return true;
}

const ImportSummary& ModelImport::finish()
{
    handOver(m_points.size());
    return m_summary;
}

} // namespace kelvox
