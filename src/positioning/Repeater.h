#pragma once

#include "base/Clock.h"
#include "base/NoValue.h"
#include "base/Position.h"
#include "base/Settings.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The waypoint that the user navigates to, as the steering sentences need it.
struct SteeringTarget {
    std::string name;
    Position position;
    bool fromGPS = false; ///< set by a receiver on the line, which then steers the autopilot itself
    Position legStart;
    std::string originName = {}; ///< empty when the leg starts at no waypoint
    std::string routeName = {}; ///< empty without a route
    std::vector<std::string> routeWaypoints = {};
};

/// Where repeated and generated sentences go. Called on reader threads.
class RepeatOutput {
public:
    virtual ~RepeatOutput() = default;
    /// A received line, or a generated one with checksum and line end, for the repeat target.
    virtual void writeToRepeatTarget(std::string_view line) = 0;
    /// A generated sentence, complete, for the clients of the server, and for the monitor.
    virtual void writeToClients(std::string_view line) = 0;
};

/// Passes received sentences on and writes the steering sentences for an autopilot.
///
/// The setters belong to the main thread, sending to reader threads; a lock keeps them apart.
class Repeater {
public:
    Repeater(const Clock& clock, RepeatOutput& output)
        : m_clock(clock)
        , m_output(output)
    {
    }

    void setTarget(std::optional<SteeringTarget> target);
    void setGotoActive(bool active);
    void setOwnPosition(Position position);
    void setOwnCourseAndSpeed(float courseDegrees, float speedKnots);
    void setVariation(float degrees);
    /// Reads "autopilot", "tack1Speed" and "waypointApproachDistance".
    void loadSettings(const Settings& settings);

    /// False for sentences that the program generates itself at the moment.
    [[nodiscard]] bool shouldRepeat(std::string_view sentence) const;
    /// Passes the line on and, every 2 seconds, writes the steering sentences after it.
    void sendRepeat(std::string_view sentence);

private:
    struct State {
        std::optional<SteeringTarget> target;
        Position own;
        float course = static_cast<float>(noValue);
        float speed = static_cast<float>(noValue);
        float variation = 0;
        bool gotoActive = false;
        bool autopilotOnly = false;
        double boatSpeedTarget = 0; // knots
        double approachDistance = 0; // nautical miles
    };
    [[nodiscard]] std::vector<std::string> dueSentences();
    [[nodiscard]] std::vector<std::string> steering(const SteeringTarget& target) const;

    const Clock& m_clock;
    RepeatOutput& m_output;
    mutable std::mutex m_mutex;
    State m_state;
    std::optional<double> m_repeatDate; // monotonic seconds
};

} // namespace kelvox
