#include "demo/DemoCharts.h"

#include "base/File.h"
#include "demo/RawCell.h"
#include "s57/ISO8211Wrap.h"
#include "s57/S57CellLoader.h"
#include "s57/S57ObjectCatalogue.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace kelvox {
namespace {

constexpr std::array names{"KV1K0001", "KV3K0010", "KV4K0101", "KV5K1011", "KV5K1012"};

class DemoChartsTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_folder = std::make_unique<TemporaryFolder>();
        ASSERT_TRUE(DemoCharts::write(s_folder->path()));
    }
    static void TearDownTestSuite() { s_folder.reset(); }
    static std::filesystem::path file(const std::string& name, const char* extension = ".000")
    {
        return s_folder->path() / (name + extension);
    }
    static inline std::unique_ptr<TemporaryFolder> s_folder;
};

TEST_F(DemoChartsTest, GroundCoversEachChartOnceAndWholly)
{
    for (const char* name : names) {
        const auto cell = RawCell::read(file(name));
        std::int64_t ground = 0;
        std::int64_t coverage = 0;
        std::map<std::pair<int, std::uint32_t>, int> sides;
        std::set<std::pair<int, std::uint32_t>> truncated;
        for (const auto& feature : cell.features) {
            const std::int64_t area =
                feature.identifier.at("PRIM") == 3 ? cell.twiceArea(feature) : 0;
            if (feature.identifier.at("OBJL") == s57class::M_COVR)
                coverage = area;
            if (feature.identifier.at("GRUP") != 1)
                continue;
            ASSERT_GT(area, 0) << name << ": a ring runs the wrong way";
            ground += area;
            for (const auto& pointer : feature.spatials) {
                ++sides[pointer.name];
                if (pointer.usage == 3)
                    truncated.insert(pointer.name);
            }
        }
        EXPECT_EQ(ground, coverage) << name;
        // Every edge lies between two areas, or on the border and is said to be cut off there.
        for (const auto& [edge, count] : sides)
            EXPECT_EQ(count, truncated.count(edge) > 0 ? 1 : 2) << name << " edge " << edge.second;
        // The statement of the record counts is what stands in the file.
        std::map<int, std::int64_t> vectors;
        for (const auto& [key, vector] : cell.vectors)
            ++vectors[key.first];
        EXPECT_EQ(vectors[110], cell.structure.at("NOIN"));
        EXPECT_EQ(vectors[120], cell.structure.at("NOCN"));
        EXPECT_EQ(vectors[130], cell.structure.at("NOED"));
        EXPECT_EQ(static_cast<std::int64_t>(cell.features.size()),
                  cell.structure.at("NOGR") + cell.structure.at("NOMR"));
    }
}

TEST_F(DemoChartsTest, HarbourChartsMeetExactly)
{
    const auto west = RawCell::read(file("KV5K1011"));
    const auto east = RawCell::read(file("KV5K1012"));
    std::int64_t meridian = std::numeric_limits<std::int64_t>::max();
    for (const auto& [key, vector] : east.vectors)
        if (key.first == 120)
            meridian = std::min(meridian, vector.places.front().first);
    const auto nodesOn = [&](const RawCell& cell) {
        std::set<std::int64_t> nodes;
        for (const auto& [key, vector] : cell.vectors)
            if (key.first == 120 && vector.places.front().first == meridian)
                nodes.insert(vector.places.front().second);
        return nodes;
    };
    EXPECT_EQ(nodesOn(west), nodesOn(east));
    EXPECT_GT(nodesOn(west).size(), 10U);
}

/// Whether a place is on land, after the ground areas of a chart.
bool isLand(const RawCell& cell, RawCell::Place place)
{
    for (const auto& feature : cell.features) {
        if (feature.identifier.at("OBJL") != s57class::LNDARE || feature.identifier.at("PRIM") != 3)
            continue;
        bool inside = false;
        for (const auto& ring : cell.rings(feature))
            for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
                const auto [ax, ay] = ring[i];
                const auto [bx, by] = ring[i + 1];
                if ((ay > place.second) != (by > place.second)
                    && static_cast<double>(place.first - ax) < static_cast<double>(bx - ax)
                            * static_cast<double>(place.second - ay) / static_cast<double>(by - ay))
                    inside = !inside;
            }
        if (inside)
            return true;
    }
    return false;
}

