#include "painting/LineFiller.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace kelvox {

namespace {
constexpr int width = 80;
constexpr int height = 60;
constexpr DisplayColor white{255, 255, 255, 255};

std::vector<std::uint32_t> stroked(const Path& path, double pen, DisplayColor color = white,
                                   int bands = 1)
{
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height, 0xFF000000U);
    for (int i = 0; i < bands; ++i) {
        const int top = i * height / bands;
        const int end = (i + 1) * height / bands;
        LineFiller::stroke({pixels.data() + top * width, width, end - top, width}, path, pen, color,
                           top);
    }
    return pixels;
}

/// Bends gently, as lines on a chart do once they are simplified.
Path wanderingLine(unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> bend(-0.5, 0.5);
    std::uniform_real_distribution<double> step(1.5, 9);
    double heading = bend(random) * 12;
    Point at{width / 2.0 + bend(random) * 30, height / 2.0 + bend(random) * 30};
    Path path;
    path.moveTo(at);
    for (int i = 0; i < 12; ++i) {
        heading += bend(random);
        at = at + Point{std::cos(heading), std::sin(heading)} * step(random);
        path.lineTo(at);
    }
    return path;
}
} // namespace

TEST(LineFiller, PaintsWhatLiesWithinHalfAPenOfTheLine)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        const Path path = wanderingLine(seed);
        const double pen = 1.5 + seed % 4;
        const auto pixels = stroked(path, pen);
        const Point first = path.points().front();
        const Point last = path.points().back();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const Point middle{x + 0.5, y + 0.5};
                // The square ends are looked at by the next test.
                const auto near = [&](Point p) {
                    return std::hypot(p.x - middle.x, p.y - middle.y) < pen + 1;
                };
                if (near(first) || near(last))
                    continue;
                // The share of an eight by eight grid within the pixel.
                int inside = 0;
                for (int k = 0; k < 64; ++k)
                    inside += path.distanceTo({x + (k % 8 + 0.5) / 8, y + (k / 8 + 0.5) / 8})
                        <= pen / 2;
                const auto value = static_cast<double>(pixels[y * width + x] & 0xFFU);
                ASSERT_NEAR(value / 255, inside / 64.0, 0.22)
                    << "line " << seed << " at " << x << ' ' << y;
            }
    }
}

TEST(LineFiller, AHairlineHasNoGapsAndNoBlots)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        const Path path = wanderingLine(seed);
        const auto pixels = stroked(path, 1);
        double painted = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const auto value = static_cast<double>(pixels[y * width + x] & 0xFFU) / 255;
                const Point middle{x + 0.5, y + 0.5};
                painted += value;
                if (value > 0.02) {
                    ASSERT_LT(path.distanceTo(middle), 1.2) << "line " << seed;
                }
            }
        double length = 0;
        double inside = 0;
        for (std::size_t k = 1; k < path.pointCount(); ++k) {
            const Point a = path.points()[k - 1];
            const Point step = path.points()[k] - a;
            length += std::hypot(step.x, step.y);
            for (double t = 0.125; t < 1; t += 0.125) {
                const Point p = a + step * t;
                if (!Rect{2, 2, width - 2.0, height - 2.0}.contains(p))
                    continue;
                inside += std::hypot(step.x, step.y) / 7;
                // The line passes here: the pixels around it show it.
                int most = 0;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx)
                        most = std::max(most,
                                        static_cast<int>(pixels[(static_cast<int>(p.y) + dy) * width
                                                                + static_cast<int>(p.x) + dx]
                                                         & 0xFFU));
                ASSERT_GT(most, 100) << "line " << seed;
            }
        }
        EXPECT_GT(painted, 0.6 * inside - 3) << "line " << seed;
        EXPECT_LT(painted, 1.1 * length + 3) << "line " << seed;
    }
}

TEST(LineFiller, EndsSquareAndDrawsEachPixelOnce)
{
    Path path;
    path.moveTo({20, 30});
    path.lineTo({40, 30});
    path.lineTo({60, 30});
    const auto pixels = stroked(path, 4, {255, 255, 255, 128});
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool inside = x >= 20 && x < 60 && y >= 28 && y < 32;
            ASSERT_NEAR(pixels[y * width + x] & 0xFFU, inside ? 128 : 0, 1) << x << ' ' << y;
        }
}

TEST(LineFiller, BandsJoinWithoutATrace)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        const Path path = wanderingLine(seed);
        EXPECT_EQ(stroked(path, 2.4, white, 7), stroked(path, 2.4, white, 1));
        EXPECT_EQ(stroked(path, 1, white, 7), stroked(path, 1, white, 1));
    }
}

TEST(LineFiller, TakesWhatNoLineShouldBe)
{
    Path path;
    path.moveTo({10, 10});
    EXPECT_EQ(stroked(path, 3), stroked(Path(), 3)) << "one point";
    path.lineTo({10, 10});
    EXPECT_EQ(stroked(path, 3), stroked(Path(), 3)) << "no length";
    path.lineTo({50, 40});
    path.lineTo({10, 10}); // and straight back
    EXPECT_NE(stroked(path, 3), stroked(Path(), 3));
    Path far;
    far.moveTo({-1e7, -1e7});
    far.lineTo({1e7, 1e7});
    EXPECT_EQ(stroked(far, 3)[40 * width + 40] & 0xFFU, 0xFFU);
}

} // namespace kelvox
