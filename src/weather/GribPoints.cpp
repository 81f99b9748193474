#include "weather/GribPoints.h"

#include "base/NoValue.h"
#include "navigation/NavMath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr float knotsPerMetreASecond = 1.9438F;
constexpr float degreesPerRadian = 57.295776F;

struct FieldText {
    std::string_view name;
    std::string_view unit;
};
constexpr std::array<FieldText, gribFieldCount> fieldTexts = {{
    {"windU", "m/s"},
    {"windV", "m/s"},
    {"currentU", "m/s"},
    {"currentV", "m/s"},
    {"geopotentialHeight", "gpm"},
    {"airTemperature", "K"},
    {"seaTemperature", "K"},
    {"pressure", "Pa"},
    {"waveHeight", "m"},
    {"waveDirection", "degrees"},
    {"wavePeriod", "s"},
    {"precipitationRate", "kg/m2/s"},
}};

/// 0 for what a sailor feels, higher for what is aloft or below.
int heightRank(const GribLevel& level)
{
    switch (level.type) {
    case 1: // surface
    case 102: // mean sea level
        return 0;
    case 105: // metres above ground
        return level.top <= 10 ? 0 : 1;
    case 103: // metres above or below sea level
    case 160:
        return level.top <= 10 ? 1 : 2;
    default:
        return 3;
    }
}

double wrappedDegrees(double degrees)
{
    const double turned = std::fmod(degrees, 360);
    return turned < 0 ? turned + 360 : turned;
}

/// The mean of what is there; nothing when the missing points outweigh it.
template <typename Corners>
std::optional<double> weightedMean(const std::vector<float>& values, const Corners& corners)
{
    double sum = 0;
    double weight = 0;
    for (const auto& corner : corners) {
        if (corner.weight == 0 || isMissing(values[corner.index]))
            continue;
        sum += values[corner.index] * corner.weight;
        weight += corner.weight;
    }
    if (weight < 0.5)
        return std::nullopt;
    return sum / weight;
}

template <typename Corners>
std::optional<double> weightedDirection(const std::vector<float>& values, const Corners& corners)
{
    double east = 0;
    double north = 0;
    double weight = 0;
    for (const auto& corner : corners) {
        if (corner.weight == 0 || isMissing(values[corner.index]))
            continue;
        const double angle = values[corner.index] * std::numbers::pi / 180;
        east += std::sin(angle) * corner.weight;
        north += std::cos(angle) * corner.weight;
        weight += corner.weight;
    }
    if (weight < 0.5)
        return std::nullopt;
    return wrappedDegrees(std::atan2(east, north) * 180 / std::numbers::pi);
}
} // namespace

std::string_view gribFieldName(GribField field)
{
    return fieldTexts[static_cast<std::size_t>(field)].name;
}

std::string_view gribFieldUnit(GribField field)
{
    return fieldTexts[static_cast<std::size_t>(field)].unit;
}

std::optional<GribField> gribFieldOf(const GribMessage& message)
{
    // This centre's own tables give the same numbers to other quantities.
    constexpr int europeanCentre = 98;
    if (message.centre == europeanCentre && message.tableVersion >= 128)
        return std::nullopt;
    switch (message.parameter) {
    case 2:
        return GribField::Pressure;
    case 7:
        return GribField::GeopotentialHeight;
    case 11:
        return GribField::AirTemperature;
    case 33:
        return GribField::WindU;
    case 34:
        return GribField::WindV;
    case 49:
        return GribField::CurrentU;
    case 50:
        return GribField::CurrentV;
    case 59:
        return GribField::PrecipitationRate;
    case 80:
        return GribField::SeaTemperature;
    case 100:
    case 102:
        return GribField::WaveHeight;
    case 101:
    case 107:
        return GribField::WaveDirection;
    case 103:
    case 108:
    case 110:
        return GribField::WavePeriod;
    default:
        return std::nullopt;
    }
}

int gribPreference(GribField field, const GribMessage& message)
{
    int sea = 0;
    switch (message.parameter) {
    case 101: // the wind sea alone
    case 102:
    case 103:
        sea = 1;
        break;
    case 110: // the second swell
        sea = 2;
        break;
    default:
        break;
    }
    if (field == GribField::GeopotentialHeight)
        return message.level.type == 100 ? std::abs(message.level.top - 500) : 1000;
    return 10 * heightRank(message.level) + sea;
}

float uvSpeed(float a, float b)
{
    if (b == 0 || isMissing(a) || isMissing(b))
        return 0;
    return std::fabs(a / std::sin(std::atan(a / b))) * knotsPerMetreASecond;
}

float uvDirection(float a, float b)
{
    if (b == 0 || isMissing(a) || isMissing(b))
        return 0;
    const float quadrant = b >= 0 ? 270.0F : 90.0F;
    return NavMath::fixBearing(180.0F - (quadrant + std::atan(a / b) * degreesPerRadian));
}

double GribVector::knots() const
{
    return std::hypot(east, north) * static_cast<double>(knotsPerMetreASecond);
}

double GribVector::fromDegrees() const
{
    if (east == 0 && north == 0)
        return 0;
    return wrappedDegrees(std::atan2(-east, -north) * 180 / std::numbers::pi);
}

double GribVector::towardsDegrees() const
{
    if (east == 0 && north == 0)
        return 0;
    return wrappedDegrees(std::atan2(east, north) * 180 / std::numbers::pi);
}

GribPoints::GribPoints(const GribGrid& grid, GribTime date)
    : m_grid(grid)
    , m_date(date)
{
}

