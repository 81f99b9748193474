#include "weather/GribModel.h"

#include "base/NoValue.h"
#include "base/Settings.h"
#include "weather/GribFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr auto longestGap = std::chrono::hours(24);

/// What one file may take in memory, 4 bytes a point: constant and thinly packed fields are many
/// times smaller in the file than here.
constexpr std::size_t pointsPerFile = std::size_t{1} << 28;
constexpr std::size_t constantPoints = std::size_t{1} << 25;

void note(std::vector<GribSkip>& list, std::string reason, std::size_t offset)
{
    constexpr std::size_t mostReasons = 100; // a damaged file must not fill the memory with them
    if (list.size() >= mostReasons)
        reason = "other reasons";
    const auto same = std::find_if(list.begin(), list.end(),
                                   [&](const GribSkip& skip) { return skip.reason == reason; });
    if (same != list.end())
        ++same->messages;
    else
        list.push_back({.reason = std::move(reason), .offset = offset});
}

double between(double before, double after, double fraction)
{
    return before + (after - before) * fraction;
}

double betweenDegrees(double before, double after, double fraction)
{
    const double turn = std::remainder(after - before, 360);
    const double angle = std::fmod(before + turn * fraction + 360, 360);
    return angle;
}

GribVector betweenVectors(const GribVector& before, const GribVector& after, double fraction)
{
    return {.east = between(before.east, after.east, fraction),
            .north = between(before.north, after.north, fraction)};
}

template <typename T, std::size_t N> T nearestOf(const std::array<T, N>& choices, double wanted)
{
    return *std::min_element(choices.begin(), choices.end(), [wanted](T a, T b) {
        return std::abs(static_cast<double>(a) - wanted)
            < std::abs(static_cast<double>(b) - wanted);
    });
}

constexpr std::array intervals = {3, 6, 12, 24};
constexpr std::array dayCounts = {3, 5, 7};
constexpr std::array resolutions = {0.5, 1.0, 2.0};
} // namespace

bool GribValues::isEmpty() const
{
    return !wind && !current && std::none_of(scalars.begin(), scalars.end(), [](const auto& v) {
        return v.has_value();
    });
}

GribModel& GribModel::grib()
{
    static GribModel model(UnitsModel::units());
    return model;
}

GribModel::GribModel(const UnitsModel& units)
    : m_units(units)
{
}

GribModel::GribModel(const GribModel& other, const UnitsModel& units)
    : interval(other.interval)
    , days(other.days)
    , resolution(other.resolution)
    , m_units(units)
    , m_fileName(other.m_fileName)
    , m_grids(other.m_grids)
    , m_points(other.m_points)
    , m_skipped(other.m_skipped)
    , m_ignored(other.m_ignored)
    , m_messages(other.m_messages)
    , m_viewed(other.m_viewed)
{
}

Result<void> GribModel::loadGrib(const std::filesystem::path& path, const std::stop_token& stop)
{
    closeGrib();
    auto file = path;
    if (isBzip2(path))
        file = unpackInPlace(path, stop).value_or(path);
    const auto bytes = readGribFile(file, stop);
    if (!bytes)
        return tl::unexpected(bytes.error());
    return loadBytes(*bytes, file.string(), stop);
}

