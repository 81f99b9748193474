#include "app/nav/NavRecords.h"

#include "navigation/TrackLines.h"

#include <algorithm>

namespace kelvox {

ExchangeRecords allWaypoints(Program& program)
{
    ExchangeRecords records;
    for (const auto& waypoint : program.waypoints().objectEnumerator())
        records.waypoints.push_back(*waypoint);
    return records;
}

ExchangeRecords allRoutes(Program& program)
{
    ExchangeRecords records;
    for (const auto& route : program.routes().objectEnumerator())
        addRoute(*route, records);
    return records;
}

ExchangeRecords wholeTrack(Program& program)
{
    ExchangeRecords records;
    for (const auto& point : program.tracks().objectEnumerator())
        records.tracks.push_back(*point);
    return records;
}

ExchangeRecords allRecords(Program& program)
{
    ExchangeRecords records = allWaypoints(program);
    records.routes = allRoutes(program).routes;
    records.tracks = wholeTrack(program).tracks;
    return records;
}

ExchangeRecords groupOfWaypoints(Program& program, const std::string& group)
{
    ExchangeRecords records;
    for (const auto& waypoint : program.waypoints().waypointsForGroup(group))
        records.waypoints.push_back(*waypoint);
    return records;
}

void addRoute(const Route& route, ExchangeRecords& records)
{
    ExchangeRecords::NamedRoute copy{route.name, {}};
    for (const auto& reference : route.waypointReferences())
        if (reference->waypoint)
            copy.points.push_back(*reference->waypoint);
    records.routes.push_back(std::move(copy));
}

ExchangeRecords trackLinesAt(Program& program, const std::vector<std::size_t>& firstPoints)
{
    ExchangeRecords records;
    const TracksModel& tracks = program.tracks();
    for (const TrackLine& line : trackLines(tracks)) {
        if (std::ranges::find(firstPoints, line.first) == firstPoints.end())
            continue;
        for (std::size_t i = 0; i < line.count; ++i)
            records.tracks.push_back(*tracks.track(line.first + i));
    }
    return records;
}

} // namespace kelvox