const GribPoints::Layer& GribPoints::layer(GribField field) const
{
    return m_layers[static_cast<std::size_t>(field)];
}

const std::vector<float>& GribPoints::values(GribField field) const
{
    return layer(field).values;
}

const GribLevel& GribPoints::level(GribField field) const
{
    return layer(field).level;
}

bool GribPoints::add(GribField field, int preference, const GribLevel& level,
                     std::vector<float> values)
{
    Layer& layer = m_layers[static_cast<std::size_t>(field)];
    if (values.size() != m_grid.pointCount()
        || (!layer.values.empty() && layer.preference < preference))
        return false;
    layer = {.values = std::move(values), .level = level, .preference = preference};
    return true;
}

bool GribPoints::hasWind() const
{
    return has(GribField::WindU) && has(GribField::WindV);
}

bool GribPoints::hasCurrent() const
{
    return has(GribField::CurrentU) && has(GribField::CurrentV);
}

float GribPoints::windSpeed(std::size_t index) const
{
    return uvSpeed(values(GribField::WindV)[index], values(GribField::WindU)[index]);
}

float GribPoints::windDirection(std::size_t index) const
{
    return uvDirection(values(GribField::WindV)[index], values(GribField::WindU)[index]);
}

float GribPoints::currentSpeed(std::size_t index) const
{
    return uvSpeed(values(GribField::CurrentV)[index], values(GribField::CurrentU)[index]);
}

float GribPoints::currentDirection(std::size_t index) const
{
    return uvDirection(values(GribField::CurrentV)[index], values(GribField::CurrentU)[index]);
}

Position GribPoints::positionOf(std::size_t index) const
{
    const auto columns = static_cast<std::size_t>(m_grid.longitudeCount);
    const auto row = static_cast<double>(index / columns);
    const auto column = static_cast<double>(index % columns);
    return {.longitude =
                NavMath::fixPosition(m_grid.first.longitude + column * m_grid.longitudeIncrement),
            .latitude = m_grid.first.latitude + row * m_grid.latitudeIncrement};
}

std::optional<Point> GribPoints::gridPlace(Position position) const
{
    constexpr double slack = 1e-9; // of a cell: a point on the border belongs to the grid
    const int columns = m_grid.longitudeCount;
    const int rows = m_grid.latitudeCount;
    Point place;
    const double eastward = wrappedDegrees(position.longitude - m_grid.first.longitude);
    if (columns == 1) {
        if (std::min(eastward, 360 - eastward) > slack)
            return std::nullopt;
    } else {
        place.x = eastward / m_grid.longitudeIncrement;
        const double turn = 360 / m_grid.longitudeIncrement;
        const bool wraps = m_grid.wraps();
        if (place.x > turn - slack * turn)
            place.x = 0; // a rounding below the first column
        if (place.x > (wraps ? columns : columns - 1 + slack * turn))
            return std::nullopt;
        if (!wraps)
            place.x = std::min<double>(place.x, columns - 1);
    }
    const double northward = position.latitude - m_grid.first.latitude;
    if (rows == 1) {
        if (std::abs(northward) > slack)
            return std::nullopt;
    } else {
        place.y = northward / m_grid.latitudeIncrement;
        if (!(place.y >= -slack * rows && place.y <= rows - 1 + slack * rows))
            return std::nullopt;
        place.y = std::clamp<double>(place.y, 0, rows - 1);
    }
    return place;
}

std::optional<std::array<GribPoints::Corner, 4>> GribPoints::corners(Position position) const
{
    const auto place = gridPlace(position);
    if (!place)
        return std::nullopt;
    const auto columns = static_cast<std::size_t>(m_grid.longitudeCount);
    const auto rows = static_cast<std::size_t>(m_grid.latitudeCount);
    const auto left = std::min(static_cast<std::size_t>(place->x), columns - 1);
    const auto top = std::min(static_cast<std::size_t>(place->y), rows - 1);
    const auto right = left + 1 < columns ? left + 1 : m_grid.wraps() ? 0 : left;
    const auto bottom = std::min(top + 1, rows - 1);
    const double x = place->x - static_cast<double>(left);
    const double y = place->y - static_cast<double>(top);
    return std::array<Corner, 4>{{{top * columns + left, (1 - x) * (1 - y)},
                                  {top * columns + right, x * (1 - y)},
                                  {bottom * columns + left, (1 - x) * y},
                                  {bottom * columns + right, x * y}}};
}

std::optional<double> GribPoints::valueAt(GribField field, Position position) const
{
    const auto around = corners(position);
    if (!has(field) || !around)
        return std::nullopt;
    return field == GribField::WaveDirection ? weightedDirection(values(field), *around)
                                             : weightedMean(values(field), *around);
}

std::optional<GribVector> GribPoints::vectorAt(GribField east, GribField north,
                                               Position position) const
{
    const auto around = corners(position);
    if (!has(east) || !has(north) || !around)
        return std::nullopt;
    const auto u = weightedMean(values(east), *around);
    const auto v = weightedMean(values(north), *around);
    if (!u || !v)
        return std::nullopt;
    return GribVector{.east = *u, .north = *v};
}

std::optional<GribVector> GribPoints::windAt(Position position) const
{
    return vectorAt(GribField::WindU, GribField::WindV, position);
}

std::optional<GribVector> GribPoints::currentAt(Position position) const
{
    return vectorAt(GribField::CurrentU, GribField::CurrentV, position);
}

} // namespace kelvox
