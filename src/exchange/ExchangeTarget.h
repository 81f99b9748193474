#pragma once

#include "navigation/ChartMarker.h"
#include "navigation/TracksModel.h"

#include <string>
#include <vector>

namespace kelvox {

/// Takes what a reader of exchange files finds, as soon as it is complete.
class ExchangeTarget {
public:
    virtual ~ExchangeTarget() = default;
    /// @return the name under which the waypoint is known now; a missing one was made
    virtual std::string waypoint(Waypoint waypoint) = 0;
    /// A point of the route being read; endRoute() follows unless the file breaks off.
    virtual std::string routePoint(Waypoint waypoint) = 0;
    virtual void endRoute(std::string name) = 0;
    /// A point that differs in colour from the one before begins a new line.
    virtual void trackPoint(Track point) = 0;
    /// A record that cannot be kept, e.g. one without a place on the earth.
    virtual void passedOver() = 0;
};

/// Everything of a file as it stands there, without the rules of the user's models.
struct ExchangeRecords final : ExchangeTarget {
    struct NamedRoute {
        std::string name;
        std::vector<Waypoint> points;
    };
    std::vector<Waypoint> waypoints;
    std::vector<NamedRoute> routes;
    std::vector<Track> tracks;
    /// See TracksModel; as files have it, only colours tell lines apart.
    int startTrackInterval = TracksModel::longestPause;
    std::size_t passedOverCount = 0;

    std::string waypoint(Waypoint waypoint) override;
    std::string routePoint(Waypoint waypoint) override;
    void endRoute(std::string name) override;
    void trackPoint(Track point) override { tracks.push_back(std::move(point)); }
    void passedOver() override { ++passedOverCount; }

    /// Gives every waypoint and route without a name a free one, as the models do.
    void nameTheNameless();

private:
    std::vector<Waypoint> m_openRoute;
};

} // namespace kelvox
