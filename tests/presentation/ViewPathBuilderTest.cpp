#include "presentation/ViewPathBuilder.h"

#include "s57/S57CellLoader.h"
#include "s57/S57Object.h"
#include "support/SmallCells.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvox {

namespace {
CellGeometry geometryOf(const S57CellWriter& writer)
{
    return CellGeometry(S57CellLoader::loadBytes(*writer.bytes())->cell);
}

std::size_t placeOf(const CellGeometry& geometry, std::uint32_t id)
{
    const auto& features = geometry.cell().s57Features();
    for (std::size_t i = 0; i < features.size(); ++i)
        if (features[i]->recordID() == id)
            return i;
    ADD_FAILURE() << "no feature " << id;
    return 0;
}

/// The cell model's own path, in the pixels of a frame.
Path modelPath(const CellGeometry& geometry, std::size_t feature, const ViewFrame& frame)
{
    const Path points =
        geometry.cell().s57Features()[feature]->buildEdgePath(geometry.cell(), frame.view);
    Path pixels;
    for (std::size_t i = 0; i < points.subPathCount(); ++i) {
        pixels.moveTo(frame.pixelOf(points.subPath(i).front()));
        for (const Point p : points.subPath(i).subspan(1))
            pixels.lineTo(frame.pixelOf(p));
    }
    return pixels;
}
} // namespace

