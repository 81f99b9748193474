#pragma once

#include "exchange/ExchangeTarget.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"
#include "navigation/WaypointsModel.h"

#include <deque>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kelvox {

/// What an import did to the user's records, to be shown when it is done.
struct ImportSummary {
    struct Kind {
        std::size_t created = 0; ///< new, the renamed ones included
        std::size_t same = 0; ///< had the user already
        std::vector<std::pair<std::string, std::string>> renamed; ///< name in the file, name now
    };
    Kind waypoints;
    Kind routes;
    std::size_t trackPoints = 0; ///< taken; those of a date that was there replaced the old ones
    std::size_t passedOver = 0; ///< records without a place on the earth

    [[nodiscard]] std::string text() const; ///< e.g. "3 waypoints: 1 new, 2 the same"
};

/// Brings what a reader finds into the user's models as one step that can be undone.
///
/// A waypoint that an earlier import of the file created is recognised, also where its name had to
/// be changed then; a route of the same name through the same waypoints likewise. Of more track
/// points than the model keeps the last ones are taken, without holding the others.
class ModelImport final : public ExchangeTarget {
public:
    ModelImport(WaypointsModel& waypoints, RoutesModel& routes, TracksModel& tracks);
    ~ModelImport() override { finish(); }
    ModelImport(const ModelImport&) = delete;
    ModelImport& operator=(const ModelImport&) = delete;

    std::string waypoint(Waypoint waypoint) override;
    std::string routePoint(Waypoint waypoint) override;
    void endRoute(std::string name) override;
    void trackPoint(Track point) override;
    void passedOver() override { ++m_summary.passedOver; }

    /// Hands on so many of the track points that are held; true when none is left. A window does
    /// it in turns once a file is read.
    bool handOver(std::size_t most);
    /// Hands on all the track points; call when the file is read.
    const ImportSummary& finish();

private:
    using Place = std::pair<float, float>;
    struct PlaceHash {
        std::size_t operator()(const Place& place) const
        {
            return std::hash<float>()(place.first) * 31 + std::hash<float>()(place.second);
        }
    };
    WaypointPointer create(const Waypoint& waypoint);
    [[nodiscard]] std::string nameHere(const Waypoint& waypoint) const;
    /// The held point of a date; where there is none the next one held has it.
    [[nodiscard]] Track* heldOf(Date date);

    EditHistory::Group m_step;
    WaypointsModel& m_waypoints;
    RoutesModel& m_routes;
    TracksModel& m_tracks;
    std::unordered_multimap<Place, WaypointPointer, PlaceHash> m_atPlace;
    std::unordered_set<const Waypoint*> m_counted;
    Route m_openRoute;
    std::deque<Track> m_points; ///< the last ones of the file, one of each date
    bool m_isAscending = true; ///< each date held was later than those before it
    std::optional<Date> m_newest; ///< while they ascend
    /// Place among all that were held; empty while they ascend.
    std::unordered_map<Date::rep, std::size_t> m_byDate;
    std::size_t m_dropped = 0;
    ImportSummary m_summary;
};

} // namespace kelvox
