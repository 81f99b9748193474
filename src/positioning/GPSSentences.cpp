// The sentences that GPSController decodes, field by field. Field numbers count from 1 after the
// address, as in the published tables.

#include "navigation/NavMath.h"
#include "positioning/GPSController.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kelvox {
namespace {

constexpr std::size_t mostSatellites = 128; // more than all systems together have in view
constexpr std::size_t mostRouteNames = 1000;

float orUnknown(std::optional<float> value)
{
    return value.value_or(static_cast<float>(noValue));
}

/// A position of two field pairs from the given index on; unknown unless it is one on earth.
Position positionAt(const NmeaFields& fields, std::size_t index)
{
    const Position position{.longitude = NMEA::position(fields[index + 2], fields[index + 3]),
                            .latitude = NMEA::position(fields[index], fields[index + 1])};
    const bool good = std::abs(position.longitude) <= 180 && std::abs(position.latitude) <= 90;
    return good ? position : Position{};
}

} // namespace

const SentenceTable<GPSController::Handler>& GPSController::table()
{
    static const SentenceTable<Handler> handlers = {
        {"GGA", &GPSController::updatePositionGGA},  {"RMC", &GPSController::updatePositionRMC},
        {"GLL", &GPSController::updatePositionGLL},  {"VTG", &GPSController::updateCourseVTG},
        {"GSV", &GPSController::updateSatelliteGSV}, {"GSA", &GPSController::updateSatelliteGSA},
        {"RMB", &GPSController::updateWaypointRMB},  {"BWC", &GPSController::updateWaypointBWC},
        {"WPL", &GPSController::updateWaypointWPL},  {"RTE", &GPSController::updateRouteRTE},
        {"BOD", &GPSController::updateRouteBOD},     {"XTE", &GPSController::updateCrossTrackXTE},
        {"GSS", &GPSController::updateSatelliteGSS}, {"ZDA", &GPSController::updateTimeZDA},
        {"APA", &GPSController::updateAutopilot},    {"APB", &GPSController::updateAutopilot},
    };
    return handlers;
}

void GPSController::updatePositionGGA(const NmeaFields& fields)
{
    setPosition({.time = fields[1],
                 .latitude = fields[2],
                 .northSouth = fields[3],
                 .longitude = fields[4],
                 .eastWest = fields[5],
                 .status = fields[6],
                 .altitude = fields[9]});
}

void GPSController::updatePositionRMC(const NmeaFields& fields)
{
    auto variation = NMEA::number(fields[10]).value_or(0);
    if (fields[11].starts_with('W'))
        variation = -variation;
    if (variation == 0 && m_position.isKnown()) {
        // The model takes longer than all else here and changes by less than the display shows
        // within a minute of arc.
        const auto day = std::chrono::floor<std::chrono::days>(m_services.clock.now());
        const auto isNear = [this](const Position& p) {
            return std::abs(p.longitude - m_position.longitude) < 1.0 / 60
                && std::abs(p.latitude - m_position.latitude) < 1.0 / 60;
        };
        if (!m_variation || m_variation->day != day || !isNear(m_variation->position))
            m_variation = {m_position, day,
                           NavMath::variationForPoint(m_position, m_services.clock)};
        variation = m_variation->degrees;
    }
    if (variation != 0)
        setVariation(variation);
    setPosition({.time = fields[1],
                 .latitude = fields[3],
                 .northSouth = fields[4],
                 .longitude = fields[5],
                 .eastWest = fields[6],
                 .status = fields[2]});
    setCogSog(fields[8], fields[7]);
}

void GPSController::updatePositionGLL(const NmeaFields& fields)
{
    setPosition({.time = fields[5],
                 .latitude = fields[1],
                 .northSouth = fields[2],
                 .longitude = fields[3],
                 .eastWest = fields[4],
                 .status = fields[6]});
}

void GPSController::updateCourseVTG(const NmeaFields& fields)
{
    if (!fields[1].empty()) {
        setCogSog(fields[1], fields[5]);
        return;
    }
    const auto magnetic = NMEA::number(fields[3]);
    if (!magnetic) {
        setCogSog({}, fields[5]);
        return;
    }
    // One decimal, on purpose: the course goes the same way as one that came as text.
    const auto course =
        fmt::format("{:.1f}", NavMath::trueBearing(*magnetic, m_services.compass.variation));
    setCogSog(course, fields[5]);
}

void GPSController::setXte(std::string_view magnitude, std::string_view direction)
{
    const auto miles = NMEA::number(magnitude);
    if (!miles)
        return;
    const char steer = direction.empty() ? ' ' : direction.front();
    tellAll([&](GPSListener& listener) { listener.setXte(*miles, steer); });
}