TEST(ViewPathBuilder, DrawsWhatTheModelSays)
{
    const SmallCell small;
    const auto geometry = geometryOf(small.writer);
    const auto whole = ViewFrame::fitting(geometry.cell().bounds(), 800, 600, 1, 66);
    // All of it, turned, its middle, a corner that is mostly outside, and far away from it all.
    const ViewFrame frames[] = {
        whole, ViewFrame::at(Position{10.5, 59.5}, whole.view.scale(), 40, 800, 600, 1, 66),
        ViewFrame::at(Position{10.525, 59.505}, 2'500, 30, 800, 600, 2, 66),
        ViewFrame::at(Position{10.45, 59.45}, 5'000, 0, 800, 600, 1, 66),
        ViewFrame::at(Position{20, 50}, 5'000, 0, 800, 600, 1, 66)};
    std::mt19937 random(3);
    std::uniform_real_distribution<double> along(-10, 810);
    for (const auto& frame : frames) {
        ViewPathBuilder builder(frame, 0);
        for (const auto id : {small.deep, small.shallow, small.coverage}) {
            const auto feature = placeOf(geometry, id);
            const Path expected = modelPath(geometry, feature, frame);
            const Path& path = builder.areaPath(geometry, feature);
            for (const Point p : path.points())
                ASSERT_TRUE((Rect{-17, -17, frame.width + 17.0, frame.height + 17.0}.contains(p)));
            for (int i = 0; i < 300; ++i) {
                const Point p{along(random), along(random) * 0.75};
                if (expected.distanceTo(p) > 1) {
                    ASSERT_EQ(path.contains(p), expected.contains(p))
                        << id << ": " << p.x << ' ' << p.y;
                }
            }
        }
        const auto contour = placeOf(geometry, small.contour);
        const Path expected = modelPath(geometry, contour, frame);
        for (const Point p : builder.linePath(geometry, contour).points())
            EXPECT_LT(expected.distanceTo(p), ViewPathBuilder::tolerance + 0.05);
    }
}

TEST(ViewPathBuilder, NeighboursShareTheirSimplifiedEdge)
{
    // Two areas along a wild line: whatever is left out of it, no pixel lies in both or in neither.
    std::mt19937 random(11);
    std::uniform_real_distribution<double> wild(-0.01, 0.01);
    S57CellWriter::Line middle;
    for (int i = 0; i <= 2'000; ++i)
        middle.push_back({10 + (i > 0 && i < 2'000 ? wild(random) : 0), 59 + i * 5e-5});
    S57CellWriter writer({.name = "KV5TEST4"});
    const auto shared = writer.edges(middle);
    const auto area = [&](double side) {
        auto spatials = writer.edges({middle.back(), {side, 59.1}, {side, 59}, middle.front()});
        spatials.insert(spatials.end(), shared.begin(), shared.end());
        return writer.addFeature("DEPARE", 3, spatials);
    };
    const auto west = area(9.9);
    const auto east = area(10.1);
    const auto geometry = geometryOf(writer);
    for (const int scale : {20'000, 200'000, 2'000'000}) {
        const auto frame = ViewFrame::at(Position{10, 59.05}, scale, 15, 200, 200, 1, 66);
        ViewPathBuilder builder(frame, 0);
        const Path left = builder.areaPath(geometry, placeOf(geometry, west));
        const Path right = builder.areaPath(geometry, placeOf(geometry, east));
        const Path around = [&] {
            Path path;
            for (const Position corner : {Position{9.9, 59}, {10.1, 59}, {10.1, 59.1}, {9.9, 59.1}})
                path.lineTo(frame.pixelOf(frame.view.positionToPoint(corner)));
            path.lineTo(path.points().front());
            return path;
        }();
        EXPECT_LT(left.pointCount(), scale == 20'000 ? 2'000U : 1'200U);
        for (int y = 0; y < 200; ++y)
            for (int x = 0; x < 200; ++x) {
                const Point p{x + 0.5, y + 0.5};
                if (around.contains(p) && around.distanceTo(p) > 1) {
                    ASSERT_NE(left.contains(p), right.contains(p))
                        << scale << ": " << x << ' ' << y;
                }
            }
    }
}

TEST(ViewPathBuilder, DashesStayOnTheirPlacesWhileTheChartIsPanned)
{
    S57CellWriter writer({.name = "KV5TEST6"});
    S57CellWriter::Line wave;
    for (int i = 0; i <= 400; ++i)
        wave.push_back({10 + i * 1e-4, 59 + 1e-4 * std::sin(i * 0.3)});
    const auto id = writer.addLine("CBLSUB", wave);
    const auto geometry = geometryOf(writer);
    const auto feature = placeOf(geometry, id);
    const Dashes dashes{12, 6};
    // The same ground in two pictures, the second moved by a whole number of pixels: the line
    // enters it elsewhere.
    const auto first = ViewFrame::at(Position{10.02, 59}, 5'000, 0, 400, 300, 1, 66);
    ViewFrame second = first;
    second.center = first.viewPointOf({200 + 77, 150});
    ViewPathBuilder one(first, 0);
    ViewPathBuilder two(second, 0);
    const Path before = one.dashedPath(geometry, feature, dashes);
    const Path after = two.dashedPath(geometry, feature, dashes).translated({77, 0});
    ASSERT_GT(before.subPathCount(), 15U);
    int compared = 0;
    for (std::size_t i = 1; i + 1 < before.subPathCount(); ++i) {
        const auto dash = before.subPath(i);
        double length = 0;
        for (std::size_t k = 1; k < dash.size(); ++k)
            length += std::hypot(dash[k].x - dash[k - 1].x, dash[k].y - dash[k - 1].y);
        EXPECT_NEAR(length, dashes.on, 1e-6) << "corners are followed";
        for (std::size_t k = 1; k + 1 < after.subPathCount(); ++k)
            if (std::abs(after.subPath(k).front().x - dash.front().x) < 5) {
                EXPECT_NEAR(after.subPath(k).front().x, dash.front().x, 1e-6);
                EXPECT_NEAR(after.subPath(k).back().y, dash.back().y, 1e-6);
                ++compared;
            }
    }
    EXPECT_GT(compared, 10);
}

TEST(ViewPathBuilder, MovesACellToTheOtherSideOfTheDateLine)
{
    S57CellWriter writer({.name = "KV5TEST5"});
    const auto line = writer.addLine("COALNE", {{-179.99, 0}, {-179.98, 0.01}});
    const auto geometry = geometryOf(writer);
    const auto frame = ViewFrame::at(Position{180, 0}, 100'000, 0, 800, 600, 1, 66);
    EXPECT_TRUE(ViewPathBuilder(frame, 0).linePath(geometry, placeOf(geometry, line)).isEmpty());
    ViewPathBuilder builder(frame, 360);
    const Path& path = builder.linePath(geometry, placeOf(geometry, line));
    ASSERT_EQ(path.pointCount(), 2U);
    EXPECT_GT(path.points()[0].x, 400); // just east of the middle
    EXPECT_LT(path.points()[1].y, path.points()[0].y);
}

} // namespace kelvox
