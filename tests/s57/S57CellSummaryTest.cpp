#include "s57/S57CellSummary.h"

#include "s57/S57CellLoader.h"
#include "support/RealData.h"
#include "support/SmallCells.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {
namespace {

double area(const std::vector<Position>& ring)
{
    double twice = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Position& a = ring[i];
        const Position& b = ring[(i + 1) % ring.size()];
        twice += a.longitude * b.latitude - b.longitude * a.latitude;
    }
    return std::abs(twice) / 2;
}

TEST(S57CellSummary, TellsIdentificationAndCoverage)
{
    const SmallCell cell;
    const auto summary = S57CellSummary::readBytes(*cell.writer.bytes());
    ASSERT_TRUE(summary) << summary.error().message;
    EXPECT_EQ(summary->edition, "1");
    EXPECT_EQ(summary->update, 0);
    EXPECT_EQ(summary->compiledScale, 12'000U);
    ASSERT_EQ(summary->coverage.size(), 1U);
    EXPECT_EQ(summary->coverage.front().size(), 4U);
    EXPECT_NEAR(area(summary->coverage.front()), 0.01, 1e-9); // 0.1 by 0.1 degrees
    EXPECT_NEAR(summary->bounds.left, 10.45, 1e-9);
    EXPECT_NEAR(summary->bounds.top, 59.55, 1e-9);
}

TEST(S57CellSummary, LeavesOutWhatIsStatedAsNotCovered)
{
    const S57CellWriter::Line west{{1, 1}, {2, 1}, {2, 2}, {1, 2}};
    const S57CellWriter::Line east{{2, 1}, {3, 1}, {3, 2}, {2, 2}};
    S57CellWriter cell({.name = "KV5TEST2"});
    cell.addArea("M_COVR", west, {{"CATCOV", "1"}});
    cell.addArea("M_COVR", east, {{"CATCOV", "2"}});
    const auto summary = S57CellSummary::readBytes(*cell.bytes());
    ASSERT_TRUE(summary);
    ASSERT_EQ(summary->coverage.size(), 1U);
    EXPECT_NEAR(summary->bounds.right, 2, 1e-9);
}

TEST(S57CellSummary, FollowsUpdatesAsTheLoaderDoes)
{
    const TemporaryFolder folder;
    SmallCell cell;
    ASSERT_TRUE(cell.writer.save(folder.path()));
    auto first = cell.writer.update("20260301");
    first.removeFeature(cell.buoy);
    ASSERT_TRUE(first.save(folder.path()));
    auto second = first.update("20260401"); // the coverage loses its eastern half
    second.removeFeature(cell.coverage);
    second.addArea("M_COVR", {{10.45, 59.45}, {10.5, 59.45}, {10.5, 59.55}, {10.45, 59.55}},
                   {{"CATCOV", "1"}});
    ASSERT_TRUE(second.save(folder.path()));
    const auto path = folder.path() / "KV5TEST1.000";

    const auto summary = S57CellSummary::read(path);
    ASSERT_TRUE(summary);
    EXPECT_EQ(summary->updatesApplied, 2);
    EXPECT_NEAR(summary->bounds.right, 10.5, 1e-6);

    std::filesystem::remove(folder.path() / "KV5TEST1.001"); // a gap ends the chain
    const auto base = S57CellSummary::read(path);
    ASSERT_TRUE(base);
    EXPECT_EQ(base->update, 0);
    EXPECT_NEAR(base->bounds.right, 10.55, 1e-6);
}

TEST(S57CellSummary, SurvivesAFileThatEndsAnywhere)
{
    const SmallCell cell;
    const std::string whole = *cell.writer.bytes();
    for (std::size_t length = 0; length < whole.size(); length += 7) {
        const auto summary = S57CellSummary::readBytes(std::string_view(whole).substr(0, length));
        EXPECT_TRUE(!summary || summary->compiledScale == 12'000 || summary->compiledScale == 0);
    }
}

TEST(S57CellSummary, AgreesWithTheLoadedCellOnRealCells)
{
    const auto data = realData("enc");
    if (!data)
        GTEST_SKIP() << "SKIPPED: KELVOX_DATA is not set";
    std::vector<Error> problems;
    std::size_t compared = 0;
    for (const auto& path : S57CellLoader::findCells({*data}, problems)) {
        const auto loaded = S57CellLoader::load(path);
        const auto summary = S57CellSummary::read(path);
        ASSERT_EQ(loaded.has_value(), summary.has_value()) << path;
        if (!loaded)
            continue;
        ++compared;
        const auto& parameters = loaded->cell->parameters();
        EXPECT_EQ(summary->edition, parameters.edition) << path;
        EXPECT_EQ(summary->updatesApplied, loaded->updatesApplied) << path;
        EXPECT_EQ(summary->compiledScale, parameters.compiledScale) << path;
        const Rect bounds = loaded->cell->bounds();
        EXPECT_EQ(bounds.isEmpty(), summary->bounds.isEmpty()) << path;
        if (bounds.isEmpty())
            continue;
        // The cell keeps places in single precision.
        EXPECT_NEAR(summary->bounds.left, bounds.left, 2e-5) << path;
        EXPECT_NEAR(summary->bounds.top, bounds.top, 2e-5) << path;
        EXPECT_NEAR(summary->bounds.right, bounds.right, 2e-5) << path;
        EXPECT_NEAR(summary->bounds.bottom, bounds.bottom, 2e-5) << path;
    }
    EXPECT_GT(compared, 5U);
}

} // namespace
} // namespace kelvox
