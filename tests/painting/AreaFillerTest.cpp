#include "painting/AreaFiller.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvox {

namespace {
constexpr int width = 64;
constexpr int height = 48;

struct Picture {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(width * height);
    void fill(const Path& rings, DisplayColor color, int top = 0, int rows = height)
    {
        AreaFiller filler;
        filler.fill({pixels.data(), width, rows, width}, rings, color, top);
    }
};

Path ring(std::initializer_list<Point> points)
{
    Path path;
    for (const Point p : points)
        path.lineTo(p);
    return path;
}

/// The pixels whose centre is inside; those within a hair of an edge are left to the filler.
void expectFilled(const Path& rings)
{
    Path closed;
    for (std::size_t i = 0; i < rings.subPathCount(); ++i) {
        closed.moveTo(rings.subPath(i).back());
        for (const Point p : rings.subPath(i))
            closed.lineTo(p);
    }
    Picture picture;
    picture.fill(rings, {255, 255, 255, 255});
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Point center{x + 0.5, y + 0.5};
            if (closed.distanceTo(center) > 1e-3) {
                ASSERT_EQ(picture.pixels[y * width + x] != 0, rings.contains(center))
                    << x << ' ' << y;
            }
        }
}
} // namespace

TEST(AreaFiller, FillsThePixelsWhoseCentreIsInside)
{
    std::mt19937 random(4);
    // Well beyond the picture on all sides.
    std::uniform_real_distribution<double> place(-40, 110);
    for (int round = 0; round < 60; ++round) {
        Path rings;
        for (int r = 0; r < 1 + round % 3; ++r) {
            rings.moveTo({place(random), place(random)});
            for (int i = 0; i < 3 + round % 9; ++i)
                rings.lineTo({place(random), place(random)});
        }
        expectFilled(rings);
    }
    expectFilled(ring({{1e7, -1e7}, {-1e7, 30.25}, {1e7, 1e7}}));
    Picture empty;
    empty.fill(Path(), {255, 0, 0, 255});
    empty.fill(ring({{5, 5}, {20, 5}}), {255, 0, 0, 255});
    empty.fill(ring({{5, 5}, {20, 5}, {9, 30}}), {255, 0, 0, 0});
    EXPECT_EQ(empty.pixels, Picture().pixels);
}

TEST(AreaFiller, AbuttingAreasShareNoPixelAndLeaveNone)
{
    // A bent grid of cells, some corners on pixel centres, drawn in either direction.
    std::mt19937 random(9);
    std::uniform_real_distribution<double> bend(-2.4, 2.4);
    constexpr int columns = 11;
    constexpr int rows = 9;
    for (int round = 0; round < 40; ++round) {
        std::vector<Point> nodes;
        for (int r = 0; r <= rows; ++r)
            for (int c = 0; c <= columns; ++c) {
                const bool border = r == 0 || c == 0 || r == rows || c == columns;
                const Point node{c * 6.0 + 0.5, r * 5.5};
                const bool straight = border || (round + r * c) % 4 == 0;
                nodes.push_back(straight ? node : node + Point{bend(random), bend(random)});
            }
        std::vector<int> covered(width * height);
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < columns; ++c) {
                const auto at = [&](int dr, int dc) {
                    return nodes[(r + dr) * (columns + 1) + c + dc];
                };
                Picture picture;
                picture.fill((r + c) % 2 ? ring({at(0, 0), at(0, 1), at(1, 1), at(1, 0)})
                                         : ring({at(1, 1), at(0, 1), at(0, 0), at(1, 0)}),
                             {9, 9, 9, 255});
                for (std::size_t i = 0; i < covered.size(); ++i)
                    covered[i] += picture.pixels[i] != 0;
            }
        // The grid runs from 0.5 to 66.5, past the right border, and down to 49.5.
        for (int i = 0; i < width * height; ++i)
            ASSERT_EQ(covered[i], 1) << round << ": " << i % width << ' ' << i / width;
    }
}

TEST(AreaFiller, PaintsInBandsWhatItPaintsAtOnce)
{
    const Path rings = ring({{3, 1}, {60, 20.5}, {30, 47}, {1, 40}});
    const DisplayColor color{200, 100, 50, 128};
    Picture whole;
    whole.fill(rings, color);
    Picture banded;
    AreaFiller filler;
    for (int top = 0; top < height; top += 16)
        filler.fill({banded.pixels.data() + top * width, width, 16, width}, rings, color, top);
    EXPECT_EQ(banded.pixels, whole.pixels);
}

TEST(AreaFiller, BlendsOverWhatIsThere)
{
    Picture picture;
    const Path all = ring({{0, 0}, {width, 0}, {width, height}, {0, height}});
    picture.fill(all, {0, 0, 255, 255});
    picture.fill(all, {255, 128, 0, 51}); // a fifth of it
    EXPECT_EQ(picture.pixels[100], 0xFF331ACCU); // 255/5, 128/5, 255*4/5
    Picture alone;
    alone.fill(all, {255, 128, 0, 51});
    EXPECT_EQ(alone.pixels[100], 0x33331A00U); // premultiplied
}

} // namespace kelvox