Result<void> GribModel::loadBytes(std::span<const char> bytes, const std::string& name,
                                  const std::stop_token& stop)
{
    closeGrib();
    m_fileName = name;
    m_pointBudget = pointsPerFile;
    std::size_t constantBudget = constantPoints;
    const std::span octets(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::size_t offset = 0;
    while (const auto message = readGribMessage(octets, offset)) {
        if (stop.stop_requested()) {
            closeGrib();
            return failure(Error::Code::Cancelled, name + ": cancelled");
        }
        if (!*message) {
            note(m_skipped, message->error().message, message->error().offset);
            continue;
        }
        const GribMessage& found = **message;
        const std::size_t count = found.grid.pointCount();
        std::size_t& budget =
            found.bitsPerValue == 0 && found.bitmap.empty() ? constantBudget : m_pointBudget;
        if (count > budget) {
            note(m_skipped, "more grid points than fit into memory", found.offset);
            continue;
        }
        budget -= count;
        take(found);
    }
    for (const auto& [key, grid] : *m_grids)
        m_points.push_back(&grid);
    if (!m_points.empty())
        m_viewed = m_points.front()->forecastDate();
    if (m_messages > 0)
        return {};
    if (m_skipped.empty())
        return failure(Error::Code::BadSyntax, name + ": holds no GRIB message");
    std::string reasons;
    for (const auto& skip : m_skipped) {
        reasons +=
            fmt::format("{}{} ({})", reasons.empty() ? "" : ", ", skip.reason, skip.messages);
        if (reasons.size() > 200)
            break;
    }
    return failure(Error::Code::Unsupported, name + ": nothing that can be read: " + reasons,
                   m_skipped.front().offset);
}

void GribModel::take(const GribMessage& message)
{
    const auto field = gribFieldOf(message);
    if (!field) {
        ++m_messages;
        note(m_ignored,
             fmt::format("parameter {} (table {}, centre {})", message.parameter,
                         message.tableVersion, message.centre),
             message.offset);
        return;
    }
    auto values = unpackGribValues(message);
    if (!values) {
        note(m_skipped, values.error().message, message.offset);
        return;
    }
    ++m_messages;
    GribPoints& points = pointsFor(message.grid, message.forecastTime);
    const bool replaces = points.has(*field);
    const GribLevel before = points.level(*field);
    const bool taken =
        points.add(*field, gribPreference(*field, message), message.level, std::move(*values));
    if (replaces)
        note(m_ignored,
             fmt::format("{} at {} beside {}", gribFieldName(*field),
                         describe(taken ? before : message.level),
                         describe(taken ? message.level : before)),
             message.offset);
}

void GribModel::closeGrib()
{
    m_fileName.clear();
    m_points.clear();
    m_grids = std::make_shared<Grids>(); // the old ones belong to those who draw them still
    m_skipped.clear();
    m_ignored.clear();
    m_messages = 0;
    m_viewed = {};
}

void GribModel::adopt(GribModel&& other)
{
    m_fileName = std::move(other.m_fileName);
    m_points = std::move(other.m_points);
    m_grids = other.m_grids;
    m_skipped = std::move(other.m_skipped);
    m_ignored = std::move(other.m_ignored);
    m_messages = other.m_messages;
    m_viewed = other.m_viewed;
    other.closeGrib();
}

GribPoints& GribModel::pointsFor(const GribGrid& grid, GribTime date)
{
    const Key key{.date = date,
                  .cellSize = grid.longitudeIncrement * std::abs(grid.latitudeIncrement),
                  .longitude = grid.first.longitude,
                  .latitude = grid.first.latitude,
                  .longitudeIncrement = grid.longitudeIncrement,
                  .latitudeIncrement = grid.latitudeIncrement,
                  .longitudeCount = grid.longitudeCount,
                  .latitudeCount = grid.latitudeCount};
    return m_grids->try_emplace(key, grid, date).first->second;
}

GribPoints& GribModel::gribPointsWithPosition(Position position, Size increments, Size counts,
                                              GribTime date)
{
    const auto before = m_grids->size();
    GribPoints& points = pointsFor({.first = position,
                                    .latitudeIncrement = increments.height,
                                    .longitudeIncrement = increments.width,
                                    .latitudeCount = static_cast<int>(counts.height),
                                    .longitudeCount = static_cast<int>(counts.width)},
                                   date);
    if (m_grids->size() != before) {
        m_points.clear();
        for (const auto& [key, grid] : *m_grids)
            m_points.push_back(&grid);
    }
    return points;
}

std::vector<const GribPoints*> GribModel::pointsAt(GribTime date) const
{
    std::vector<const GribPoints*> found;
    for (const GribPoints* points : m_points)
        if (points->forecastDate() == date)
            found.push_back(points);
    return found;
}

std::vector<GribTime> GribModel::forecastDates() const
{
    std::vector<GribTime> dates;
    for (const GribPoints* points : m_points)
        if (dates.empty() || dates.back() != points->forecastDate())
            dates.push_back(points->forecastDate());
    return dates;
}

GribValues GribModel::valuesAt(Position position, GribTime time) const
{
    GribValues values;
    // For each quantity the last value at or before the time and the first one at or after it.
    const auto interpolate = [&](auto valueIn, auto blend) {
        using Value = std::decay_t<decltype(valueIn(std::declval<const GribPoints&>()))>;
        Value before;
        Value after;
        GribTime beforeTime;
        GribTime afterTime;
        for (const GribPoints* points : m_points) {
            const GribTime date = points->forecastDate();
            if (after && date > afterTime)
                break;
            if (date <= time && before && date == beforeTime)
                continue; // the finer grid came first
            const Value here = valueIn(*points);
            if (!here)
                continue;
            if (date <= time) {
                before = here;
                beforeTime = date;
            }
            if (date >= time && !after) {
                after = here;
                afterTime = date;
            }
        }
        if (!before || !after || afterTime - beforeTime > longestGap)
            return Value();
        if (afterTime == beforeTime)
            return before;
        const double fraction = std::chrono::duration<double>(time - beforeTime)
            / std::chrono::duration<double>(afterTime - beforeTime);
        return Value(blend(*before, *after, fraction));
    };
    values.wind =
        interpolate([&](const GribPoints& p) { return p.windAt(position); }, betweenVectors);
    values.current =
        interpolate([&](const GribPoints& p) { return p.currentAt(position); }, betweenVectors);
    for (int i = static_cast<int>(GribField::GeopotentialHeight); i < gribFieldCount; ++i) {
        const auto field = static_cast<GribField>(i);
        values.scalars[static_cast<std::size_t>(i)] =
            interpolate([&](const GribPoints& p) { return p.valueAt(field, position); },
                        field == GribField::WaveDirection ? betweenDegrees : between);
    }
    return values;
}

float GribModel::temperature(float value) const
{
    constexpr float unlikely = -50;
    switch (m_units.temperatureUnits) {
    case UnitsModel::Fahrenheit: {
        const float converted = value * 1.8F - 459.688F;
        return converted < unlikely ? value * 1.8F + 32 : converted;
    }
    case UnitsModel::Celsius: {
        const float converted = value - 273.16F;
        return converted < unlikely ? value : converted;
    }
    default:
        return value < unlikely ? value + 273.15F : value;
    }
}

float GribModel::height(float metres) const
{
    switch (m_units.surfaceDistanceUnits) {
    case UnitsModel::NauticalMilesAndFeet:
    case UnitsModel::NauticalMiles:
    case UnitsModel::StatuteMiles:
        return metres * 3.28084F;
    case UnitsModel::NauticalMilesAndMetres:
    case UnitsModel::Kilometres:
        return metres;
    default:
        return 0;
    }
}

float GribModel::rate(float value) const
{
    if (m_units.temperatureUnits == UnitsModel::Fahrenheit)
        return value * 0.03937F * 3600;
    return value / 10 * 3600;
}

int GribModel::beaufortIndex(double knots)
{
    const auto rows = beaufortScale();
    const auto row = std::find_if(rows.begin(), rows.end(), [knots](const BeaufortRow& r) {
        return knots >= r.lower && knots < r.upper;
    });
    return row == rows.end() ? -1 : static_cast<int>(row - rows.begin());
}

GribColor GribModel::beaufortColor(double knots)
{
    const int index = beaufortIndex(knots);
    return index < 0 ? GribColor{} : beaufortScale()[static_cast<std::size_t>(index)].color;
}

void GribModel::loadSettings(const Settings& settings)
{
    interval = nearestOf(intervals, static_cast<double>(settings.integer("gribInterval", 6)));
    days = nearestOf(dayCounts, static_cast<double>(settings.integer("gribDays", 3)));
    resolution = nearestOf(resolutions, settings.number("gribResolution", 1));
}

void GribModel::saveSettings(Settings& settings) const
{
    settings.set("gribInterval", static_cast<long long>(interval));
    settings.set("gribDays", static_cast<long long>(days));
    settings.set("gribResolution", resolution);
}

} // namespace kelvox
