#pragma once

#include "base/Clock.h"
#include "base/Settings.h"
#include "base/Strings.h"
#include "positioning/Compass.h"
#include "positioning/GPSListener.h"
#include "positioning/NmeaConsumer.h"
#include "positioning/NmeaFields.h"
#include "positioning/SentenceTable.h"

#include <array>
#include <atomic>
#include <functional>
#include <optional>

namespace kelvox {

/// The last value of each instrument with its age.
///
/// Lines come in on reader threads (NmeaConsumer); everything else belongs to the main thread.
class InstrumentsController final : public NmeaConsumer {
public:
    enum class Instrument { Heading, Speed, Depth, Temperature, WindAngle, WindSpeed };
    /// A value that was not renewed for as many seconds is to be shown as stale.
    static constexpr double staleAfter = 10;

    /// @param settings "windApparent" and, with the prefix "instruments.", "useGPSPort"
    InstrumentsController(Executor& main, const Clock& clock, const Settings& settings,
                          const Strings& strings, Compass& compass);

    /// The parties around; each may be missing and must outlive the controller.
    void setAIS(NmeaConsumer* ais) { m_ais = ais; }
    /// Gets the lines of the instruments' own connection when it has none itself.
    void setGPS(NmeaConsumer* gps) { m_gps = gps; }
    /// Gets each line of the own connection before any check. Called on the reader thread.
    void setRepeat(std::function<void(std::string_view)> repeat) { m_repeat = std::move(repeat); }
    void setChanged(std::function<void(Instrument)> changed) { m_changed = std::move(changed); }

    /// The last value, -1000 before the first: heading in degrees true (as far as a variation is
    /// known), speed through water in knots, depth in feet, water temperature in degrees
    /// Fahrenheit, wind angle -180 to 180 from the bow with starboard positive, wind in knots.
    [[nodiscard]] float value(Instrument instrument) const { return reading(instrument).value; }
    /// Seconds since the value came; nothing before the first.
    [[nodiscard]] std::optional<double> age(Instrument instrument) const;
    /// True also while there is no value.
    [[nodiscard]] bool isStale(Instrument instrument) const;

    /// Whether the wind shown is the apparent one.
    [[nodiscard]] bool windIsApparent() const { return m_shownWindApparent; }
    [[nodiscard]] std::string windSpeedLabel() const;
    [[nodiscard]] std::string windAngleLabel() const;

    void setHeading(float degreesTrue) { set(Instrument::Heading, degreesTrue); }
    void setSpeed(float knots) { set(Instrument::Speed, knots); }
    void setDepth(float feet) { set(Instrument::Depth, feet); }
    void setTemperature(float fahrenheit) { set(Instrument::Temperature, fahrenheit); }
    void setWindAngle(float degrees) { set(Instrument::WindAngle, degrees); }
    void setWindSpeed(float knots) { set(Instrument::WindSpeed, knots); }

    void addTo(TrackSample& sample) const; ///< the last values, whatever their age

    /// Reads the settings that reader threads use; call it after they changed.
    void loadSettings();

    [[nodiscard]] bool knowsCommand(std::string_view command) const override;
    [[nodiscard]] bool takesFromGPS(std::string_view sentence) const override;
    void handle(std::string_view sentence) override;

protected:
    void forward(std::string_view sentence, Origin origin, HandlerQueue& queue) override;

private:
    using Handler = void (InstrumentsController::*)(const NmeaFields&);
    static const SentenceTable<Handler>& table();
    enum class Wind { Apparent, True };

    void updateHDG(const NmeaFields& fields);
    void updateHDT(const NmeaFields& fields);
    void updateHDM(const NmeaFields& fields);
    void updateDBT(const NmeaFields& fields);
    void updateDPT(const NmeaFields& fields);
    void updateMTW(const NmeaFields& fields);
    void updateMWV(const NmeaFields& fields);
    void updateVHW(const NmeaFields& fields);
    void updateVWR(const NmeaFields& fields);
    void updateVWT(const NmeaFields& fields);

    void updateSidedWind(const NmeaFields& fields, Wind wind);
    [[nodiscard]] bool showsApparentWind() const;
    void setMagneticHeading(float degrees);
    void set(Instrument instrument, float value);

    struct Reading {
        float value = static_cast<float>(noValue);
        double date = 0; // monotonic seconds
    };
    [[nodiscard]] const Reading& reading(Instrument instrument) const
    {
        return m_readings[static_cast<std::size_t>(instrument)];
    }

    const Clock& m_clock;
    const Settings& m_settings;
    const Strings& m_strings;
    Compass& m_compass;
    NmeaConsumer* m_ais = nullptr;
    NmeaConsumer* m_gps = nullptr;
    std::function<void(std::string_view)> m_repeat;
    std::function<void(Instrument)> m_changed;
    std::atomic<bool> m_useGPSPort{false};
    std::array<Reading, 6> m_readings;
    bool m_shownWindApparent = false;
};

} // namespace kelvox
