#include "s57/CellGeometry.h"

#include "chartview/S57Controller.h"
#include "s57/S57CellLoader.h"
#include "s57/S57Object.h"
#include "support/SmallCells.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvox {

namespace {
std::shared_ptr<const S57ChartItems> load(const S57CellWriter& writer)
{
    const auto bytes = writer.bytes();
    EXPECT_TRUE(bytes);
    return S57CellLoader::loadBytes(*bytes)->cell;
}

Rect box(double west, double south, double east, double north)
{
    return {west, S57Controller::mercatorOrdinate(south), east,
            S57Controller::mercatorOrdinate(north)};
}
} // namespace

TEST(CellGeometry, KeepsEachEdgeOnceHoweverManyFeaturesShareIt)
{
    const CellGeometry geometry(load(SmallCell().writer));
    const auto& features = geometry.cell().s57Features();
    std::size_t middle = 0;
    for (std::size_t i = 0; i < features.size(); ++i)
        if (features[i]->objectCode() == s57class::DEPCNT) {
            ASSERT_EQ(geometry.uses(i).size(), 1U);
            middle = geometry.uses(i)[0].edge;
            EXPECT_EQ(geometry.vertices(geometry.edge(geometry.uses(i)[0])).size(), 4U);
        }
    int forward = 0;
    int backward = 0;
    for (std::size_t i = 0; i < features.size(); ++i)
        if (features[i]->objectCode() == s57class::DEPARE)
            for (const auto& use : geometry.uses(i))
                if (use.edge == middle)
                    ++(use.reversed ? backward : forward);
    EXPECT_EQ(forward, 1);
    EXPECT_EQ(backward, 1);
}

TEST(CellGeometry, FindsWhatMeetsABoxInDrawingOrder)
{
    const CellGeometry geometry(load(SmallCell().writer));
    const auto classesIn = [&](const Rect& where) {
        std::string all;
        for (const auto i : geometry.featuresIn(where))
            all += std::string(S57ObjectCatalogue::classAcronym(
                       geometry.cell().s57Features()[i]->objectCode()))
                + ' ';
        return all;
    };
    EXPECT_EQ(classesIn(box(10, 59, 11, 60)),
              "M_COVR DEPARE DEPARE DEPCNT SOUNDG BOYCAR TOPMAR LIGHTS BCNLAT ");
    EXPECT_EQ(classesIn(box(10.479, 59.499, 10.481, 59.501)), "M_COVR DEPARE BOYCAR TOPMAR ");
    EXPECT_EQ(classesIn(box(11, 59, 12, 60)), "");
}

TEST(CellGeometry, TellsFromWhichDetailOnAVertexMatters)
{
    // A long wavy line, longer than a block: simplified at any tolerance it strays no further.
    std::mt19937 random(8);
    std::uniform_real_distribution<double> wave(-0.002, 0.002);
    S57CellWriter::Line line;
    for (int i = 0; i <= 3'000; ++i)
        line.push_back({10 + i * 1e-4, wave(random)}); // on the equator, where degrees are square
    S57CellWriter writer({.name = "KV5TEST2"});
    writer.addLine("COALNE", line);
    const CellGeometry geometry(load(writer));
    const auto& edge = geometry.edge(geometry.uses(0)[0]);
    const auto vertices = geometry.vertices(edge);
    ASSERT_EQ(vertices.size(), line.size());
    std::size_t fewest = line.size();
    for (const double toleranceDegrees : {1e-5, 1e-4, 1e-3, 1e-2}) {
        const double tolerance = toleranceDegrees * 3.14159265358979 / 180;
        const auto code = CellGeometry::detailCode(static_cast<float>(tolerance));
        Path simplified;
        for (std::size_t i = 0; i < vertices.size(); ++i)
            if (geometry.details(edge)[i] >= code)
                simplified.lineTo(
                    {vertices[i].longitude * 3.14159265358979 / 180, vertices[i].ordinate});
        EXPECT_LE(simplified.pointCount(), fewest);
        fewest = simplified.pointCount();
        double worst = 0;
        for (const auto v : vertices)
            worst = std::max(
                worst, simplified.distanceTo({v.longitude * 3.14159265358979 / 180, v.ordinate}));
        EXPECT_LE(worst, tolerance * 1.01);
    }
    EXPECT_LT(fewest, 8U);
    EXPECT_LT(CellGeometry::detailCode(1e-6F), CellGeometry::detailCode(2e-6F));
}

TEST(CellGeometry, CutsShortAnOutlineThatRunsAlongOneEdgeForEver)
{
    S57CellWriter writer({.name = "KV5TEST3"});
    const auto edges = writer.edges({{10, 50}, {10.1, 50.1}, {10.2, 50}});
    std::vector<S57FeatureSpatial> spatials(5'000, edges[0]);
    writer.addFeature("DEPARE", 3, spatials);
    const CellGeometry geometry(load(writer));
    EXPECT_EQ(geometry.uses(0).size(), 2U);
}

TEST(S57ChartItems, MeasuresItsCoverageAndSurvivesACellWithoutMultiplier)
{
    SmallCell small;
    const auto cell = load(small.writer);
    EXPECT_NEAR(cell->bounds().left, 10.45, 1e-5);
    EXPECT_NEAR(cell->bounds().top, 59.55, 1e-5);
    std::string bytes = *small.writer.bytes();
    // COMF and SOMF of zero: every co-ordinate is infinite or no number.
    const std::string multipliers{"\x80\x96\x98\0\x0a\0\0\0", 8};
    bytes.replace(bytes.find(multipliers), 8, std::string(8, '\0'));
    const auto odd = S57CellLoader::loadBytes(bytes);
    ASSERT_TRUE(odd);
    EXPECT_TRUE(odd->cell->bounds().isEmpty());
    EXPECT_TRUE(CellGeometry(odd->cell).bounds().isEmpty());
}

} // namespace kelvox
