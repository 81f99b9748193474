#include "demo/PlanarMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace kelvox {
namespace {

/// Twice the area of each kind, clockwise positive.
std::map<int, std::int64_t> areaByKind(const PlanarMap& map)
{
    std::map<int, std::int64_t> sums;
    for (const auto& area : map.areas())
        for (const auto& ring : area.rings)
            for (const auto& step : ring) {
                const auto& places = map.lines()[step.line].places;
                for (std::size_t i = 0; i + 1 < places.size(); ++i) {
                    const std::int64_t part = std::int64_t{places[i].x} * places[i + 1].y
                        - std::int64_t{places[i + 1].x} * places[i].y;
                    sums[area.kind] += step.reversed ? part : -part;
                }
            }
    return sums;
}

int kindOf(int band, std::uint64_t outlines)
{
    return outlines != 0 ? 100 : band;
}

void addLoop(PlanarMap& map, const std::vector<S57Place>& ring, int level)
{
    for (std::size_t i = 0; i < ring.size(); ++i)
        map.addContour(ring[i], ring[(i + 1) % ring.size()], level);
}

TEST(PlanarMap, DividesABoxByContoursAndOutlines)
{
    // West low, east high, divided at x = 60; a hill with a pond on it in the west, and a dredged
    // square that lies across the divide and over the box's southern border.
    PlanarMap map({0, 0}, {100, 100});
    map.addContour({0, 60}, {40, 60}, 0);
    map.addContour({40, 60}, {100, 60}, 0);
    std::vector<S57Place> hill{{50, 10}, {50, 40}, {80, 40}, {80, 10}};
    addLoop(map, hill, 0); // counter-clockwise: high inside
    addLoop(map, {{60, 20}, {70, 20}, {70, 30}, {60, 30}}, 0); // clockwise: low inside
    map.addOutline(std::vector<S57Place>{{-10, 50}, {-10, 70}, {20, 70}, {20, 50}});
    ASSERT_FALSE(map.build(0, kindOf)) << "high ground on the left of a line that runs north";

    PlanarMap right({0, 0}, {100, 100});
    right.addContour({100, 60}, {40, 60}, 0);
    right.addContour({40, 60}, {0, 60}, 0);
    addLoop(right, hill, 0);
    addLoop(right, {{60, 20}, {70, 20}, {70, 30}, {60, 30}}, 0);
    right.addOutline(std::vector<S57Place>{{-10, 50}, {-10, 70}, {20, 70}, {20, 50}});
    ASSERT_TRUE(right.build(0, kindOf));
    const std::map<int, std::int64_t> expected{
        {0, 2 * (6'000 - 900 + 100 - 200)}, {1, 2 * (4'000 + 900 - 100 - 200)}, {100, 2 * 400}};
    EXPECT_EQ(areaByKind(right), expected);
    // Low ground is in two pieces (the pond), high ground too (the hill).
    EXPECT_EQ(right.areas().size(), 5U);
    for (const auto& line : right.lines())
        EXPECT_NE(line.left, line.right);
    // No line is left where the dredged square covers the divide.
    const auto at = [&](S57Place place) {
        return std::count_if(right.lines().begin(), right.lines().end(), [&](const auto& line) {
            return std::find(line.places.begin(), line.places.end(), place) != line.places.end();
        });
    };
    EXPECT_EQ(at({20, 60}), 3) << "the divide ends on the square's northern side";
    EXPECT_EQ(at({0, 60}), 1) << "only the border runs there";
}

TEST(PlanarMap, KeepsNestedIslandsInTheirOwnWaters)
{
    // Rings within rings, 40 deep, high and low by turns.
    PlanarMap map({0, 0}, {1'000, 1'000});
    constexpr int depth = 40;
    for (int i = 1; i <= depth; ++i) {
        const int a = 10 * i;
        const int b = 1'000 - 10 * i;
        if (i % 2 == 1)
            addLoop(map, {{a, a}, {a, b}, {b, b}, {b, a}}, 0);
        else
            addLoop(map, {{a, a}, {b, a}, {b, b}, {a, b}}, 0);
    }
    ASSERT_TRUE(map.build(0, kindOf));
    EXPECT_EQ(map.areas().size(), depth + 1U);
    for (const auto& area : map.areas())
        EXPECT_LE(area.rings.size(), 2U);
    std::int64_t low = 0;
    for (int i = 0; i <= depth; i += 2) {
        const std::int64_t outer = 1'000 - 20 * i;
        const std::int64_t inner = i == depth ? 0 : 1'000 - 20 * (i + 1);
        low += outer * outer - inner * inner;
    }
    EXPECT_EQ(areaByKind(map),
              (std::map<int, std::int64_t>{{0, 2 * low}, {1, 2 * (1'000'000 - low)}}));
}

} // namespace
} // namespace kelvox
