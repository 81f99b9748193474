#include "base/Path.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
void addRing(Path& path, std::initializer_list<Point> points)
{
    bool first = true;
    for (const Point p : points) {
        if (first)
            path.moveTo(p);
        else
            path.lineTo(p);
        first = false;
    }
}
} // namespace

TEST(Path, HolesAndIslandsFollowTheFillRule)
{
    Path path;
    addRing(path, {{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    addRing(path, {{2, 2}, {8, 2}, {8, 8}, {2, 8}}); // same direction as the outer ring
    EXPECT_TRUE(path.contains({1, 1}));
    EXPECT_FALSE(path.contains({5, 5}, FillRule::EvenOdd));
    EXPECT_TRUE(path.contains({5, 5}, FillRule::NonZero));
    EXPECT_FALSE(path.contains({11, 5}, FillRule::NonZero));
}

TEST(Path, AbuttingAreasShareNoPointOfTheirCommonEdge)
{
    Path left;
    addRing(left, {{0, 0}, {5, 0}, {5, 5}, {0, 5}});
    Path right;
    addRing(right, {{5, 0}, {9, 0}, {9, 5}, {5, 5}});
    for (double y = 0.5; y < 5; y += 0.5)
        EXPECT_NE(left.contains({5, y}), right.contains({5, y})) << y;
}

TEST(Path, AVertexOnTheRayIsCountedOnce)
{
    Path diamond;
    addRing(diamond, {{0, -2}, {2, 0}, {0, 2}, {-2, 0}});
    EXPECT_TRUE(diamond.contains({0, 0}));
    EXPECT_FALSE(diamond.contains({-3, 0}));
    EXPECT_FALSE(diamond.contains({3, 0}));
}

TEST(Path, DistanceIsToTheSegmentsNotToTheChordThatWouldCloseThem)
{
    Path line;
    addRing(line, {{0, 0}, {10, 0}, {10, 10}});
    line.moveTo({100, 100}); // a lone point is a segment of no length
    EXPECT_DOUBLE_EQ(line.distanceTo({5, 3}), 3);
    EXPECT_DOUBLE_EQ(line.distanceTo({0, 10}), 10);
    EXPECT_DOUBLE_EQ(line.distanceTo({100, 97}), 3);
    EXPECT_EQ(Path().distanceTo({0, 0}), std::numeric_limits<double>::infinity());
}

TEST(Path, MovesInARowLeaveNoEmptySubPaths)
{
    Path path;
    path.moveTo({1, 1});
    path.moveTo({2, 2});
    path.lineTo({3, 3});
    path.moveTo({4, 4});
    EXPECT_EQ(path.subPathCount(), 2U);
    EXPECT_EQ(path.subPath(0).front(), (Point{2, 2}));
    EXPECT_EQ(path.scaled(2).bounds(), (Rect{4, 4, 8, 8}));
}

} // namespace kelvox
