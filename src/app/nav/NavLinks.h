#pragma once

#include "navigation/WaypointsModel.h"
#include "positioning/GPSListener.h"

#include <QObject>

namespace kelvox {

class Program;

/// What ties waypoints and routes to the rest of the program: the waypoint that a receiver steers
/// to, waypoints and routes it sends, the simulated vessel, the compass. Main thread.
class NavLinks final : public QObject, public GPSListener {
    Q_OBJECT
public:
    explicit NavLinks(Program& program); ///< owned by the program

    void setVariation(float degrees) override;
    /// Steers to the receiver's waypoint, unless the user steers to one of his own.
    void setWaypoint(const ReceiverWaypoint& received) override;
    void waypointTimedOut() override;
    void waypointReceived(Position position, const std::string& name) override;
    void createRouteFromGPS(const std::string& identifier,
                            const std::vector<std::string>& names) override;
    void setActiveRouteWaypointsFromGPS(const std::string& destination,
                                        const std::string& origin) override;

private:
    WaypointPointer waypointOf(const std::string& name, Position position);
    void takeSettings(const QString& key);
    void steerSimulator();
    void dropGoneRoute();

    Program& m_program;
    // The receiver repeats itself every second: what it said last is known.
    std::string m_lastName;
    Position m_lastPosition;
    WaypointPointer m_lastWaypoint;
    Position m_legStart;
    std::optional<Position> m_simulatorTarget;
};

} // namespace kelvox