void GPSController::setWaypoint(ReceiverWaypoint waypoint)
{
    if (waypoint.name.empty() && !waypoint.position.isKnown())
        return; // the blank sentence of an idle plotter
    m_waypoint = std::move(waypoint);
    resetWaypointDate();
    tellAll([this](GPSListener& listener) { listener.setWaypoint(m_waypoint); });
}

void GPSController::updateWaypointRMB(const NmeaFields& fields)
{
    setXte(fields[2], fields[3]);
    setWaypoint({.name = std::string(fields[5]),
                 .position = positionAt(fields, 6),
                 .bearingDegrees = orUnknown(NMEA::number(fields[11])),
                 .rangeNM = orUnknown(NMEA::number(fields[10])),
                 .velocityKnots = orUnknown(NMEA::number(fields[12]))});
}

void GPSController::updateWaypointBWC(const NmeaFields& fields)
{
    const auto destination = positionAt(fields, 2);
    if (destination.isKnown())
        m_waypoint.position = destination; // vmg() is the one towards this waypoint
    setWaypoint({.name = std::string(fields[12]),
                 .position = destination,
                 .bearingDegrees = orUnknown(NMEA::number(fields[6])),
                 .rangeNM = orUnknown(NMEA::number(fields[10])),
                 .velocityKnots = vmg()});
}

void GPSController::updateWaypointWPL(const NmeaFields& fields)
{
    const auto position = positionAt(fields, 1);
    if (!position.isKnown() || fields[5].empty())
        return;
    const std::string name(fields[5]);
    tellAll([&](GPSListener& listener) { listener.waypointReceived(position, name); });
}

void GPSController::updateRouteRTE(const NmeaFields& fields)
{
    if (!m_gotoActive || (fields[3] != "c" && fields[3] != "C"))
        return;
    const int total = NMEA::integer(fields[1]);
    const int number = NMEA::integer(fields[2]);
    if (number == 1)
        m_routeNames.clear();
    for (std::size_t i = 5; i < fields.count() && m_routeNames.size() < mostRouteNames; ++i)
        if (!fields[i].empty())
            m_routeNames.emplace_back(fields[i]);
    if (number != total || m_routeNames.empty())
        return;
    const std::string identifier(fields[4]);
    const auto names = std::exchange(m_routeNames, {});
    tellAll([&](GPSListener& listener) { listener.createRouteFromGPS(identifier, names); });
}

void GPSController::updateRouteBOD(const NmeaFields& fields)
{
    if (!m_gotoActive)
        return;
    const std::string destination(fields[5]);
    const std::string origin(fields[6]);
    tellAll([&](GPSListener& listener) {
        listener.setActiveRouteWaypointsFromGPS(destination, origin);
    });
}

void GPSController::updateCrossTrackXTE(const NmeaFields& fields)
{
    setXte(fields[3], fields[4]);
}

void GPSController::updateSatelliteGSV(const NmeaFields& fields)
{
    auto& satellites = m_satellites.satellites;
    if (NMEA::integer(fields[2]) == 1)
        satellites.clear();
    for (std::size_t i = 4; i < fields.count() && i < 20; i += 4) {
        if (fields[i].empty() || satellites.size() >= mostSatellites)
            continue;
        satellites.push_back({.number = NMEA::integer(fields[i]),
                              .elevationDegrees = NMEA::integer(fields[i + 1]),
                              .azimuthDegrees = NMEA::integer(fields[i + 2]),
                              .signal = NMEA::integer(fields[i + 3])});
    }
    tellAll([](GPSListener& listener) { listener.satellitesChanged(); });
}

void GPSController::updateSatelliteGSA(const NmeaFields& fields)
{
    m_satellites.mode = fields[1];
    m_satellites.fixType = NMEA::integer(fields[2]);
    m_satellites.inUse.clear();
    for (std::size_t i = 3; i <= 14; ++i)
        if (!fields[i].empty())
            m_satellites.inUse.push_back(NMEA::integer(fields[i]));
    m_satellites.pdop = orUnknown(NMEA::number(fields[15]));
    m_satellites.hdop = orUnknown(NMEA::number(fields[16]));
    m_satellites.vdop = orUnknown(NMEA::number(fields[17]));
    tellAll([](GPSListener& listener) { listener.satellitesChanged(); });
}

void GPSController::updateSatelliteGSS(const NmeaFields& fields)
{
    m_satellites.status = fmt::format("{} {} {}", fields[1], fields[2], fields[6]);
    tellAll([](GPSListener& listener) { listener.satellitesChanged(); });
}

void GPSController::updateTimeZDA(const NmeaFields& fields)
{
    m_utc.assign(fields[1]);
}

} // namespace kelvox
