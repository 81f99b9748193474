#include "weather/GribSurface.h"

#include "base/NoValue.h"
#include "weather/GribContours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace kelvox {

namespace {
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

std::array<float, 4> splineWeights(float t)
{
    const float t2 = t * t;
    const float t3 = t2 * t;
    return {0.5F * (-t3 + 2 * t2 - t), 0.5F * (3 * t3 - 5 * t2 + 2), 0.5F * (-3 * t3 + 4 * t2 + t),
            0.5F * (t3 - t2)};
}
} // namespace

GribSurface::GribSurface(const GribModel& model, const GribPoints& points, GribField field,
                         int firstColumn, int lastColumn, int firstRow, int lastRow)
    : m_firstColumn(firstColumn - border)
    , m_firstRow(firstRow - border)
    , m_columns(lastColumn - firstColumn + 1 + 2 * border)
    , m_rows(lastRow - firstRow + 1 + 2 * border)
    , m_values(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows), notANumber)
    , m_present(m_values.size())
    , m_least(notANumber)
    , m_most(notANumber)
{
    const auto& values = points.values(field);
    const bool wraps = points.grid().wraps();
    for (int row = 0; row < m_rows; ++row)
        for (int column = 0; column < m_columns; ++column) {
            const int gridRow = row + m_firstRow;
            int gridColumn = column + m_firstColumn;
            if (wraps)
                gridColumn = (gridColumn + points.longitudeCount()) % points.longitudeCount();
            if (gridRow < 0 || gridRow >= points.latitudeCount() || gridColumn < 0
                || gridColumn >= points.longitudeCount())
                continue;
            const float stored = values[static_cast<std::size_t>(gridRow)
                                            * static_cast<std::size_t>(points.longitudeCount())
                                        + static_cast<std::size_t>(gridColumn)];
            if (isMissing(stored))
                continue;
            const auto value = static_cast<float>(gribUserValue(model, field, stored));
            m_values[index(column, row)] = value;
            m_present[index(column, row)] = 1;
            m_least = std::fmin(m_least, value);
            m_most = std::fmax(m_most, value);
        }
    fillGaps();
    fillGaps(); // a spline reaches two points far
}

/// A point without value takes the mean of its neighbours' straight continuations, else of
/// the neighbours themselves: one value a point, so that the surface has no cracks between cells.
void GribSurface::fillGaps()
{
    const std::vector<float> before = m_values;
    const auto value = [&](int column, int row) {
        return column < 0 || column >= m_columns || row < 0 || row >= m_rows
            ? notANumber
            : before[index(column, row)];
    };
    for (int row = 0; row < m_rows; ++row)
        for (int column = 0; column < m_columns; ++column) {
            if (!std::isnan(before[index(column, row)]))
                continue;
            float continued = 0;
            float near = 0;
            int continuedCount = 0;
            int nearCount = 0;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const float first = value(column + dx, row + dy);
                    if (std::isnan(first))
                        continue;
                    near += first;
                    ++nearCount;
                    const float second = value(column + 2 * dx, row + 2 * dy);
                    if (std::isnan(second))
                        continue;
                    continued += 2 * first - second;
                    ++continuedCount;
                }
            if (continuedCount > 0)
                m_values[index(column, row)] = continued / static_cast<float>(continuedCount);
            else if (nearCount > 0)
                m_values[index(column, row)] = near / static_cast<float>(nearCount);
        }
}

float GribSurface::at(double column, double row) const
{
    const double x = column - m_firstColumn;
    const double y = row - m_firstRow;
    // The last point of the window belongs to the cell before it.
    const int left = std::min(static_cast<int>(std::floor(x)), m_columns - border - 2);
    const int top = std::min(static_cast<int>(std::floor(y)), m_rows - border - 2);
    if (left < 1 || top < 1 || left + 2 >= m_columns || top + 2 >= m_rows)
        return notANumber;
    if (!m_present[index(left, top)] || !m_present[index(left + 1, top)]
        || !m_present[index(left, top + 1)] || !m_present[index(left + 1, top + 1)])
        return notANumber;
    const auto across = splineWeights(static_cast<float>(x - left));
    const auto down = splineWeights(static_cast<float>(y - top));
    float sum = 0;
    for (int dy = 0; dy < 4; ++dy) {
        const float* line = &m_values[index(left - 1, top - 1 + dy)];
        sum += down[static_cast<std::size_t>(dy)]
            * (across[0] * line[0] + across[1] * line[1] + across[2] * line[2]
               + across[3] * line[3]);
    }
    return sum;
}

} // namespace kelvox
