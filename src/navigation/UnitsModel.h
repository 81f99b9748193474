#pragma once

#include "base/Settings.h"

namespace kelvox {

/// The user's display units. Stored values never depend on them: only the formatters convert.
/// Each setting is a number of a fixed list and saved under its own name. Main thread.
class UnitsModel {
public:
    static UnitsModel& units(); ///< the shared instance

    enum PositionFormat { DegreesMinutes, LetterFirst, DecimalDegrees, DegreesMinutesSeconds };
    enum SurfaceDistance {
        NauticalMilesAndFeet, ///< feet or yards below 1 NM; heights in feet
        NauticalMilesAndMetres, ///< metres below 1 NM; heights in metres
        NauticalMiles, ///< heights in feet
        Kilometres, ///< heights in metres
        StatuteMiles ///< heights in feet
    };
    enum WaterDepth { Feet, Metres, Fathoms };
    enum BoatSpeed { Knots, MilesPerHour, KilometresPerHour };
    enum WindSpeed { WindKnots, WindMilesPerHour, WindKilometresPerHour, WindMetresPerSecond };
    enum Temperature { Fahrenheit, Celsius, Kelvin };
    enum Fuel { UsGallons, ImperialGallons, Litres };
    enum Mode { PowerBoat, SailBoat };

    /// Reads each setting by its name; one that was never set becomes 0.
    void loadSettings(const Settings& settings);
    void saveSettings(Settings& settings) const;

    [[nodiscard]] bool heightsInMetres() const
    {
        return surfaceDistanceUnits == NauticalMilesAndMetres || surfaceDistanceUnits == Kilometres;
    }

    // Plain numbers, because a settings file may hold codes that this version does not know.
    int positionFormatUnits = DegreesMinutes;
    int surfaceDistanceUnits = NauticalMilesAndFeet;
    int waterDepthUnits = Feet;
    int boatSpeedUnits = Knots;
    int windSpeedUnits = WindKnots;
    int temperatureUnits = Fahrenheit;
    int fuelUnits = UsGallons;
    int modeUnits = PowerBoat;
};

} // namespace kelvox
