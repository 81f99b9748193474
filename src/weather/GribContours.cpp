#include "weather/GribContours.h"

#include "base/NoValue.h"
#include "weather/GribLattice.h"
#include "weather/GribSurface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace kelvox {

namespace {
constexpr double sampleSpacing = 8; ///< view points between samples
constexpr std::size_t mostLevels = 400;

/// The smallest distance between lines that is worth drawing, in the user's unit.
double finestInterval(GribField field)
{
    switch (field) {
    case GribField::Pressure:
        return 0.5;
    case GribField::GeopotentialHeight:
        return 5;
    case GribField::PrecipitationRate:
        return 0.01;
    case GribField::WaveHeight:
        return 0.1;
    default:
        return 0.5;
    }
}

/// Round intervals; weather maps count pressure by fours.
double roundInterval(GribField field, double least)
{
    static constexpr std::array ofPressure = {0.5, 1.0, 2.0, 4.0, 8.0, 16.0};
    least = std::max(least, finestInterval(field));
    if (field == GribField::Pressure) {
        const auto found = std::lower_bound(ofPressure.begin(), ofPressure.end(), least);
        return found == ofPressure.end() ? ofPressure.back() : *found;
    }
    const double decade = std::pow(10, std::floor(std::log10(least) + 1e-9));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * decade >= least * (1 - 1e-9))
            return factor * decade;
    return 10 * decade;
}

std::vector<double> roundLevels(double least, double most, double interval)
{
    std::vector<double> levels;
    const double first = std::ceil(least / interval);
    const double count = std::floor(most / interval) - first;
    if (!(interval > 0) || !(count >= 0))
        return levels;
    for (std::size_t i = 0; i <= static_cast<std::size_t>(count) && i < mostLevels; ++i)
        levels.push_back((first + static_cast<double>(i)) * interval);
    return levels;
}

/// How far a centre must stand out from what is around it, in the unit of the file.
double leastProminence(GribField field)
{
    return field == GribField::Pressure ? 150 : 12; // Pa, gpm
}

/// The samples of one lattice over one grid, and where they lie.
struct Sampled {
    GribLattice lattice;
    std::vector<float> samples;
};

void sampleGrid(const GribModel& model, const GribPoints& points, GribField field,
                const GribView& view, const std::vector<const GribPoints*>& finer,
                std::vector<Sampled>& result)
{
    for (const auto& lattice :
         GribLattice::over(points.grid(), view, sampleSpacing, GribLattice::Spacing::AtMost)) {
        const double lastColumn = lattice.firstColumn + (lattice.columns - 1) * lattice.columnStep;
        const double lastRow = lattice.firstRow + (lattice.rows - 1) * lattice.rowStep;
        const GribSurface surface(
            model, points, field, static_cast<int>(std::floor(lattice.firstColumn)),
            static_cast<int>(std::ceil(lastColumn)), static_cast<int>(std::floor(lattice.firstRow)),
            static_cast<int>(std::ceil(lastRow)));
        Sampled sampled{.lattice = lattice, .samples = {}};
        sampled.samples.reserve(static_cast<std::size_t>(lattice.columns)
                                * static_cast<std::size_t>(lattice.rows));
        for (int row = 0; row < lattice.rows; ++row)
            for (int column = 0; column < lattice.columns; ++column) {
                float value = surface.at(lattice.firstColumn + column * lattice.columnStep,
                                         lattice.firstRow + row * lattice.rowStep);
                if (!finer.empty() && isCovered(finer, field, lattice.positionAt(column, row)))
                    value = std::numeric_limits<float>::quiet_NaN();
                sampled.samples.push_back(value);
            }
        result.push_back(std::move(sampled));
    }
}

/// Lines about 70 view points apart where they are evenly spread, but never only one or two.
double chosenInterval(GribField field, const GribView& view, double least, double most)
{
    const double extent = std::max(view.visible.width(), view.visible.height());
    const double wanted = std::clamp(extent / 70, 4.0, 14.0);
    const double interval = roundInterval(field, (most - least) / wanted);
    constexpr double usual = 4; // hPa: what sailors are used to, if it does not crowd the view
    if (field == GribField::Pressure && interval == 2 * usual && most - least < 24 * usual)
        return usual;
    return interval;
}
} // namespace

std::span<const GribField> gribContourFields()
{
    static constexpr std::array fields = {
        GribField::Pressure,         GribField::AirTemperature, GribField::SeaTemperature,
        GribField::WaveHeight,       GribField::WavePeriod,     GribField::GeopotentialHeight,
        GribField::PrecipitationRate};
    return fields;
}

double gribUserValue(const GribModel& model, GribField field, float value)
{
    switch (field) {
    case GribField::Pressure:
        return value / 100.0;
    case GribField::AirTemperature:
    case GribField::SeaTemperature:
        return model.temperature(value);
    case GribField::WaveHeight:
    case GribField::GeopotentialHeight:
        return model.height(value);
    case GribField::PrecipitationRate:
        return model.rate(value);
    default:
        return value;
    }
}

