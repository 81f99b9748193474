#include "positioning/Repeater.h"

#include "connections/SentenceText.h"
#include "navigation/NavMath.h"
#include "positioning/NMEA.h"
#include "positioning/NmeaPosition.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>

namespace kelvox {
namespace {

constexpr double interval = 2; // seconds between two sets of steering sentences
constexpr float kilometresPerHour = 1.8533F; // a knot; not 1.852, on purpose

template <std::size_t Count>
bool isOneOf(std::optional<std::string_view> command,
             const std::array<std::string_view, Count>& all)
{
    return command && std::find(all.begin(), all.end(), *command) != all.end();
}

std::string utcTime(const Clock& clock)
{
    const std::time_t now = std::chrono::system_clock::to_time_t(clock.now());
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    return fmt::format("{:02}{:02}{:02}", utc.tm_hour, utc.tm_min, utc.tm_sec);
}

/// As many names to a sentence as fit into the 82 characters that NMEA 0183 allows.
std::vector<std::string> routeSentences(const SteeringTarget& target)
{
    constexpr std::size_t mostCharacters = 82;
    constexpr std::size_t around = 5 + sizeof("$GPRTE,999,999,c,") - 1; // checksum, line end
    const auto route = NMEA::name(target.routeName);
    std::vector<std::string> lists;
    for (const auto& waypoint : target.routeWaypoints) {
        const auto name = NMEA::name(waypoint);
        if (lists.empty()
            || around + route.size() + lists.back().size() + 2 + name.size() > mostCharacters)
            lists.push_back(name);
        else
            lists.back().append(",").append(name);
    }
    std::vector<std::string> sentences;
    sentences.reserve(lists.size());
    for (const auto& list : lists)
        sentences.push_back(
            fmt::format("$GPRTE,{},{},c,{},{}", lists.size(), sentences.size() + 1, route, list));
    return sentences;
}

} // namespace

void Repeater::setTarget(std::optional<SteeringTarget> target)
{
    const std::scoped_lock lock(m_mutex);
    m_state.target = std::move(target);
}

void Repeater::setGotoActive(bool active)
{
    const std::scoped_lock lock(m_mutex);
    m_state.gotoActive = active;
}

void Repeater::setOwnPosition(Position position)
{
    const std::scoped_lock lock(m_mutex);
    m_state.own = position;
}

void Repeater::setOwnCourseAndSpeed(float courseDegrees, float speedKnots)
{
    const std::scoped_lock lock(m_mutex);
    m_state.course = courseDegrees;
    m_state.speed = speedKnots;
}

void Repeater::setVariation(float degrees)
{
    const std::scoped_lock lock(m_mutex);
    m_state.variation = degrees;
}

void Repeater::loadSettings(const Settings& settings)
{
    const std::scoped_lock lock(m_mutex);
    m_state.autopilotOnly = settings.boolean("autopilot");
    m_state.boatSpeedTarget = settings.number("tack1Speed");
    m_state.approachDistance = settings.number("waypointApproachDistance");
}

bool Repeater::shouldRepeat(std::string_view sentence) const
{
    static constexpr std::array<std::string_view, 9> generated = {"RMB", "BWC", "APA", "APB", "XTE",
                                                                  "WPL", "BOD", "RTE", "VTG"};
    const std::scoped_lock lock(m_mutex);
    if (!m_state.target || m_state.target->fromGPS)
        return true;
    return !isOneOf(NMEA::command(sentence), generated);
}

void Repeater::sendRepeat(std::string_view sentence)
{
    static constexpr std::array<std::string_view, 3> positions = {"RMC", "GGA", "GLL"};
    bool passes = true;
    {
        const std::scoped_lock lock(m_mutex);
        passes = !m_state.autopilotOnly || isOneOf(NMEA::command(sentence), positions);
    }
    if (passes && shouldRepeat(sentence))
        m_output.writeToRepeatTarget(sentence);
    for (const auto& generated : dueSentences()) {
        const auto line = completeSentence(generated, AddChecksum::Yes);
        m_output.writeToRepeatTarget(line);
        m_output.writeToClients(line);
    }
}

std::vector<std::string> Repeater::dueSentences()
{
    const std::scoped_lock lock(m_mutex);
    const auto now = m_clock.monotonicSeconds();
    if (m_repeatDate && now - *m_repeatDate < interval)
        return {};
    m_repeatDate = now;
    const auto& target = m_state.target;
    if (target && !target->fromGPS) {
        if (m_state.own.isKnown() && target->legStart.isKnown() && target->position.isKnown())
            return steering(*target);
        return {};
    }
    if (!target && (m_state.gotoActive || m_state.autopilotOnly))
        return {"$GPRMB,A,,,,,,,,,,,,V", "$GPAPB,A,A,,,,,,,,,,,,"};
    return {};
}

std::vector<std::string> Repeater::steering(const SteeringTarget& target) const
{
    const auto& own = m_state.own;
    const auto variation = m_state.variation;
    const auto crossTrack = NavMath::crossTrackFromPoint(own, target.position, target.legStart);
    const auto miles = std::abs(crossTrack);
    const char steer = crossTrack > 0 ? 'L' : 'R'; // positive lies to starboard of the leg
    const auto legBearing = NavMath::bearingFromPoint(target.legStart, target.position);
    const auto bearing = NavMath::bearingFromPoint(own, target.position);
    const auto range = NavMath::distanceFromPoint(own, target.position);
    const bool underway = isKnown(m_state.course) && isKnown(m_state.speed);
    const auto closing =
        underway ? NavMath::vmgFromPoint(own, target.position, m_state.course, m_state.speed) : 0;
    const bool passed =
        NavMath::bearingDeltaFromPoint(target.legStart, target.position, own, target.position)
        >= 90;
    const char arrived = range <= m_state.approachDistance || passed ? 'A' : 'V';
    const auto magnetic = [variation](float degrees) {
        return NavMath::magneticBearing(degrees, variation);
    };
    const auto name = NMEA::name(target.name);
    const auto origin = NMEA::name(target.originName);
    const auto destination = nmeaFields(target.position);

    std::vector<std::string> sentences;
    sentences.push_back(fmt::format("$GPXTE,A,A,{:.3f},{},N", miles, steer));
    if (underway)
        sentences.push_back(fmt::format("$GPVTG,{:05.1f},T,{:05.1f},M,{:.1f},N,{:.1f},K",
                                        m_state.course, magnetic(m_state.course), m_state.speed,
                                        m_state.speed * kilometresPerHour));
    sentences.push_back(fmt::format("$GPBOD,{:05.1f},T,{:05.1f},M,{},{}", legBearing,
                                    magnetic(legBearing), name, origin));
    sentences.push_back(fmt::format("$GPWPL,{},{}", destination, name));
    sentences.push_back(fmt::format("$GPBWC,{},{},{:05.1f},T,{:05.1f},M,{:.2f},N,{}",
                                    utcTime(m_clock), destination, bearing, magnetic(bearing),
                                    range, name));
    sentences.push_back(fmt::format("$GPRMB,A,{:.3f},{},{},{},{},{:.2f},{:05.1f},{:.1f},{}", miles,
                                    steer, origin, name, destination, range, bearing, closing,
                                    arrived));
    sentences.push_back(
        fmt::format("$GPAPB,A,A,{:.3f},{},N,{},V,{:05.1f},T,{},{:05.1f},T,{:05.1f},T", miles, steer,
                    arrived, legBearing, name, bearing, bearing));
    sentences.push_back(fmt::format("$PSILTBS,{:.2f},N", m_state.boatSpeedTarget));
    for (auto& sentence : routeSentences(target))
        sentences.push_back(std::move(sentence));
    return sentences;
}

} // namespace kelvox
