#pragma once

#include "ais/AISReport.h"
#include "base/NoValue.h"
#include "base/Position.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace kelvox {

/// One target: a vessel heard by AIS, or one of the entries of another kind (radarTarget(), gps(),
/// cursor()), which have negative keys.
///
/// Speeds in knots, courses and headings in degrees true, lengths in feet; unknown ones are
/// -1000, dimensions 0.
class AISPosition {
public:
    using Time = std::chrono::system_clock::time_point;
    static constexpr std::chrono::seconds timeOut{300};
    static constexpr std::chrono::seconds gpsTimeOut{15};
    static constexpr std::chrono::seconds expiry{900};

    // Keys of the entries that are no vessels; no MMSI is negative.
    static constexpr std::int32_t cursorKey = -1;
    static constexpr std::int32_t gpsKey = -2;
    [[nodiscard]] static constexpr std::int32_t radarKey(int targetNumber)
    {
        return -1000 - targetNumber;
    }

    explicit AISPosition(std::int32_t mmsi);

    [[nodiscard]] std::int32_t mmsi() const { return m_mmsi; }

    void setPositionOnGPS(Position position) { m_position = position; }
    [[nodiscard]] Position positionOnGPS() const { return m_position; }
    /// Both ordinates known; a report may leave out one of them.
    [[nodiscard]] bool isPositionKnown() const
    {
        return m_position.longitude != noCoordinate && m_position.latitude != noCoordinate;
    }
    void setSog(float knots) { m_sog = knots; }
    [[nodiscard]] float sog() const { return m_sog; }
    void setCog(float degrees) { m_cog = degrees; }
    [[nodiscard]] float cog() const { return m_cog; }
    void setHdg(float degrees) { m_hdg = degrees; }
    [[nodiscard]] float hdg() const { return m_hdg; }

    void setName(std::string name) { m_name = std::move(name); }
    [[nodiscard]] const std::string& name() const { return m_name; }
    void setCallSign(std::string callSign) { m_callSign = std::move(callSign); }
    [[nodiscard]] const std::string& callSign() const { return m_callSign; }
    void setDestination(std::string destination) { m_destination = std::move(destination); }
    [[nodiscard]] const std::string& destination() const { return m_destination; }
    void setType(int type) { m_type = type; }
    [[nodiscard]] int type() const { return m_type; } ///< ship and cargo type
    void setLength(float feet) { m_length = feet; }
    [[nodiscard]] float length() const { return m_length; }
    void setBeam(float feet) { m_beam = feet; }
    [[nodiscard]] float beam() const { return m_beam; }
    /// The antenna: x feet from the starboard side, y feet from the bow.
    void setReferencePoint(Point feet) { m_referencePoint = feet; }
    [[nodiscard]] Point referencePoint() const { return m_referencePoint; }
    void setEquipmentClass(AISClass equipmentClass) { m_class = equipmentClass; }
    [[nodiscard]] AISClass equipmentClass() const { return m_class; }
    void setChannel(int channel) { m_channel = channel; }
    [[nodiscard]] int channel() const { return m_channel; } ///< 1 for A, 2 for B, 0 unknown

    void setOwn(bool own) { m_own = own; }
    [[nodiscard]] bool own() const { return m_own; } ///< the own vessel, from VDO
    void setGps(bool gps) { m_gps = gps; }
    [[nodiscard]] bool gps() const { return m_gps; } ///< a receiver's own fix
    void setCursor(bool cursor) { m_cursor = cursor; }
    [[nodiscard]] bool cursor() const { return m_cursor; } ///< the radar's cursor
    void setRadarTarget(bool radarTarget) { m_radarTarget = radarTarget; }
    [[nodiscard]] bool radarTarget() const { return m_radarTarget; }
    [[nodiscard]] bool isVessel() const { return !m_gps && !m_cursor && !m_radarTarget; }
    void setShow(bool show) { m_show = show; }
    [[nodiscard]] bool show() const { return m_show; } ///< whether it is drawn

    // From the own vessel, as of the last plotted own position: nautical miles, degrees true.
    void setDistanceFromPosition(float distance) { m_distance = distance; }
    [[nodiscard]] float distanceFromPosition() const { return m_distance; }
    void setBearingFromPosition(float bearing) { m_bearing = bearing; }
    [[nodiscard]] float bearingFromPosition() const { return m_bearing; }

    // The time of the last report; the marks put it so far back that the next pass sees it.
    void markDate(Time now) { m_date = now; }
    void markDateAsTimedOut(Time now) { m_date = now - timeOut; }
    void markDateAsExpired(Time now) { m_date = now - expiry; }
    [[nodiscard]] Time date() const { return m_date; }
    [[nodiscard]] bool timedOut(Time now) const
    {
        return now - m_date > (m_gps ? gpsTimeOut : timeOut);
    }
    [[nodiscard]] bool expired(Time now) const { return now - m_date > expiry; }

    [[nodiscard]] bool underway() const;
    [[nodiscard]] bool stationary() const { return !underway(); }

private:
    std::int32_t m_mmsi;
    float m_sog = static_cast<float>(noValue);
    float m_cog = static_cast<float>(noValue);
    float m_hdg = static_cast<float>(noValue);
    Position m_position;
    Time m_date;
    float m_distance = static_cast<float>(noValue);
    float m_bearing = static_cast<float>(noValue);
    float m_length = 0;
    float m_beam = 0;
    Point m_referencePoint;
    std::string m_name;
    std::string m_callSign;
    std::string m_destination;
    int m_type = 0;
    int m_channel = 0;
    AISClass m_class = AISClass::Unknown;
    bool m_own = false;
    bool m_gps = false;
    bool m_cursor = false;
    bool m_radarTarget = false;
    bool m_show = true;
};

} // namespace kelvox
