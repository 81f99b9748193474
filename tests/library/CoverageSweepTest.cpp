#include "library/CoverageSweep.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Ring = std::vector<Point>;

Ring box(double left, double bottom, double right, double top)
{
    return {{left, bottom}, {right, bottom}, {right, top}, {left, top}};
}

const Rect view{0, 0, 10, 10};

TEST(CoverageSweep, ChartsThatShareABorderLeaveNoHole)
{
    CoverageSweep sweep(view);
    sweep.add({box(-1, -1, 10.0 / 3, 11)}, 0);
    sweep.add({box(10.0 / 3, -1, 11, 20.0 / 7)}, 0);
    EXPECT_FALSE(sweep.isFull());
    sweep.add({box(10.0 / 3, 20.0 / 7, 11, 11)}, 0);
    EXPECT_TRUE(sweep.isFull());
    EXPECT_NEAR(sweep.share(), 1, 1e-9);
}

TEST(CoverageSweep, FindsWhatIsLeftOpen)
{
    const Ring around = box(-1, -1, 11, 11);
    const struct {
        const char* why;
        std::vector<Ring> covered;
    } cases[] = {
        {"a hole inside", {around, box(4, 4, 5, 5)}},
        {"a narrow upright strip", {box(-1, -1, 5, 11), box(5.04, -1, 11, 11)}},
        {"a narrow level strip", {box(-1, -1, 11, 5), box(-1, 5.04, 11, 11)}},
        {"a corner", {{{-1, -1}, {11, -1}, {11, 8}, {8, 11}, {-1, 11}}}},
    };
    for (const auto& [why, covered] : cases) {
        CoverageSweep sweep(view);
        sweep.add(covered, 0);
        EXPECT_FALSE(sweep.isFull()) << why;
        EXPECT_TRUE(sweep.wouldAdd({around}, 0)) << why;
    }
}

TEST(CoverageSweep, WhatIsCoveredAlreadyAddsNothing)
{
    CoverageSweep sweep(view);
    sweep.add({box(2, 2, 8, 8)}, 0);
    EXPECT_NEAR(sweep.share(), 0.36, 0.02);
    EXPECT_FALSE(sweep.wouldAdd({box(3, 3, 7, 7)}, 0));
    EXPECT_FALSE(sweep.wouldAdd({box(12, 0, 20, 10)}, 0));
    EXPECT_TRUE(sweep.wouldAdd({box(7, 7, 9, 9)}, 0));
    EXPECT_TRUE(sweep.wouldAdd({box(367, 7, 369, 9)}, -360));
}

} // namespace
} // namespace kelvox
