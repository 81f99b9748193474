#pragma once

#include "base/Clock.h"
#include "base/Position.h"
#include "base/Result.h"
#include "positioning/RandomWalk.h"
#include "positioning/SimulatedTraffic.h"

#include <atomic>
#include <filesystem>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace kelvox {

/// A boat with receiver, instruments and radar that exists only as sentences.
///
/// Sentences are taken on a reader thread, the rest is called on the main thread; a lock keeps
/// the two apart. The same seed and clock give the same stream.
class NMEASimulator {
public:
    explicit NMEASimulator(const Clock& clock, unsigned seed = 1);
    static NMEASimulator& nmeaSimulator(); ///< the program's own, on the machine's clock

    /// The next sentence of the cycle of 15, complete; nothing at the end of the cycle and when
    /// the boat cannot be moved on.
    [[nodiscard]] std::optional<std::string> nextSentence();
    /// The same, with the AIS traffic that is due behind it: what a simulated line carries.
    [[nodiscard]] std::vector<std::string> nextLines();

    /// Switching on starts the boat where it is now.
    void setRunning(bool running);
    [[nodiscard]] bool isRunning() const { return m_running; }

    void setPosition(Position position);
    void setSpeed(float knots);
    void setHeading(float degreesTrue);
    void setVariation(float degrees); ///< east positive
    [[nodiscard]] Position position() const;
    [[nodiscard]] float speed() const;
    [[nodiscard]] float heading() const;
    [[nodiscard]] float variation() const;
    void resetStartPosition(); ///< back to where the simulation was started or placed last

    /// Steers to a waypoint, or keeps its heading again. A waypoint goes before the route.
    void setSteerTo(std::optional<Position> waypoint);
    /// Takes the start, the route and the traffic of a description; see SimulatorDescription.h.
    [[nodiscard]] Result<void> fromFile(const std::filesystem::path& path);
    void apply(SimulatorDescription description);

private:
    [[nodiscard]] std::string sentence(int step);
    [[nodiscard]] std::string createRMCSentence();
    [[nodiscard]] bool advance();
    void steer();
    void startLeg(Position from);

    const Clock& m_clock;
    std::atomic<bool> m_running{false};
    mutable std::mutex m_mutex; // for all below
    std::mt19937 m_random;
    int m_step = 0;

    Position m_position;
    Position m_startPosition;
    Position m_legStart; // where speed or heading changed last
    double m_legStartTime; // monotonic seconds
    float m_speed = 5;
    float m_heading = 0;
    float m_variation = 0;
    std::optional<Position> m_steerTo;
    std::vector<Position> m_route;
    std::size_t m_nextOfRoute = 0;
    bool m_loop = false;

    RandomWalk m_depth{42, 8, 160, 0.4}; // feet
    RandomWalk m_temperature{61, 48, 76, 0.02}; // degrees Fahrenheit
    RandomWalk m_windAngle{48, 20, 160, 0.5}; // degrees from the bow, to starboard
    RandomWalk m_windSpeed{12, 3, 24, 0.15}; // knots, true
    RandomWalk m_radarSpeed{6, 2, 12, 0.05}; // knots
    RandomWalk m_radarCourse{80, 45, 135, 0.3}; // degrees true
    SimulatedTraffic m_traffic;
};

} // namespace kelvox
