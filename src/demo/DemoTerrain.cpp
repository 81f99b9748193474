#include "demo/DemoTerrain.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
int latticeIndex(double metres, double spacing)
{
    return static_cast<int>(std::floor(metres / spacing + 0.5));
}

struct Corner {
    S57Place place;
    double elevation = 0;
};

/// Where the level lies between two neighbouring nodes, the western or southern one first.
S57Place crossing(const Corner& a, const Corner& b, double level)
{
    // Kept off the nodes, so that the lines of different squares stay apart.
    const double share =
        std::clamp((level - a.elevation) / (b.elevation - a.elevation), 0.03, 0.97);
    const auto between = [&](std::int32_t from, std::int32_t to) {
        return static_cast<std::int32_t>(std::floor(from + share * (double{1} * to - from) + 0.5));
    };
    return {between(a.place.y, b.place.y), between(a.place.x, b.place.x)};
}

/// The lines of one level through one square; corners counter-clockwise from the south-west.
void cutSquare(const std::array<Corner, 4>& corners, double level, int levelIndex,
               const DemoTerrain::Segment& segment)
{
    std::array<bool, 4> above{};
    for (std::size_t i = 0; i < 4; ++i)
        above[i] = corners[i].elevation > level;
    // Sides south, east, north, west: the level leaves high ground on some, enters it on others.
    const auto at = [&](std::size_t side) {
        static constexpr std::array<std::pair<std::size_t, std::size_t>, 4> ends{
            {{0, 1}, {1, 2}, {3, 2}, {0, 3}}};
        return crossing(corners[ends[side].first], corners[ends[side].second], level);
    };
    std::array<std::size_t, 2> leaving{};
    std::array<std::size_t, 2> entering{};
    std::size_t leavings = 0;
    std::size_t enterings = 0;
    for (std::size_t side = 0; side < 4; ++side) {
        const bool here = above[side];
        const bool next = above[(side + 1) % 4];
        if (here && !next)
            leaving[leavings++] = side;
        else if (!here && next)
            entering[enterings++] = side;
    }
    if (leavings == 0)
        return;
    if (leavings == 1) {
        segment(at(leaving[0]), at(entering[0]), levelIndex);
        return;
    }
    // A saddle: the middle decides which corners hang together.
    const double middle =
        (corners[0].elevation + corners[1].elevation + corners[2].elevation + corners[3].elevation)
        / 4;
    for (const std::size_t from : leaving) {
        const std::size_t to = middle > level ? (from + 1) % 4 : (from + 3) % 4;
        segment(at(from), at(to), levelIndex);
    }
}
} // namespace

DemoTerrain::DemoTerrain(const DemoGround& ground, const Rect& area, double spacing)
    : m_ground(ground)
    , m_spacing(spacing)
    , m_firstColumn(latticeIndex(area.left, spacing))
    , m_firstRow(latticeIndex(area.bottom, spacing))
    , m_columns(latticeIndex(area.right, spacing) - m_firstColumn)
    , m_rows(latticeIndex(area.top, spacing) - m_firstRow)
{
}

Point DemoTerrain::point(int column, int row) const
{
    return {(m_firstColumn + column) * m_spacing, (m_firstRow + row) * m_spacing};
}

S57Place DemoTerrain::node(int column, int row) const
{
    return S57Place::of(DemoGround::position(point(column, row)));
}

double DemoTerrain::cornerElevation() const
{
    return m_ground.elevation(point(0, 0));
}

void DemoTerrain::contours(std::span<const double> levels, const Segment& segment) const
{
    const auto sample = [this](int row) {
        std::vector<Corner> corners;
        corners.reserve(static_cast<std::size_t>(m_columns) + 1);
        for (int column = 0; column <= m_columns; ++column)
            corners.push_back({node(column, row), m_ground.elevation(point(column, row))});
        return corners;
    };
    auto south = sample(0);
    for (int row = 1; row <= m_rows; ++row) {
        auto north = sample(row);
        for (std::size_t i = 0; i + 1 < south.size(); ++i) {
            const std::array<Corner, 4> corners{south[i], south[i + 1], north[i + 1], north[i]};
            const auto [low, high] = std::minmax({corners[0].elevation, corners[1].elevation,
                                                  corners[2].elevation, corners[3].elevation});
            const auto first = std::lower_bound(levels.begin(), levels.end(), low);
            for (auto it = first; it != levels.end() && *it < high; ++it)
                cutSquare(corners, *it, static_cast<int>(it - levels.begin()), segment);
        }
        south = std::move(north);
    }
}

} // namespace kelvox
