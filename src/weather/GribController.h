#pragma once

#include "base/Strings.h"
#include "weather/GribContours.h"
#include "weather/GribMarkers.h"

#include <optional>
#include <string>
#include <vector>

namespace kelvox {

class Settings;

/// Drives the weather panel and its menus: what is shown, the step through the forecast, and the
/// values at the cursor. Main thread.
class GribController {
public:
    explicit GribController(GribModel& model);
    /// The same choices over another model.
    GribController(GribModel& model, const GribController& choices);
    GribController(const GribController&) = delete;
    GribController& operator=(const GribController&) = delete;

    [[nodiscard]] GribModel& model() { return m_model; }
    [[nodiscard]] const GribModel& model() const { return m_model; }

    /// Whether a grid of the viewed time has wind, or a field with contours.
    [[nodiscard]] bool canBarb() const;
    [[nodiscard]] bool canContour() const;
    [[nodiscard]] bool canCurrent() const;
    [[nodiscard]] bool canWaves() const;
    /// Those of the contour chooser that the viewed time has.
    [[nodiscard]] std::vector<GribField> contourFields() const;

    [[nodiscard]] std::vector<GribTime> forecastDates() const { return m_model.forecastDates(); }
    /// One step on or back; false at the ends of the list.
    bool nextForecast();
    bool previousForecast();

    void play(double monotonicSeconds); ///< from the viewed time; from the first when at the last
    void stop() { m_nextStep.reset(); }
    [[nodiscard]] bool isPlaying() const { return m_nextStep.has_value(); }
    /// To be called some times a second; true when another step is viewed now. Begins again after
    /// the last step.
    bool tick(double monotonicSeconds);
    double secondsPerStep = 1;

    /// All that is switched on, for the viewed time.
    [[nodiscard]] GribDrawing draw(const GribView& view) const;

    /// One row for the panel's table of fields.
    struct Row {
        GribTime first;
        GribTime last;
        int times = 0;
        GribField field{};
        std::string level;
        GribGrid grid; ///< of the first time
    };
    [[nodiscard]] std::vector<Row> table() const; ///< a row for each field and grid

    /// The values at the cursor for the viewed time, one ready line each, in the user's units.
    [[nodiscard]] std::vector<std::string> valuesAt(Position position,
                                                    const Strings& strings) const;

    void loadSettings(const Settings& settings);
    void saveSettings(Settings& settings) const;

    bool showWind = true;
    bool showCurrent = true;
    bool showWaves = true;
    bool showContours = true;
    GribField contourField = GribField::Pressure;
    GribMarkerOptions markers; ///< style, size and colour of the user

private:
    bool step(int by);

    GribModel& m_model;
    std::optional<double> m_nextStep; ///< when playing: the moment of the next step
};

/// What a controller shows at one moment, for a worker to draw while the controller goes on. Its
/// grids are shared, not copied.
class GribSnapshot {
public:
    explicit GribSnapshot(const GribController& weather)
        : m_units(weather.model().units())
        , m_model(weather.model(), m_units)
        , m_weather(m_model, weather)
    {
    }
    GribSnapshot(const GribSnapshot&) = delete;
    GribSnapshot& operator=(const GribSnapshot&) = delete;
    [[nodiscard]] const GribController& weather() const { return m_weather; }
    [[nodiscard]] const GribModel& model() const { return m_model; }

private:
    UnitsModel m_units;
    GribModel m_model;
    GribController m_weather;
};

} // namespace kelvox
