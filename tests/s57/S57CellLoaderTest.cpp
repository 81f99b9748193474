#include "s57/S57CellLoader.h"

#include "s57/S57Object.h"
#include "support/SmallCells.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

namespace kelvox {

namespace {
const S57Feature* featureOf(const S57ChartItems& cell, std::uint32_t id)
{
    return cell.s57FeatureForKey(s57RecordKey(100, id));
}
} // namespace

TEST(S57CellLoader, BuildsDisplayObjects)
{
    SmallCell small;
    small.writer.addPoint("DAYMAR", {10.525, 59.505}, {{"INFORM", "painted"}, {"NATSUR", "4,9"}});
    const TemporaryFolder folder;
    ASSERT_TRUE(small.writer.save(folder.path()));
    const auto loaded = S57CellLoader::load(folder.path() / "KV5TEST1.000");
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->notes.empty());
    const S57ChartItems& cell = *loaded->cell;
    ASSERT_EQ(cell.s57Features().size(), 10U);
    ASSERT_EQ(cell.s57Objects().size(), 1U); // the named ones
    EXPECT_EQ(cell.s57Objects()[0]->name(), "Grønn");
    EXPECT_EQ(cell.s57CatalogRecord()->path.filename(), "KV5TEST1.000");

    const auto object = [&](std::uint32_t id) -> const S57Object& {
        return *featureOf(cell, id)->s57Object();
    };
    EXPECT_EQ(object(small.buoy).colour(), (std::vector{2, 6}));
    EXPECT_EQ(object(small.buoy).readable(s57attribute::COLOUR), "black, yellow");
    EXPECT_EQ(object(small.buoy).scale(), S57Object::anyScale);
    EXPECT_EQ(object(small.light).scale(), 49'999);
    EXPECT_EQ(object(small.light).sectr2(), 90.5);
    EXPECT_EQ(object(small.light).valsou(), std::nullopt);
    // The topmark stands where the buoy stands; the light is related to a beacon elsewhere.
    EXPECT_EQ(object(small.topmark).parent(), featureOf(cell, small.buoy));
    EXPECT_EQ(object(small.light).parent(), featureOf(cell, small.beacon));
    EXPECT_EQ(object(small.buoy).parent(), nullptr);
    EXPECT_TRUE(featureOf(cell, small.buoy)->isNavAid());
    EXPECT_FALSE(featureOf(cell, small.deep)->isNavAid());
    const auto place = featureOf(cell, small.buoy)->s57Coordinate();
    ASSERT_TRUE(place);
    EXPECT_EQ(*place, (S57Coordinate{59.5F, 10.48F}));
    EXPECT_FALSE(featureOf(cell, small.deep)->s57Coordinate());
}

TEST(S57CellLoader, FollowsTheChainOfUpdates)
{
    SmallCell small;
    auto first = small.writer.update("20260301");
    first.removeFeature(small.buoy);
    first.changeAttributes(small.deep, {{"DRVAL1", "11"}, {"DRVAL2", ""}});
    auto second = first.update("20260401");
    second.addPoint("WRECKS", {10.46, 59.46}, {{"OBJNAM", "Late"}});

    const TemporaryFolder folder;
    const auto path = folder.path() / "KV5TEST1.000";
    const auto applied = [&] {
        const auto loaded = S57CellLoader::load(path);
        return loaded ? std::make_pair(loaded->updatesApplied, loaded->notes.size())
                      : std::make_pair(-1, std::size_t{0});
    };
    EXPECT_EQ(applied().first, -1); // no such file
    ASSERT_TRUE(small.writer.save(folder.path()));
    ASSERT_TRUE(second.save(folder.path()));
    EXPECT_EQ(applied(), std::make_pair(0, std::size_t{0})); // .001 is missing: a gap
    ASSERT_TRUE(first.save(folder.path()));
    const auto loaded = S57CellLoader::load(path);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->updatesApplied, 2);
    EXPECT_EQ(loaded->cell->parameters().update, "2");
    EXPECT_EQ(featureOf(*loaded->cell, small.buoy), nullptr);
    const auto* deep = featureOf(*loaded->cell, small.deep)->s57Object();
    EXPECT_EQ(deep->drval1(), 11);
    EXPECT_EQ(deep->drval2(), std::nullopt);
    EXPECT_EQ(loaded->cell->s57Objects().at(0)->name(), "Late");
    EXPECT_EQ(S57CellLoader::load(path, S57CellLoader::Updates::Leave)->updatesApplied, 0);

    // An update of another edition ends the chain with a note.
    SmallCell other;
    auto identification = other.writer.identification();
    identification.edition = 2;
    auto foreign = S57CellWriter(identification).update("20260301");
    ASSERT_TRUE(foreign.save(folder.path()));
    EXPECT_EQ(applied(), std::make_pair(0, std::size_t{1}));
    // So does one that is broken off; what stands before the break is applied.
    const auto bytes = *first.bytes();
    std::ofstream(folder.path() / "KV5TEST1.001", std::ios::binary)
        << bytes.substr(0, bytes.size() - 9);
    EXPECT_EQ(applied(), std::make_pair(1, std::size_t{1}));
    std::ofstream(folder.path() / "KV5TEST1.001") << "no cell";
    EXPECT_EQ(applied(), std::make_pair(0, std::size_t{1}));
}

TEST(S57CellLoader, KeepsWhatStandsBeforeABreakWhereverItIs)
{
    const auto whole = *SmallCell().writer.bytes();
    std::size_t before = 0;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto loaded = S57CellLoader::loadBytes({whole.data(), length});
        if (!loaded)
            continue;
        const std::size_t features = loaded->cell->s57Features().size();
        ASSERT_GE(features, before) << length;
        before = features;
    }
    EXPECT_GE(before, 7U);
}

TEST(S57CellLoader, FindsCells)
{
    const TemporaryFolder folder;
    const auto sub = folder.path() / "ENC_ROOT" / "A";
    ASSERT_TRUE(SmallCell().writer.save(sub));
    ASSERT_TRUE(SmallCell().writer.update("20260301").save(sub));
    std::ofstream(folder.path() / "README.TXT") << "text";
    std::vector<Error> problems;
    const auto cell = sub / "KV5TEST1.000";
    using Paths = std::vector<std::filesystem::path>;
    EXPECT_EQ(S57CellLoader::findCells({folder.path(), cell}, problems), Paths{cell});
    EXPECT_TRUE(problems.empty());
    // What was named is kept, so that opening it can say what is wrong with it.
    EXPECT_EQ(S57CellLoader::findCells({"/nowhere"}, problems), Paths{"/nowhere"});
    std::ofstream(folder.path() / "CATALOG.031") << "broken";
    EXPECT_TRUE(S57CellLoader::findCells({folder.path() / "CATALOG.031"}, problems).empty());
    EXPECT_EQ(problems.size(), 1U);
}

} // namespace kelvox
