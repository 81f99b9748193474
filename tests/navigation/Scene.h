#pragma once

#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"
#include "navigation/WaypointsModel.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace kelvox {

/// The three models on one history, with or without files.
struct Scene {
    EditHistory history;
    WaypointsModel waypoints{history};
    RoutesModel routes{history, waypoints};
    TracksModel tracks{history};
    std::filesystem::path folder;

    Scene() = default;
    explicit Scene(const std::filesystem::path& where)
        : folder(where)
    {
        history.setReach(Journal::Reach::System);
        journalKept = history.openJournal(folder / "edits.journal").value();
        waypointReport = waypoints.load(folder / "waypoints.plist");
        routeReport = routes.load(folder / "routes.plist");
        trackReport = tracks.load(folder / "tracks.plist");
    }
    bool save()
    {
        return waypoints.save(folder / "waypoints.plist") && routes.save(folder / "routes.plist")
            && tracks.save(folder / "tracks.plist");
    }

    WaypointPointer waypoint(const std::string& name, Position position = {10, 50})
    {
        Waypoint made;
        made.name = name;
        made.setPositionOnGPS(position);
        return waypoints.add(std::move(made));
    }
    /// route("Trip", "A B C") through waypoints of these names.
    RoutePointer route(const std::string& name, const std::string& through)
    {
        Route made;
        made.name = name;
        std::istringstream words(through);
        for (std::string word; words >> word;)
            made.addWaypointReference(waypoints.waypointFromName(word));
        return routes.add(std::move(made));
    }
    [[nodiscard]] static std::string through(const Route& route)
    {
        std::string names;
        for (const auto& reference : route.waypointReferences())
            names += (names.empty() ? "" : " ") + reference->waypoint->name;
        return names;
    }

    /// Everything a user would miss, in the order of names.
    [[nodiscard]] std::string dump() const
    {
        std::vector<std::string> lines;
        const auto add = [&](const char* kind, const auto& model) {
            for (const auto& record : model.objectEnumerator()) {
                PropertyWriter writer;
                record->write(writer);
                lines.push_back(kind + writer.take());
            }
        };
        add("w ", waypoints);
        add("r ", routes);
        add("t ", tracks);
        std::sort(lines.begin(), lines.end());
        std::string text;
        for (const auto& line : lines)
            text += line + "\n";
        return text;
    }

    std::optional<std::filesystem::path> journalKept;
    LoadReport waypointReport, routeReport, trackReport;
};

/// A point of a track so many seconds after a fixed moment.
inline Track trackPoint(int second, Position position = {10, 50})
{
    Track point;
    point.setPositionOnGPS(position);
    point.date = Date(std::chrono::seconds(1'767'225'600 + second)); // 1 January 2026
    return point;
}

} // namespace kelvox