std::vector<GribContourLine> gribContourLines(const GribModel& model, const GribView& view,
                                              const GribContourOptions& options)
{
    std::vector<Sampled> sampled;
    std::vector<const GribPoints*> finer;
    for (const GribPoints* points : model.pointsAt(model.viewedDate())) {
        if (!points->has(options.field))
            continue;
        sampleGrid(model, *points, options.field, view, finer, sampled);
        finer.push_back(points);
    }
    float least = std::numeric_limits<float>::quiet_NaN();
    float most = least;
    for (const auto& one : sampled)
        for (const float value : one.samples) {
            least = std::fmin(least, value);
            most = std::fmax(most, value);
        }
    std::vector<GribContourLine> lines;
    if (!(most > least))
        return lines;
    const double interval =
        options.interval > 0 ? options.interval : chosenInterval(options.field, view, least, most);
    auto levels = roundLevels(least, most, interval);
    if (options.field == GribField::PrecipitationRate) // splines swing a little below no rain
        std::erase_if(levels, [interval](double level) { return level < interval / 2; });
    for (const auto& one : sampled)
        for (const auto& traced : traceContours(one.samples, one.lattice.columns, levels)) {
            GribContourLine line{.level = traced.level, .positions = {}};
            line.positions.reserve(traced.points.size());
            for (const Point p : traced.points)
                line.positions.push_back(one.lattice.positionAt(p.x, p.y));
            lines.push_back(std::move(line));
        }
    return lines;
}

std::vector<GribCentre> gribCentres(const GribModel& model, GribField field)
{
    constexpr double around = 4; // degrees
    std::vector<GribCentre> centres;
    for (const GribPoints* points : model.pointsAt(model.viewedDate())) {
        const auto& values = points->values(field);
        const GribGrid& grid = points->grid();
        if (values.empty() || grid.longitudeIncrement <= 0 || grid.latitudeIncrement == 0)
            continue;
        const auto cells = [](double increment) {
            return std::clamp(static_cast<int>(around / std::abs(increment)), 2, 40);
        };
        const int reachX = cells(grid.longitudeIncrement);
        const int reachY = cells(grid.latitudeIncrement);
        const bool wraps = grid.wraps();
        const auto value = [&](int column, int row) {
            if (wraps)
                column = (column + grid.longitudeCount) % grid.longitudeCount;
            return values[static_cast<std::size_t>(row)
                              * static_cast<std::size_t>(grid.longitudeCount)
                          + static_cast<std::size_t>(column)];
        };
        const int firstColumn = wraps ? 0 : reachX;
        const int endColumn = grid.longitudeCount - (wraps ? 0 : reachX);
        // 1 for a high, -1 for a low, 0 for neither; of equal neighbours the first one counts.
        const auto kindWithin = [&](int column, int row, int x, int y) {
            const float here = value(column, row);
            bool high = !isMissing(here);
            bool low = high;
            double sum = 0;
            for (int dy = -y; dy <= y && (high || low); ++dy)
                for (int dx = -x; dx <= x && (high || low); ++dx) {
                    if (dx == 0 && dy == 0)
                        continue;
                    const float there = value(column + dx, row + dy);
                    const bool before = dy < 0 || (dy == 0 && dx < 0);
                    if (isMissing(there))
                        return 0;
                    high = high && (before ? there < here : there <= here);
                    low = low && (before ? there > here : there >= here);
                    sum += there;
                }
            const double mean = sum / ((2 * x + 1) * (2 * y + 1) - 1);
            if (x > 1 && std::abs(mean - here) < leastProminence(field))
                return 0;
            return high == low ? 0 : high ? 1 : -1;
        };
        // Hardly any point stands out from its next neighbours: the rest need no wide look.
        const auto kindOf = [&](int column, int row) {
            return kindWithin(column, row, 1, 1) == 0 ? 0 : kindWithin(column, row, reachX, reachY);
        };
        for (int row = reachY; row < grid.latitudeCount - reachY; ++row)
            for (int column = firstColumn; column < endColumn; ++column) {
                const int kind = kindOf(column, row);
                if (kind == 0)
                    continue;
                // The top of the parabola through three points, along each axis.
                const auto offset = [&](float before, float here, float after) {
                    const double curve = before - 2.0 * here + after;
                    return curve == 0 ? 0 : std::clamp((before - after) / (2 * curve), -0.5, 0.5);
                };
                const float here = value(column, row);
                const double x =
                    column + offset(value(column - 1, row), here, value(column + 1, row));
                const double y = row + offset(value(column, row - 1), here, value(column, row + 1));
                centres.push_back(
                    {.position = {.longitude = std::remainder(
                                      grid.first.longitude + x * grid.longitudeIncrement, 360),
                                  .latitude = grid.first.latitude + y * grid.latitudeIncrement},
                     .value = gribUserValue(model, field, here),
                     .high = kind > 0});
            }
    }
    return centres;
}

} // namespace kelvox
