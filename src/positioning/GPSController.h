#pragma once

#include "base/Alarms.h"
#include "base/Clock.h"
#include "base/Settings.h"
#include "base/Strings.h"
#include "positioning/Compass.h"
#include "positioning/Damper.h"
#include "positioning/GPSListener.h"
#include "positioning/GPSNotification.h"
#include "positioning/NmeaConsumer.h"
#include "positioning/NmeaFields.h"
#include "positioning/Satellites.h"
#include "positioning/SentenceTable.h"

#include <atomic>
#include <optional>

namespace kelvox {

class InstrumentsController;
class NMEASimulator;
class Repeater;

/// The own vessel as the receiver tells it, with the lost-position and anchor alarms.
///
/// Lines come in on reader threads (NmeaConsumer); everything else belongs to the main thread.
/// Positions are converted in single precision, so they are good to about 1 m.
class GPSController final : public NmeaConsumer {
public:
    struct Services {
        Executor& main;
        const Clock& clock;
        Settings& settings;
        const Strings& strings;
        Alarms& alarms;
        GPSNotification& notification;
        Compass& compass;
    };
    explicit GPSController(const Services& services);

    /// The parties around; each may be missing and must outlive the controller.
    void setInstruments(InstrumentsController* instruments) { m_instruments = instruments; }
    void setAIS(NmeaConsumer* ais) { m_ais = ais; }
    void setSimulator(NMEASimulator* simulator) { m_simulator = simulator; }
    void setRepeater(Repeater* repeater) { m_repeater = repeater; }
    void addListener(GPSListener& listener) { m_listeners.push_back(&listener); }

    // What the handlers feed; fields as they stand in a sentence.
    struct PositionFields {
        std::string_view time, latitude, northSouth, longitude, eastWest;
        std::string_view status = {}; ///< A, V or a fix quality; empty counts as valid
        std::string_view altitude = {}; ///< metres
    };
    void setPosition(const PositionFields& fields);
    void setCogSog(std::string_view course, std::string_view speed);

    [[nodiscard]] Position position() const { return m_position; }
    [[nodiscard]] bool positionValid() const { return m_positionValid; }
    [[nodiscard]] float courseOverGround() const { return m_course; } ///< degrees true
    [[nodiscard]] float speedOverGround() const { return m_speed; } ///< knots
    [[nodiscard]] float altitudeFeet() const { return m_altitude; }
    [[nodiscard]] const SatelliteView& satelliteView() const { return m_satellites; }
    /// Date and time of the last sentence that brought a time.
    [[nodiscard]] std::optional<std::chrono::system_clock::time_point> date() const
    {
        return m_date;
    }
    /// Seconds since the last accepted position or, before the first, since the start.
    [[nodiscard]] double positionAge() const;
    /// Older than 10 seconds, or not known.
    [[nodiscard]] bool positionIsStale() const;
    /// Velocity made good to the receiver's waypoint, knots; -1000 when something is not known.
    [[nodiscard]] float vmg() const;

    // The same as texts in the user's units; empty when unknown.
    [[nodiscard]] std::string latitude() const;
    [[nodiscard]] std::string longitude() const;
    [[nodiscard]] std::string sog() const;
    [[nodiscard]] std::string cog() const;
    [[nodiscard]] std::string fix() const;
    [[nodiscard]] std::string utc() const; ///< time of day of the last sentence, in local time
    [[nodiscard]] std::string altitude() const;

    /// Whether the navigation display follows a waypoint; route sentences are only taken then.
    void setGotoActive(bool active);
    [[nodiscard]] bool gotoActive() const { return m_gotoActive; }

    /// What the lost-position alarm needs to know about the connections.
    struct ConnectionState {
        bool gpsOpen = false;
        bool readingLogFile = false;
        bool instrumentsOpen = false;
    };
    /// A connection that opens starts the 90 seconds anew.
    void setConnectionState(ConnectionState state);
    void resetPositionDate();
    void resetWaypointDate();

