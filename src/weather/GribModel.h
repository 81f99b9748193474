#pragma once

#include "navigation/UnitsModel.h"
#include "weather/Beaufort.h"
#include "weather/GribPoints.h"

#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <tuple>
#include <vector>

namespace kelvox {

class Settings;

/// Messages of a file that are not shown, and why.
struct GribSkip {
    std::string reason; ///< for the user, e.g. "Gaussian grid" or "parameter 180 (table 2)"
    std::size_t offset = 0; ///< of the first such message
    int messages = 1;
};

/// What is known at one place and time, in the units of the file. Wind and current in m/s.
struct GribValues {
    std::optional<GribVector> wind;
    std::optional<GribVector> current;
    std::array<std::optional<double>, gribFieldCount>
        scalars; ///< by GribField, components left out

    [[nodiscard]] std::optional<double> operator[](GribField field) const
    {
        return scalars[static_cast<std::size_t>(field)];
    }
    [[nodiscard]] bool isEmpty() const;
};

/// The loaded weather: all grids of one file by forecast time, and the time that is viewed. Keeps
/// the settings of requests too. Main thread.
class GribModel {
public:
    static GribModel& grib(); ///< the shared instance, in the user's shared units
    explicit GribModel(const UnitsModel& units);
    /// What the other one shows now, in units of its own. The grids are shared, which neither
    /// loading nor closing changes: a worker may draw them meanwhile.
    GribModel(const GribModel& other, const UnitsModel& units);
    GribModel(const GribModel&) = delete;
    GribModel& operator=(const GribModel&) = delete;

    /// Closes what is loaded and reads a file. A file of extension BZ2 is unpacked in its place
    /// first; where that cannot be done (a read-only folder) it is unpacked in memory.
    /// Fails when the file cannot be read or holds no message that can; skipped() then tells more.
    /// Gives up soon after a stop was requested, with nothing loaded.
    [[nodiscard]] Result<void> loadGrib(const std::filesystem::path& path,
                                        const std::stop_token& stop = {});
    [[nodiscard]] Result<void> loadBytes(std::span<const char> bytes, const std::string& name,
                                         const std::stop_token& stop = {});
    void closeGrib();
    /// Takes over what another model has read, e.g. on a worker; settings and units stay.
    void adopt(GribModel&& other);

    [[nodiscard]] const std::string& fileName() const { return m_fileName; }
    /// By forecast date; among one date the finer grid first.
    [[nodiscard]] const std::vector<const GribPoints*>& points() const { return m_points; }
    [[nodiscard]] std::vector<const GribPoints*> pointsAt(GribTime date) const;
    [[nodiscard]] int messageCount() const { return m_messages; } ///< decoded, shown or not
    /// Not read: edition 2, other grids and packings, damage.
    [[nodiscard]] const std::vector<GribSkip>& skipped() const { return m_skipped; }
    /// Read and left out: other parameters, levels that gave way to a better one.
    [[nodiscard]] const std::vector<GribSkip>& ignored() const { return m_ignored; }

    /// The grids of one position, increments (width: longitude), counts and date; made when new.
    /// For those who fill a model, before others share its grids.
    GribPoints& gribPointsWithPosition(Position position, Size increments, Size counts,
                                       GribTime date);

    [[nodiscard]] std::vector<GribTime> forecastDates() const; ///< distinct, in order
    [[nodiscard]] GribTime viewedDate() const { return m_viewed; }
    void setViewedDate(GribTime date) { m_viewed = date; }

    /// Between the grids before and after the time in a straight line, wave direction and vectors
    /// by component; nothing before the first, after the last, or over a gap of more than a day.
    /// Where grids overlap the finest that has a value there counts.
    [[nodiscard]] GribValues valuesAt(Position position, GribTime time) const;

    [[nodiscard]] const UnitsModel& units() const { return m_units; }
    /// Kelvin in the user's unit. A result below -50 shows that the file was in degrees Celsius
    /// already; it is then converted from there.
    [[nodiscard]] float temperature(float value) const;
    [[nodiscard]] float height(float metres) const; ///< feet or metres by the distance unit
    /// Per second in the file, per hour here; the unit follows the temperature's, on purpose.
    [[nodiscard]] float rate(float value) const;

    /// The first row of the scale that holds the speed in knots; -1 for none (not a number).
    [[nodiscard]] static int beaufortIndex(double knots);
    [[nodiscard]] static GribColor beaufortColor(double knots);

    /// Of requests by mail. Values outside the lists become the nearest of them.
    void loadSettings(const Settings& settings);
    void saveSettings(Settings& settings) const;
    int interval = 6; ///< hours: 3, 6, 12 or 24
    int days = 3; ///< 3, 5 or 7
    double resolution = 1; ///< degrees: 0.5, 1 or 2

private:
    struct Key {
        GribTime date;
        double cellSize, longitude, latitude, longitudeIncrement, latitudeIncrement;
        int longitudeCount, latitudeCount;
        friend bool operator<(const Key& a, const Key& b)
        {
            const auto all = [](const Key& key) {
                return std::tie(key.date, key.cellSize, key.longitude, key.latitude,
                                key.longitudeIncrement, key.latitudeIncrement, key.longitudeCount,
                                key.latitudeCount);
            };
            return all(a) < all(b);
        }
    };
    using Grids = std::map<Key, GribPoints>;
    GribPoints& pointsFor(const GribGrid& grid, GribTime date);
    void take(const GribMessage& message);

    const UnitsModel& m_units;
    std::string m_fileName;
    std::shared_ptr<Grids> m_grids = std::make_shared<Grids>(); ///< complete once others share it
    std::vector<const GribPoints*> m_points;
    std::vector<GribSkip> m_skipped;
    std::vector<GribSkip> m_ignored;
    int m_messages = 0;
    std::size_t m_pointBudget = 0;
    GribTime m_viewed;
};

} // namespace kelvox
