#include "positioning/GPSController.h"

#include "navigation/NavMath.h"
#include "navigation/PositionFormatter.h"
#include "navigation/ValueFormatters.h"
#include "positioning/GPSSettingsController.h"
#include "positioning/InstrumentsController.h"
#include "positioning/NMEA.h"
#include "positioning/NMEASimulator.h"
#include "positioning/Repeater.h"

#include <cmath>

namespace kelvox {
namespace {

constexpr float feetPerMetre = 3.28084F;
constexpr double positionTimeout = 90; // seconds
constexpr double waypointTimeout = 60;
constexpr double staleAfter = 10;
constexpr double anchorSoundInterval = 10;

bool isValidStatus(std::string_view status)
{
    if (status.empty() || status.front() == 'A')
        return true;
    return status.front() != 'V' && NMEA::integer(status) != 0;
}

/// Empty also for figures that no place on earth has: what is out of range is stored as it came.
std::string coordinateText(NSPositionFormatter::Orientation orientation, double degrees,
                           const Strings& strings)
{
    if (std::abs(degrees) > 180)
        return {};
    return NSPositionFormatter(orientation, strings).stringForObjectValue(degrees);
}

} // namespace

GPSController::GPSController(const Services& services)
    : NmeaConsumer(services.main, MissingChecksum::Allowed)
    , m_services(services)
    , m_positionDate(services.clock.monotonicSeconds())
{
    loadSettings();
}

void GPSController::loadSettings()
{
    m_fromInstruments = GPSSettingsController(m_services.settings, ConsumerRole::GPS).type()
        == GPSSettingsController::noPortOfItsOwn;
}

void GPSController::setPosition(const PositionFields& fields)
{
    m_positionValid = isValidStatus(fields.status);
    if (fields.time.size() >= 6)
        setDateFromUtc(fields.time);
    if (const auto metres = NMEA::number(fields.altitude))
        m_altitude = *metres * feetPerMetre;

    if (fields.latitude.empty() || fields.longitude.empty() || !m_positionValid) {
        m_position = {};
        if (m_repeater)
            m_repeater->setOwnPosition(m_position);
        return;
    }
    m_position = {.longitude = NMEA::position(fields.longitude, fields.eastWest),
                  .latitude = NMEA::position(fields.latitude, fields.northSouth)};
    const bool inRange = std::abs(m_position.longitude) < 180 && std::abs(m_position.latitude) < 90;
    if (m_repeater)
        m_repeater->setOwnPosition(inRange ? m_position : Position{});
    if (!inRange)
        return;

    m_services.notification.postGPSPosition(m_position, m_speed, m_course);
    if (m_simulator && !m_simulator->isRunning())
        m_simulator->setPosition(m_position);
    tellAll([this](GPSListener& listener) { listener.plotPosition(m_position); });
    resetPositionDate();
    checkAnchorAlarm(m_position);
    if (m_listeners.empty())
        return;
    TrackSample sample{.position = m_position,
                       .date = m_services.clock.now(),
                       .courseDegrees = m_course,
                       .speedKnots = m_speed};
    if (m_instruments)
        m_instruments->addTo(sample);
    tellAll([&sample](GPSListener& listener) { listener.recordTrack(sample); });
}

void GPSController::setCogSog(std::string_view course, std::string_view speed)
{
    constexpr float slowestWithCourse = 0.25F; // knots; below it the course is noise
    const bool leadsSimulator = m_simulator && !m_simulator->isRunning();
    if (const auto knots = NMEA::number(speed)) {
        m_speed = *knots;
        if (m_speed >= 0) {
            tellAll([this](GPSListener& listener) { listener.plotSpeed(m_speed); });
            if (leadsSimulator)
                m_simulator->setSpeed(m_speed);
        }
    }
    const auto degrees = NMEA::number(course);
    if (degrees && m_speed >= slowestWithCourse) {
        m_course = m_courseDamper.averageCourse(*degrees);
        if (m_course >= 0 && m_course <= 360) {
            tellAll([this](GPSListener& listener) { listener.plotCourse(m_course); });
            if (leadsSimulator)
                m_simulator->setHeading(m_course);
        }
    }
    if (m_repeater)
        m_repeater->setOwnCourseAndSpeed(m_course, m_speed);
}

void GPSController::setDateFromUtc(std::string_view utc)
{
    const auto now = m_services.clock.now();
    if (const auto date = NMEA::dateFromUtc(utc, now)) {
        m_date = date;
        m_utc.assign(utc.substr(0, 6));
    }
}

void GPSController::setVariation(float degrees)
{
    m_services.compass.variation = degrees;
    if (m_repeater)
        m_repeater->setVariation(degrees);
    tellAll([degrees](GPSListener& listener) { listener.setVariation(degrees); });
}

double GPSController::positionAge() const
{
    return m_services.clock.monotonicSeconds() - m_positionDate;
}

bool GPSController::positionIsStale() const
{
    return !m_position.isKnown() || positionAge() > staleAfter;
}

float GPSController::vmg() const
{
    if (!m_position.isKnown() || !m_waypoint.position.isKnown() || !isKnown(m_course)
        || !isKnown(m_speed))
        return static_cast<float>(noValue);
    return NavMath::vmgFromPoint(m_position, m_waypoint.position, m_course, m_speed);
}

std::string GPSController::latitude() const
{
    return coordinateText(NSPositionFormatter::Latitude, m_position.latitude, m_services.strings);
}

std::string GPSController::longitude() const
{
    return coordinateText(NSPositionFormatter::Longitude, m_position.longitude, m_services.strings);
}

std::string GPSController::sog() const
{
    return isKnown(m_speed) ? NSSogFormatter().stringForObjectValue(m_speed) : std::string();
}

std::string GPSController::cog() const
{
    return NSCogFormatter(m_services.strings).stringForObjectValue(m_course);
}

std::string GPSController::fix() const
{
    switch (m_satellites.fixType) {
    case 1:
        return m_services.strings.text("NSFixNone");
    case 2:
        return m_services.strings.text("NSFix2D");
    case 3:
        return m_services.strings.text("NSFix3D");
    default:
        return {};
    }
}

std::string GPSController::utc() const
{
    return NMEA::formatUtcToLocal(m_utc, m_services.clock.now());
}

std::string GPSController::altitude() const
{
    return isKnown(m_altitude) ? NSLenFormatter().stringForObjectValue(m_altitude) : std::string();
}

void GPSController::setGotoActive(bool active)
{
    m_gotoActive = active;
    if (m_repeater)
        m_repeater->setGotoActive(active);
}

void GPSController::setConnectionState(ConnectionState state)
{
    if ((state.gpsOpen && !m_connection.gpsOpen)
        || (state.instrumentsOpen && !m_connection.instrumentsOpen))
        resetPositionDate();
    m_connection = state;
}

void GPSController::resetPositionDate()
{
    m_positionDate = m_services.clock.monotonicSeconds();
}

void GPSController::resetWaypointDate()
{
    m_waypointDate = m_services.clock.monotonicSeconds();
}

void GPSController::positionTimer()
{
    if (m_anchorAlarmRepeating && m_services.clock.monotonicSeconds() >= m_nextAnchorSound)
        anchorAlarmSound();

    const bool ownPort = m_connection.gpsOpen && !m_connection.readingLogFile;
    const bool byInstruments =
        !m_connection.gpsOpen && m_connection.instrumentsOpen && m_fromInstruments;
    if ((ownPort || byInstruments) && positionAge() >= positionTimeout)
        showPositionAlarm(ownPort);
}

void GPSController::waypointTimer()
{
    if (!m_waypointDate || m_services.clock.monotonicSeconds() - *m_waypointDate < waypointTimeout)
        return;
    m_waypointDate.reset();
    m_waypoint = {};
    tellAll([](GPSListener& listener) { listener.waypointTimedOut(); });
}

void GPSController::showPositionAlarm(bool fromGPS)
{
    resetPositionDate(); // so that it comes again after as long
    const std::string key = fromGPS ? "NSNoGPSPositionData" : "NSNoAISPositionData";
    m_services.alarms.playSound("Buzz");
    m_services.alarms.show({.key = key,
                            .message = m_services.strings.text(key),
                            .informativeText = {},
                            .button = m_services.strings.text("NSOK")});
    if (m_repeater)
        m_repeater->setOwnPosition({}); // an autopilot must not steer by an old position
    tellAll([](GPSListener& listener) {
        listener.stopOpeningNavigationPanel();
        listener.plotPosition({});
        listener.drawDataReady();
    });
}

void GPSController::setAnchorAlarm(bool on)
{
    if (on) {
        const bool whole =
            m_position.latitude != noCoordinate && m_position.longitude != noCoordinate;
        if (whole) {
            m_anchor = m_position;
            m_anchorAlarmRepeating = false;
        }
    } else {
        m_anchor = {};
    }
    tellAll([this](GPSListener& listener) { listener.setAnchorPosition(m_anchor); });
}

void GPSController::checkAnchorAlarm(Position position)
{
    if (!m_anchor.isKnown() || !position.isKnown())
        return;
    const auto limit = static_cast<float>(m_services.settings.number("anchorDragDistance"));
    if (NavMath::distanceFromPoint(position, m_anchor) >= limit)
        showAnchorArrivalAlarm();
}

void GPSController::showAnchorArrivalAlarm()
{
    setAnchorAlarm(false);
    const bool visual = m_services.settings.boolean("visual");
    if (m_services.settings.boolean("audio")) {
        m_anchorAlarmRepeating = visual;
        anchorAlarmSound();
    }
    if (visual)
        m_services.alarms.show({.key = "NSAnchorAlarm",
                                .message = m_services.strings.text("NSAnchorAlarm"),
                                .informativeText = {},
                                .button = m_services.strings.text("NSOK")});
}

void GPSController::anchorAlarmSound()
{
    const auto sound = m_services.settings.text("alarmSound");
    if (!sound.empty())
        m_services.alarms.playSound(sound);
    m_services.alarms.speak(m_services.strings.text("NSAnchorAlarm"));
    m_nextAnchorSound = m_services.clock.monotonicSeconds() + anchorSoundInterval;
}

bool GPSController::knowsCommand(std::string_view command) const
{
    return table().find(command) != nullptr;
}

bool GPSController::shouldRepeat(std::string_view sentence) const
{
    return !m_repeater || m_repeater->shouldRepeat(sentence);
}

bool GPSController::takesFromInstruments(std::string_view /*sentence*/) const
{
    return m_fromInstruments;
}

void GPSController::forward(std::string_view sentence, Origin origin, HandlerQueue& queue)
{
    if (origin != Origin::OwnConnection)
        return;
    if (m_repeater)
        m_repeater->sendRepeat(sentence);
    if (m_instruments)
        m_instruments->setRawSentenceFromGPS(sentence, queue);
    if (m_ais)
        m_ais->setRawSentenceFromGPS(sentence, queue);
}

void GPSController::handle(std::string_view sentence)
{
    tellAll([](GPSListener& listener) { listener.drawDataReady(); });
    if (const auto* handler = NMEA::nmeaWithData(sentence, table()))
        (this->*(*handler))(NmeaFields(sentence));
}

} // namespace kelvox
