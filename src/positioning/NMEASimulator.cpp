#include "positioning/NMEASimulator.h"

#include "base/File.h"
#include "connections/SentenceText.h"
#include "navigation/NavMath.h"
#include "positioning/NmeaPosition.h"

#include <fmt/format.h>

#include <cmath>
#include <ctime>
#include <numbers>

namespace kelvox {
namespace {

constexpr int stepsInCycle = 15; // the last one is silent
constexpr float reachedWithin = 0.03F; // nautical miles
constexpr float steersWithin = 1; // degrees; smaller deviations keep the leg

struct Wind {
    double angle; // degrees from the bow
    double speed; // knots
};

/// What the vane on a moving boat feels: the true wind and the boat's own, added as vectors.
Wind apparentWind(Wind trueWind, double boatSpeed)
{
    const double radians = trueWind.angle * std::numbers::pi / 180;
    const double ahead = trueWind.speed * std::cos(radians) + boatSpeed;
    const double abeam = trueWind.speed * std::sin(radians);
    return {std::atan2(abeam, ahead) * 180 / std::numbers::pi, std::hypot(ahead, abeam)};
}

} // namespace

NMEASimulator::NMEASimulator(const Clock& clock, unsigned seed)
    : m_clock(clock)
    , m_random(seed)
    , m_legStartTime(clock.monotonicSeconds())
{
}

NMEASimulator& NMEASimulator::nmeaSimulator()
{
    static const SystemClock clock;
    static NMEASimulator simulator(clock, std::random_device{}());
    return simulator;
}

std::optional<std::string> NMEASimulator::nextSentence()
{
    const std::scoped_lock lock(m_mutex);
    const int step = m_step;
    m_step = (m_step + 1) % stepsInCycle;
    const auto text = sentence(step);
    if (text.empty())
        return std::nullopt;
    return completeSentence(text, AddChecksum::Yes);
}

std::vector<std::string> NMEASimulator::nextLines()
{
    std::vector<std::string> lines;
    if (auto next = nextSentence())
        lines.push_back(std::move(*next));
    const std::scoped_lock lock(m_mutex);
    m_traffic.appendDue(m_clock.monotonicSeconds(), lines);
    return lines;
}

std::string NMEASimulator::sentence(int step)
{
    const auto magnetic = NavMath::magneticBearing(m_heading, m_variation);
    const Wind trueWind{m_windAngle.value(), m_windSpeed.value()};
    const auto apparent = apparentWind(trueWind, m_speed);
    switch (step) {
    case 0:
        return fmt::format("$IIHDG,{:05.1f},0.0,E,{:.1f},{}", magnetic, std::abs(m_variation),
                           m_variation < 0 ? 'W' : 'E');
    case 1:
        return fmt::format("$IIHDM,{:05.1f},M", magnetic);
    case 2:
        return fmt::format("$IIHDT,{:05.1f},T", m_heading);
    case 3:
        return fmt::format("$IIVHW,{:05.1f},T,{:05.1f},M,{:.1f},N,0,K", m_heading, magnetic,
                           m_speed);
    case 4:
    case 10:
        return createRMCSentence();
    case 5:
        return fmt::format("$IIDBT,{:.1f},f", m_depth.step(m_random));
    case 6:
        return fmt::format("$IIMTW,{:.1f},F", m_temperature.step(m_random));
    case 7: {
        constexpr double calmest = 5;
        m_windAngle.step(m_random);
        if (m_windSpeed.step(m_random) < calmest)
            m_windSpeed.setValue(10);
        // The knots stand in the metres-per-second field as well, on purpose.
        return fmt::format("$IIVWT,{:05.1f},R,{:.1f},N,{:.1f},M,,", m_windAngle.value(),
                           m_windSpeed.value(), m_windSpeed.value());
    }
    case 8:
        return fmt::format("$IIVWR,{:.1f},R,{:.1f},N,,,,", apparent.angle, apparent.speed);
    case 9:
        return fmt::format("$IIMWV,{:.1f},R,{:.1f},N,A", apparent.angle, apparent.speed);
    case 11:
        return fmt::format("$RATTM,01,0.50,90.0,R,{:.1f},{:.1f},T,,,N,,T,,,M",
                           m_radarSpeed.step(m_random), m_radarCourse.step(m_random));
    case 12:
        return "$RARSD,,,,,,,,,0.25,270.0";
    case 13:
        return "$GPTXT,1,1,1,SIMULATOR";
    default:
        return {};
    }
}

std::string NMEASimulator::createRMCSentence()
{
    if (!advance())
        return {};
    const std::time_t now = std::chrono::system_clock::to_time_t(m_clock.now());
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    return fmt::format("$GPRMC,{:02}{:02}{:02},A,{},{:.1f},{:05.1f},{:02}{:02}{:02},,", utc.tm_hour,
                       utc.tm_min, utc.tm_sec, nmeaFields(m_position), m_speed, m_heading,
                       utc.tm_mday, utc.tm_mon + 1, utc.tm_year - 100);
}

/// Dead reckoning from the start of the leg rather than from the last step: in single precision
/// the steps of a slow boat would be rounded away.
bool NMEASimulator::advance()
{
    if (!m_position.isKnown())
        return false;
    const auto hours = (m_clock.monotonicSeconds() - m_legStartTime) / 3600;
    auto position =
        NavMath::positionAtDistance(m_legStart, m_heading, static_cast<float>(m_speed * hours));
    position.longitude = NavMath::fixPosition(position.longitude);
    if (!position.isKnown() || !std::isfinite(position.latitude)
        || !std::isfinite(position.longitude))
        return false;
    m_position = position;
    steer();
    return true;
}

void NMEASimulator::steer()
{
    auto target = m_steerTo;
    if (!target && m_nextOfRoute < m_route.size()) {
        if (NavMath::distanceFromPoint(m_position, m_route[m_nextOfRoute]) <= reachedWithin) {
            ++m_nextOfRoute;
            if (m_loop && m_nextOfRoute == m_route.size())
                m_nextOfRoute = 0;
        }
        if (m_nextOfRoute < m_route.size())
            target = m_route[m_nextOfRoute];
    }
    if (!target || NavMath::distanceFromPoint(m_position, *target) <= reachedWithin)
        return;
    const auto bearing = NavMath::bearingFromPoint(m_position, *target);
    if (std::abs(std::remainder(bearing - m_heading, 360.0F)) < steersWithin)
        return;
    m_heading = bearing;
    startLeg(m_position);
}

void NMEASimulator::startLeg(Position from)
{
    m_legStart = from;
    m_legStartTime = m_clock.monotonicSeconds();
}

void NMEASimulator::setRunning(bool running)
{
    const std::scoped_lock lock(m_mutex);
    if (running && !m_running) {
        m_startPosition = m_position;
        startLeg(m_position);
    }
    m_running = running;
}

void NMEASimulator::setPosition(Position position)
{
    const std::scoped_lock lock(m_mutex);
    m_position = position;
    m_startPosition = position;
    startLeg(position);
}

void NMEASimulator::setSpeed(float knots)
{
    const std::scoped_lock lock(m_mutex);
    (void)advance();
    m_speed = knots;
    startLeg(m_position);
}

void NMEASimulator::setHeading(float degreesTrue)
{
    const std::scoped_lock lock(m_mutex);
    (void)advance();
    m_heading = NavMath::fixBearing(degreesTrue);
    startLeg(m_position);
}

void NMEASimulator::setVariation(float degrees)
{
    const std::scoped_lock lock(m_mutex);
    m_variation = degrees;
}

Position NMEASimulator::position() const
{
    const std::scoped_lock lock(m_mutex);
    return m_position;
}

float NMEASimulator::speed() const
{
    const std::scoped_lock lock(m_mutex);
    return m_speed;
}

float NMEASimulator::heading() const
{
    const std::scoped_lock lock(m_mutex);
    return m_heading;
}

float NMEASimulator::variation() const
{
    const std::scoped_lock lock(m_mutex);
    return m_variation;
}

void NMEASimulator::resetStartPosition()
{
    const std::scoped_lock lock(m_mutex);
    m_position = m_startPosition;
    m_nextOfRoute = 0;
    startLeg(m_position);
}

void NMEASimulator::setSteerTo(std::optional<Position> waypoint)
{
    const std::scoped_lock lock(m_mutex);
    m_steerTo = waypoint && waypoint->isKnown() ? waypoint : std::nullopt;
}

Result<void> NMEASimulator::fromFile(const std::filesystem::path& path)
{
    constexpr std::size_t largest = 16U << 20;
    const auto text = readFile(path, largest);
    if (!text)
        return tl::unexpected(text.error());
    auto description = parseSimulatorDescription(*text);
    if (!description)
        return failure(description.error().code,
                       path.string() + ": " + description.error().message);
    apply(std::move(*description));
    return {};
}

void NMEASimulator::apply(SimulatorDescription description)
{
    const std::scoped_lock lock(m_mutex);
    if (description.start)
        m_position = m_startPosition = *description.start;
    m_speed = description.speedKnots.value_or(m_speed);
    if (description.headingDegrees)
        m_heading = NavMath::fixBearing(*description.headingDegrees);
    m_variation = description.variationDegrees.value_or(m_variation);
    m_route = std::move(description.route);
    m_nextOfRoute = 0;
    m_loop = description.loop;
    startLeg(m_position);
    m_traffic.setVessels(std::move(description.traffic), m_clock.monotonicSeconds());
}

} // namespace kelvox