    // To be called about once a second.
    void positionTimer(); ///< lost position; also repeats the sound of the anchor alarm
    void waypointTimer();

    /// Arms at the present position; without one, and with false, the alarm is off.
    void setAnchorAlarm(bool on);
    [[nodiscard]] bool anchorAlarm() const { return m_anchor.isKnown(); }
    [[nodiscard]] Position anchorPosition() const { return m_anchor; }
    void checkAnchorAlarm(Position position);
    /// The user closed the alert: the sound ends.
    void anchorAlertClosed() { m_anchorAlarmRepeating = false; }

    /// Reads the settings that reader threads use; call it after they changed.
    void loadSettings();

    [[nodiscard]] bool knowsCommand(std::string_view command) const override;
    [[nodiscard]] bool shouldRepeat(std::string_view sentence) const override;
    [[nodiscard]] bool takesFromInstruments(std::string_view sentence) const override;
    void handle(std::string_view sentence) override;

protected:
    void forward(std::string_view sentence, Origin origin, HandlerQueue& queue) override;

private:
    using Handler = void (GPSController::*)(const NmeaFields&);
    static const SentenceTable<Handler>& table();

    void updatePositionGGA(const NmeaFields& fields);
    void updatePositionRMC(const NmeaFields& fields);
    void updatePositionGLL(const NmeaFields& fields);
    void updateCourseVTG(const NmeaFields& fields);
    void updateWaypointRMB(const NmeaFields& fields);
    void updateWaypointBWC(const NmeaFields& fields);
    void updateWaypointWPL(const NmeaFields& fields);
    void updateRouteRTE(const NmeaFields& fields);
    void updateRouteBOD(const NmeaFields& fields);
    void updateCrossTrackXTE(const NmeaFields& fields);
    void updateSatelliteGSV(const NmeaFields& fields);
    void updateSatelliteGSA(const NmeaFields& fields);
    void updateSatelliteGSS(const NmeaFields& fields);
    void updateTimeZDA(const NmeaFields& fields);
    void updateAutopilot(const NmeaFields&) { } ///< APA, APB: for the monitor only

    void setDateFromUtc(std::string_view utc);
    void setVariation(float degrees);
    void setXte(std::string_view magnitude, std::string_view direction);
    void setWaypoint(ReceiverWaypoint waypoint);
    void showPositionAlarm(bool fromGPS);
    void showAnchorArrivalAlarm();
    void anchorAlarmSound();
    template <typename Call> void tellAll(const Call& call)
    {
        for (auto* listener : m_listeners)
            call(*listener);
    }

    Services m_services;
    InstrumentsController* m_instruments = nullptr;
    NmeaConsumer* m_ais = nullptr;
    NMEASimulator* m_simulator = nullptr;
    Repeater* m_repeater = nullptr;
    std::vector<GPSListener*> m_listeners;

    Position m_position;
    bool m_positionValid = false;
    float m_course = static_cast<float>(noValue);
    float m_speed = static_cast<float>(noValue);
    float m_altitude = static_cast<float>(noValue);
    Damper m_courseDamper{4};
    SatelliteView m_satellites;
    std::string m_utc;
    std::optional<std::chrono::system_clock::time_point> m_date;
    double m_positionDate = 0; // monotonic seconds, like the next
    std::optional<double> m_waypointDate;
    ConnectionState m_connection;

    struct VariationCache {
        Position position;
        std::chrono::sys_days day;
        float degrees = 0;
    };
    std::optional<VariationCache> m_variation;

    ReceiverWaypoint m_waypoint;
    bool m_gotoActive = false;
    std::vector<std::string> m_routeNames;
    std::atomic<bool> m_fromInstruments{false}; // receiver kind 5

    Position m_anchor;
    bool m_anchorAlarmRepeating = false;
    double m_nextAnchorSound = 0;
};

} // namespace kelvox