TEST_F(DemoChartsTest, ChartsOfDifferentScaleShowTheSameCoast)
{
    const auto small = RawCell::read(file("KV3K0010"));
    const auto large = RawCell::read(file("KV4K0101"));
    // Within the approach chart: 47.6 N 27.4 W and ten kilometres around it.
    std::mt19937 random(7);
    int agree = 0;
    int land = 0;
    constexpr int tries = 300;
    for (int i = 0; i < tries; ++i) {
        const RawCell::Place place{-274'000'000 + static_cast<int>(random() % 2'600'000U)
                                       - 1'300'000,
                                   476'000'000 + static_cast<int>(random() % 1'300'000U) - 800'000};
        const bool shown = isLand(large, place);
        land += shown ? 1 : 0;
        agree += shown == isLand(small, place) ? 1 : 0;
    }
    EXPECT_GT(agree, tries * 97 / 100);
    EXPECT_GT(land, tries / 10);
    EXPECT_LT(land, tries * 9 / 10);
}

TEST_F(DemoChartsTest, ShowsWhatAChartIsMadeOf)
{
    std::map<std::string, std::set<int>> bandsByClass;
    for (const char* name : names)
        for (const auto& feature : RawCell::read(file(name)).features)
            bandsByClass[std::string(S57ObjectCatalogue::classAcronym(
                             static_cast<int>(feature.identifier.at("OBJL"))))]
                .insert(name[2] - '0');
    for (const char* acronym :
         {"DEPARE", "DEPCNT", "LNDARE", "COALNE", "SOUNDG", "M_COVR", "M_NSYS", "M_QUAL"})
        EXPECT_EQ(bandsByClass[acronym], (std::set<int>{1, 3, 4, 5})) << acronym;
    for (const char* acronym :
         {"ACHARE", "ACHBRT", "BCNCAR", "BCNISD", "BCNLAT", "BCNSAW", "BCNSPP", "BERTHS", "BOYCAR",
          "BOYISD", "BOYLAT", "BOYSAW", "BOYSPP", "BRIDGE", "BUAARE", "CBLARE", "CBLSUB", "CTNARE",
          "DAYMAR", "DRGARE", "FAIRWY", "FERYRT", "FOGSIG", "HRBFAC", "LAKARE", "LIGHTS", "LITFLT",
          "LNDELV", "LNDMRK", "LNDRGN", "MAGVAR", "MARCUL", "MORFAC", "NAVLNE", "OBSTRN", "PILBOP",
          "PIPSOL", "PONTON", "RECTRC", "RESARE", "RIVERS", "ROADWY", "RTPBCN", "SBDARE", "SEAARE",
          "SLCONS", "TOPMAR", "TSEZNE", "TSSBND", "TSSLPT", "TS_FEB", "UWTROC", "WATTUR", "WRECKS"})
        EXPECT_FALSE(bandsByClass[acronym].empty()) << acronym;
}

TEST_F(DemoChartsTest, TheUpdateChangesTheHarbour)
{
    const auto path = file(DemoCharts::updatedChart);
    const auto before = S57CellLoader::load(path, S57CellLoader::Updates::Leave);
    const auto after = S57CellLoader::load(path);
    ASSERT_TRUE(before && after);
    EXPECT_TRUE(after->notes.empty());
    EXPECT_EQ(after->updatesApplied, 1);
    const auto count = [](const S57CellLoader::Loaded& loaded, int objectCode) {
        const auto& all = loaded.cell->s57Features();
        return std::count_if(all.begin(), all.end(), [&](const auto& feature) {
            return feature->objectCode() == objectCode;
        });
    };
    const auto named = [](const S57CellLoader::Loaded& loaded, std::string_view name) {
        for (const auto& feature : loaded.cell->s57Features())
            if (feature->featureAttributeStringValue(s57attribute::OBJNAM) == name)
                return feature.get();
        return static_cast<S57Feature*>(nullptr);
    };
    // A buoy went with its topmark and its light; a wreck and a fog signal came.
    EXPECT_TRUE(named(*before, "Kelmouth 12"));
    EXPECT_FALSE(named(*after, "Kelmouth 12"));
    EXPECT_EQ(count(*after, s57class::TOPMAR), count(*before, s57class::TOPMAR) - 1);
    EXPECT_EQ(count(*after, s57class::LIGHTS), count(*before, s57class::LIGHTS) - 1);
    EXPECT_TRUE(named(*after, "Harvest Moon"));
    EXPECT_EQ(count(*after, s57class::FOGSIG), count(*before, s57class::FOGSIG) + 1);
    // The breakwater's light moved with its tower.
    const S57Feature* head = named(*after, "West Breakwater Head");
    ASSERT_TRUE(head && named(*before, "West Breakwater Head"));
    EXPECT_NE(head->s57Coordinate(), named(*before, "West Breakwater Head")->s57Coordinate());
    EXPECT_EQ(head->s57FeatureRecords().size(), 3U);
    EXPECT_EQ(named(*after, "Town Steps")->s57FeatureSpatials().size(), 2U);
    // Two contours were surveyed anew: one has other places, one has a place more.
    int moved = 0;
    int grown = 0;
    for (const auto& vector : before->cell->s57Vectors()) {
        const S57Vector* now = after->cell->s57VectorForKey(vector.recordKey());
        ASSERT_TRUE(now);
        const auto was = vector.s57Coordinates();
        const auto is = now->s57Coordinates();
        if (vector.recordName() != s57RecordName::edge)
            continue;
        grown += is.size() == was.size() + 1 ? 1 : 0;
        moved += is.size() == was.size() && !std::equal(is.begin(), is.end(), was.begin()) ? 1 : 0;
    }
    EXPECT_EQ(moved, 1);
    EXPECT_EQ(grown, 1);
}

TEST_F(DemoChartsTest, CatalogueListsEveryFile)
{
    ISO8211Wrap::Catalog catalog;
    ASSERT_TRUE(ISO8211Wrap::load(file("CATALOG", ".031"), catalog));
    EXPECT_EQ(catalog.size(), names.size() + 1);
}

TEST_F(DemoChartsTest, AreTheSameBytesEverywhere)
{
    // Changes whenever the charts do, and must not with the compiler, its options or the machine.
    constexpr std::uint64_t recorded = 0xF3B5DE63765D3F90;
    std::uint64_t digest = 0xCBF29CE484222325U;
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(s_folder->path()))
        files.insert(entry.path());
    for (const auto& path : files) {
        const auto bytes = readFile(path);
        ASSERT_TRUE(bytes) << path;
        if (path.filename() != "CATALOG.031")
            for (const char c : *bytes)
                digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    EXPECT_EQ(digest, recorded) << std::hex << "0x" << digest;
}

} // namespace
} // namespace kelvox
