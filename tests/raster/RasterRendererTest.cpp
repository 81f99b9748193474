#include "raster/RasterRenderer.h"

#include "raster/SmallChart.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

namespace kelvox {
namespace {

constexpr std::uint32_t opaqueWhite = 0xFFFFFFFFU;
constexpr std::uint32_t opaqueBlue = 0xFF0000FFU;

struct Picture {
    Picture(int pictureWidth, int pictureHeight)
        : width(pictureWidth)
        , pixels(static_cast<std::size_t>(pictureWidth) * pictureHeight)
        , image{pixels, pictureWidth, pictureHeight, static_cast<std::size_t>(pictureWidth)}
    {
    }
    [[nodiscard]] std::uint32_t at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * width + x];
    }
    int width;
    std::vector<std::uint32_t> pixels;
    ArgbImage image;
};

/// Colours without order, so that every misplaced pixel shows.
std::uint8_t noise(int x, int y)
{
    return static_cast<std::uint8_t>(1 + ((x * 7919 + y * 104'729) >> 3) % 4);
}
void noiseRow(int row, std::span<std::uint8_t> colors)
{
    for (std::size_t x = 0; x < colors.size(); ++x)
        colors[x] = noise(static_cast<int>(x), row);
}

TEST(TilePyramid, ReducesToTheMeanOfEachBoxWithinItsBudget)
{
    auto description = smallChart();
    description.width = 1101; // neither side a multiple of anything
    description.height = 707;
    OpenedChart opened(description, noiseRow);
    ASSERT_TRUE(opened.result);
    ASSERT_TRUE(opened.chart.loadChart(600 << 10));
    TilePyramid& pyramid = opened.chart.pyramid();
    EXPECT_EQ(pyramid.levelCount(), 4); // 1101, 551, 276, 138
    for (int level = 0; level < pyramid.levelCount(); ++level)
        for (int y = 0; y < pyramid.levelHeight(level); y += 5) {
            const int tileRow = y / RasterTile::side;
            const auto strip = pyramid.tiles(
                level, tileRow, 0, (pyramid.levelWidth(level) - 1) / 256, PaletteScheme::Day);
            EXPECT_LE(pyramid.bytesInMemory(), 600U << 10);
            for (int x = 0; x < pyramid.levelWidth(level); x += 7) {
                double red = 0;
                int count = 0;
                for (int sourceY = y << level; sourceY < std::min((y + 1) << level, 707); ++sourceY)
                    for (int sourceX = x << level; sourceX < std::min((x + 1) << level, 1101);
                         ++sourceX, ++count)
                        red +=
                            noise(sourceX, sourceY) == 2 || noise(sourceX, sourceY) == 3 ? 255 : 0;
                const RasterTile& tile = *strip[static_cast<std::size_t>(x / 256)];
                const auto at = static_cast<std::size_t>(y % 256) * tile.width + x % 256;
                const double got = level == 0
                    ? pyramid.colorTable(PaletteScheme::Day)[tile.colorNumbers[at]] >> 16 & 0xFF
                    : tile.colors[at] >> 16 & 0xFF;
                ASSERT_NEAR(got, red / count, 0.51) << level << ' ' << x << ' ' << y;
            }
        }
}

TEST(RasterRenderer, CopiesPixelsWhereNothingIsScaledOrTurned)
{
    auto description = smallChart();
    description.width = 600;
    description.height = 300;
    const OpenedChart opened(description, noiseRow);
    const ColorTable colors = opened.chart.colorTable(PaletteScheme::Default);
    Picture straight(620, 320);
    std::vector<std::jthread> bands; // as the view draws them: several of one chart at a time
    for (const int top : {0, 80, 160, 240})
        bands.emplace_back([&, top] {
            const auto pixels = std::span(straight.pixels).subspan(620 * std::size_t(top));
            RasterRenderer::draw(opened.chart,
                                 [top](Point p) {
                                     return Point{p.x - 10.5, 299 - (p.y + top - 5.5)};
                                 },
                                 PaletteScheme::Default, RasterRenderer::Borders::Ignore,
                                 {pixels, 620, 80, 620});
        });
    bands.clear();
    Picture quarter(300, 600); // turned to the right: the chart's left column is the top row
    RasterRenderer::draw(
        opened.chart,
        [](Point p) {
            return Point{p.y - 0.5, p.x - 0.5};
        },
        PaletteScheme::Default, RasterRenderer::Borders::Ignore, quarter.image);
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 600; ++x) {
            ASSERT_EQ(straight.at(x + 10, y + 5), colors[noise(x, y)]) << x << ' ' << y;
            ASSERT_EQ(quarter.at(299 - y, x), colors[noise(x, y)]) << x << ' ' << y;
        }
    EXPECT_EQ(straight.at(9, 100), 0U) << "nothing beside the chart";
    EXPECT_EQ(straight.at(610, 100), 0U);
}

/// A Mercator view: the position of a picture point for a middle, degrees of longitude a pixel and
/// a turn counter-clockwise.
struct MercatorView {
    Position middle;
    double degreesPerPixel;
    double turn;
    int width, height;

    static double ordinate(double latitude)
    {
        return std::asinh(std::tan(latitude * M_PI / 180)) * 180 / M_PI;
    }
    Position operator()(Point p) const
    {
        const double x = (p.x - width / 2.0) * degreesPerPixel;
        const double y = (height / 2.0 - p.y) * degreesPerPixel;
        const double c = std::cos(turn * M_PI / 180);
        const double s = std::sin(turn * M_PI / 180);
        const double north = ordinate(middle.latitude) - x * s + y * c;
        return {.longitude = middle.longitude + x * c + y * s,
                .latitude = std::atan(std::sinh(north * M_PI / 180)) * 180 / M_PI};
    }
};

/// A chart in Mercator's projection with a red spot of 9 pixels on a position.
KapDescription mercatorChart(Position corner, double degreesPerPixel)
{
    auto chart = smallChart();
    chart.width = 900;
    chart.height = 700;
    chart.referencePoints.clear();
    const double top = MercatorView::ordinate(corner.latitude);
    for (const double y : {0.0, 233.0, 466.0, 699.0})
        for (const double x : {0.0, 450.0, 899.0}) {
            const double north = (top - y * degreesPerPixel) * M_PI / 180;
            chart.referencePoints.push_back({x, y, std::atan(std::sinh(north)) * 180 / M_PI,
                                             corner.longitude + x * degreesPerPixel});
        }
    return chart;
}

TEST(RasterRenderer, PutsFeaturesOnTheirPositionAtAnyZoomAndTurn)
{
    const Position spot{.longitude = 10.03, .latitude = 58.98};
    const auto description = mercatorChart({.longitude = 10, .latitude = 59}, 1e-4);
    const int spotX = 300; // 0.03 degrees east
    const int spotY = static_cast<int>(
        std::lround((MercatorView::ordinate(59) - MercatorView::ordinate(58.98)) / 1e-4));
    const OpenedChart opened(description, [&](int row, std::span<std::uint8_t> colors) {
        white(row, colors);
        for (int x = spotX - 4; std::abs(row - spotY) <= 4 && x <= spotX + 4; ++x)
            colors[static_cast<std::size_t>(x)] = 3;
    });
    ASSERT_TRUE(opened.result);
    for (const double zoom : {0.3, 1.0, 1.7, 5.0})
        for (const double turn : {0.0, 30.0, 170.0}) {
            const MercatorView view{spot, 1e-4 / zoom, turn, 300, 200};
            Picture picture(300, 200);
            const BSBChart* charts[] = {&opened.chart};
            RasterRenderer::drawQuilt(charts, view, PaletteScheme::Default, picture.image);
            double x = 0, y = 0, weight = 0;
            for (int row = 0; row < 200; ++row)
                for (int column = 0; column < 300; ++column)
                    if (const auto pixel = picture.at(column, row)) {
                        const double redness = 255 - (pixel & 0xFF);
                        x += redness * (column + 0.5);
                        y += redness * (row + 0.5);
                        weight += redness;
                    }
            ASSERT_GT(weight, 0) << zoom << ' ' << turn;
            EXPECT_NEAR(x / weight, 150, std::max(0.5, zoom / 2)) << zoom << ' ' << turn;
            EXPECT_NEAR(y / weight, 100, std::max(0.5, zoom / 2)) << zoom << ' ' << turn;
            EXPECT_NEAR(weight / 255, 81 * zoom * zoom, 1 + 4 * zoom) << zoom << ' ' << turn;
        }
}

TEST(RasterRenderer, QuiltsByTheBordersInTheOrderGiven)
{
    auto description = mercatorChart({.longitude = 10, .latitude = 59}, 1e-4);
    const OpenedChart under(description);
    description.border = {{10.02, 58.985}, {10.05, 58.985}, {10.02, 58.98}}; // a triangle
    const OpenedChart over(description, [](int, std::span<std::uint8_t> colors) {
        std::fill(colors.begin(), colors.end(), std::uint8_t{4});
    });
    ASSERT_TRUE(under.result && over.result);
    const MercatorView view{{.longitude = 10.03, .latitude = 58.9825}, 2e-4, 0, 600, 400};
    Picture picture(600, 400);
    const BSBChart* charts[] = {&over.chart, &under.chart};
    RasterRenderer::drawQuilt(charts, view, PaletteScheme::Default, picture.image);
    int blue = 0;
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 600; ++x) {
            const Position position = view({x + 0.5, y + 0.5});
            const double east = (position.longitude - 10.02) / 0.03;
            const double south = (58.985 - position.latitude) / 0.005;
            const double inside = std::min({east, south, 1 - east - south});
            const auto pixel = picture.at(x, y);
            if (std::abs(inside) < 0.02)
                continue; // on the border's edge
            ASSERT_EQ(pixel == opaqueBlue, inside > 0) << x << ' ' << y;
            if (inside < 0 && under.chart.contains(position)) {
                ASSERT_EQ(pixel, opaqueWhite) << x << ' ' << y;
            }
            blue += pixel == opaqueBlue ? 1 : 0;
        }
    EXPECT_GT(blue, 1000);
}

TEST(RasterRenderer, DrawsNothingFarFromTheChartWhereItsPolynomialsFoldBack)
{
    auto description = smallChart();
    GeoPolynomials folding; // one pixel a tenth of a degree here, and again 50 degrees further east
    folding.wpx = {2, {-5000, 450, 0, -10 + 1e-9, 0, 0}};
    folding.wpy = {1, {600, 0, -10}};
    folding.pwx = {1, {20, 0.02, 0}};
    folding.pwy = {1, {60, 0, -0.1}};
    description.polynomials = folding;
    const OpenedChart opened(description);
    ASSERT_TRUE(opened.result);
    const auto drawn = [&](double west) {
        Picture picture(200, 200);
        RasterRenderer::drawByPosition(
            opened.chart,
            [west](Point p) {
                return Position{.longitude = west + p.x * 0.01, .latitude = 60 - p.y * 0.01};
            },
            PaletteScheme::Default, RasterRenderer::Borders::Ignore, picture.image);
        return std::count(picture.pixels.begin(), picture.pixels.end(), opaqueWhite);
    };
    EXPECT_GT(drawn(20), 0);
    EXPECT_EQ(drawn(24), 0);
}

TEST(RasterRenderer, StaysCrispWhenMagnifiedAndLeavesOutWhatIsMissing)
{
    auto description = smallChart();
    description.width = 2;
    description.height = 4;
    description.referencePoints.clear();
    std::string bytes = writeKap(description, [](int, std::span<std::uint8_t> colors) {
        colors[0] = 1;
        colors[1] = 3;
    });
    bytes.resize(bytes.size() - 24); // index and last row gone
    const OpenedChart opened(bytes);
    ASSERT_TRUE(opened.result);
    Picture picture(40, 80); // 20 times
    RasterRenderer::draw(
        opened.chart,
        [](Point p) {
            return Point{p.x / 20 - 0.5, 3.5 - p.y / 20};
        },
        PaletteScheme::Default, RasterRenderer::Borders::Ignore, picture.image);
    for (int x = 0; x < 40; ++x) {
        if (x != 19 && x != 20) {
            EXPECT_EQ(picture.at(x, 30), x < 20 ? 0xFF000000U : 0xFFFF0000U) << x;
        }
        EXPECT_EQ(picture.at(x, 75), 0U);
    }
}

TEST(RasterRenderer, PrefersChartsNearTheScaleOfTheView)
{
    const int scales[] = {1'000'000, 20'000, 80'000, 500, 0};
    EXPECT_EQ(quiltOrder(scales, 40'000), (std::vector<std::size_t>{1, 2, 0, 4}))
        << "twice reduced before twice magnified; 1:500 would be unreadable; no scale last";
}

} // namespace
} // namespace kelvox
