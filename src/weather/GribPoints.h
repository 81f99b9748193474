#pragma once

#include "weather/GribMessage.h"

#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvox {

/// The quantities that are kept, in the units of the file.
enum class GribField {
    WindU, ///< m/s towards east
    WindV, ///< m/s towards north
    CurrentU, ///< m/s towards east
    CurrentV, ///< m/s towards north
    GeopotentialHeight, ///< geopotential metres
    AirTemperature, ///< K
    SeaTemperature, ///< K
    Pressure, ///< Pa
    WaveHeight, ///< m
    WaveDirection, ///< degrees true that the waves come from
    WavePeriod, ///< s
    PrecipitationRate, ///< kg/m2/s, which is mm/s
};
inline constexpr int gribFieldCount = 12;

/// Such as "windU": for files and scripts, never translated.
[[nodiscard]] std::string_view gribFieldName(GribField field);
[[nodiscard]] std::string_view gribFieldUnit(GribField field); ///< as stored, e.g. "m/s"

/// Which field a parameter of WMO table 2 is kept as; nothing for the many that are not.
[[nodiscard]] std::optional<GribField> gribFieldOf(const GribMessage& message);

/// Of two messages for one field of one grid the one with the smaller number is kept, the later one
/// among equals: what is near the surface before what is aloft (aloft first for geopotential
/// height), the primary or combined sea before its parts.
[[nodiscard]] int gribPreference(GribField field, const GribMessage& message);

/// Knots from two components in m/s, `a` northwards and `b` eastwards: 0 when b is 0 or either is
/// missing, not a number when only a is 0. Both on purpose; drawing uses GribVector instead.
[[nodiscard]] float uvSpeed(float a, float b);
/// Degrees true that the flow comes from, by the same rule for b.
[[nodiscard]] float uvDirection(float a, float b);

/// Wind or current at a place, sound in every quadrant and on the axes.
struct GribVector {
    double east = 0; ///< m/s
    double north = 0; ///< m/s

    [[nodiscard]] double knots() const;
    [[nodiscard]] double fromDegrees() const; ///< [0, 360); 0 for no flow
    [[nodiscard]] double towardsDegrees() const;
};

/// One grid at one forecast time, with an array of floats for each field that came for it.
class GribPoints {
public:
    GribPoints(const GribGrid& grid, GribTime date);

    [[nodiscard]] const GribGrid& grid() const { return m_grid; }
    [[nodiscard]] Position positionOnGPS() const { return m_grid.first; } ///< of the first point
    [[nodiscard]] double latitudeIncrement() const { return m_grid.latitudeIncrement; }
    [[nodiscard]] double longitudeIncrement() const { return m_grid.longitudeIncrement; }
    [[nodiscard]] int latitudeCount() const { return m_grid.latitudeCount; }
    [[nodiscard]] int longitudeCount() const { return m_grid.longitudeCount; }
    [[nodiscard]] GribTime forecastDate() const { return m_date; }

    /// Row by row from the first point, missingGridValue where there is none; empty when the field
    /// did not come.
    [[nodiscard]] const std::vector<float>& values(GribField field) const;
    [[nodiscard]] const GribLevel& level(GribField field) const;
    [[nodiscard]] bool has(GribField field) const { return !values(field).empty(); }
    /// Takes the values unless better ones are there (see gribPreference()); false when refused.
    bool add(GribField field, int preference, const GribLevel& level, std::vector<float> values);

    [[nodiscard]] bool hasWind() const; ///< both components, as for hasCurrent()
    [[nodiscard]] bool hasCurrent() const;
    [[nodiscard]] bool hasPressure() const { return has(GribField::Pressure); }
    [[nodiscard]] bool hasGeopotentialHeight() const { return has(GribField::GeopotentialHeight); }
    [[nodiscard]] bool hasAirTemperature() const { return has(GribField::AirTemperature); }
    [[nodiscard]] bool hasSeaTemperature() const { return has(GribField::SeaTemperature); }
    [[nodiscard]] bool hasWaveHeight() const { return has(GribField::WaveHeight); }
    [[nodiscard]] bool hasWaveDirection() const { return has(GribField::WaveDirection); }
    [[nodiscard]] bool hasWavePeriod() const { return has(GribField::WavePeriod); }
    [[nodiscard]] bool hasPrecipitationRate() const { return has(GribField::PrecipitationRate); }

    /// At one grid point, by uvSpeed() and uvDirection(): knots, and degrees that it comes from.
    [[nodiscard]] float windSpeed(std::size_t index) const;
    [[nodiscard]] float windDirection(std::size_t index) const;
    [[nodiscard]] float currentSpeed(std::size_t index) const;
    [[nodiscard]] float currentDirection(std::size_t index) const;

    [[nodiscard]] Position positionOf(std::size_t index) const; ///< longitude in [-180, 180]

    /// Column (x) and row (y) of a position, with fractions; nothing outside the grid. Between the
    /// last and the first column of a grid around the earth x lies above the last column.
    [[nodiscard]] std::optional<Point> gridPlace(Position position) const;

    /// Bilinear between the four points around. A missing point counts for nothing while those
    /// that are there carry half the weight or more, so that values reach towards the coast.
    /// Wave directions are averaged around the circle.
    [[nodiscard]] std::optional<double> valueAt(GribField field, Position position) const;
    [[nodiscard]] std::optional<GribVector> windAt(Position position) const;
    [[nodiscard]] std::optional<GribVector> currentAt(Position position) const;

private:
    struct Layer {
        std::vector<float> values;
        GribLevel level;
        int preference = 0;
    };
    struct Corner {
        std::size_t index;
        double weight;
    };
    [[nodiscard]] const Layer& layer(GribField field) const;
    [[nodiscard]] std::optional<std::array<Corner, 4>> corners(Position position) const;
    [[nodiscard]] std::optional<GribVector> vectorAt(GribField east, GribField north,
                                                     Position position) const;

    GribGrid m_grid;
    GribTime m_date;
    std::array<Layer, gribFieldCount> m_layers;
};

} // namespace kelvox
