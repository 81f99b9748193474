#include "s57/S57CellWriter.h"

#include "demo/RawCell.h"
#include "s57/S57CellLoader.h"
#include "s57/S57Object.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {
namespace {

using Line = S57CellWriter::Line;
constexpr int objectName = 116;

const Line westBox{{10, 50}, {10.5, 50}, {10.5, 50.5}, {10, 50.5}};
const Line eastBox{{10.5, 50}, {11, 50}, {11, 50.5}, {10.5, 50.5}};

S57CellLoader::Loaded load(const std::filesystem::path& path)
{
    auto loaded = S57CellLoader::load(path);
    EXPECT_TRUE(loaded.has_value());
    EXPECT_TRUE(loaded->notes.empty()) << loaded->notes.front().message;
    return *std::move(loaded);
}

const S57Feature& only(const S57ChartItems& cell, int objectCode)
{
    const S57Feature* found = nullptr;
    for (const auto& feature : cell.s57Features())
        if (feature->objectCode() == objectCode) {
            EXPECT_EQ(found, nullptr) << "more than one of class " << objectCode;
            found = feature.get();
        }
    EXPECT_NE(found, nullptr) << "none of class " << objectCode;
    return *found;
}

TEST(S57CellWriter, LoadsBackAsItWasWritten)
{
    const TemporaryFolder folder;
    S57CellWriter cell({.name = "KV4TEST1",
                        .edition = 3,
                        .issueDate = "20260102",
                        .usageBand = 4,
                        .compiledScale = 45'000});
    cell.addArea("DEPARE", westBox, {{"DRVAL1", "5"}, {"DRVAL2", "10"}},
                 {{{10.1, 50.1}, {10.2, 50.1}, {10.2, 50.2}}});
    cell.addLine("COALNE", {{10.1, 50.1}, {10.2, 50.1}, {10.2, 50.2}, {10.1, 50.1}});
    const auto buoy = cell.addPoint("BOYCAR", {-1.456789, 50.3456789},
                                    {{"OBJNAM", "Skjærgård"}, {"CATCAM", "1"}});
    cell.relate(buoy, cell.addPoint("TOPMAR", {-1.456789, 50.3456789}, {{"TOPSHP", "13"}}));
    cell.addSoundings({{{10.3, 50.3}, 12.5}, {{10.31, 50.31}, -1.3}});
    ASSERT_TRUE(cell.save(folder.path()));

    const auto loaded = load(folder.path() / "KV4TEST1.000");
    const auto& parameters = loaded.cell->parameters();
    EXPECT_EQ(parameters.edition, "3");
    EXPECT_EQ(parameters.update, "0");
    EXPECT_EQ(parameters.issueDate, "20260102");
    EXPECT_EQ(parameters.compiledScale, 45'000U);
    EXPECT_EQ(parameters.coordinateMultiplier, 10'000'000U);
    EXPECT_EQ(parameters.soundingMultiplier, 10U);
    EXPECT_EQ(parameters.dataStructure, 2U);
    EXPECT_TRUE(parameters.latLon);

    const S57Feature& mark = only(*loaded.cell, 14);
    EXPECT_EQ(mark.featureAttributeStringValue(objectName), "Skjærgård");
    ASSERT_TRUE(mark.s57Coordinate());
    EXPECT_FLOAT_EQ(mark.s57Coordinate()->latitude, 50.3456789F);
    EXPECT_FLOAT_EQ(mark.s57Coordinate()->longitude, -1.456789F);
    EXPECT_EQ(only(*loaded.cell, 144).s57Object()->parent(), &mark);

    // The hole is the coastline's edge, walked counter-clockwise (the line as given).
    const S57Feature& water = only(*loaded.cell, 42);
    const S57Feature& coast = only(*loaded.cell, 30);
    ASSERT_EQ(water.s57FeatureSpatials().size(), 2U);
    EXPECT_EQ(water.s57FeatureSpatials()[1].recordKey(), coast.s57FeatureSpatials()[0].recordKey());
    EXPECT_EQ(water.s57FeatureSpatials()[1].orient, coast.s57FeatureSpatials()[0].orient);
    EXPECT_EQ(water.s57FeatureSpatials()[1].usage, 2);

    const auto& soundings = only(*loaded.cell, 129);
    const S57Vector* node =
        loaded.cell->s57VectorForKey(soundings.s57FeatureSpatials().front().recordKey());
    ASSERT_TRUE(node && node->hasDepth());
    EXPECT_EQ(node->s57Depth(0).depth, 12.5F);
    EXPECT_EQ(node->s57Depth(1).depth, -1.3F);
}

TEST(S57CellWriter, DescribesItsFieldsAsTheStandardListsThem)
{
    S57CellWriter cell({});
    cell.addPoint("LNDRGN", {10, 50}, {{"OBJNAM", "Ö"}, {"NOBJNM", "Ø"}});
    const auto bytes = cell.bytes();
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->substr(5, 7), "3LE1 09");
    EXPECT_EQ(bytes->substr(17, 7), " ! 3404");
    // From S-57 edition 3.1, part 3, clause 7 and annex A: controls, name, labels, formats.
    for (const char* description :
         {"0500;&   ISO 8211 Record Identifier\x1f\x1f(b12)\x1e",
          "1600;&   Feature record identifier field\x1fRCNM!RCID!PRIM!GRUP!OBJL!RVER!RUIN\x1f"
          "(b11,b14,2b11,2b12,b11)\x1e",
          "2600;&-A Feature record attribute field\x1f*ATTL!ATVL\x1f(b12,A)\x1e",
          "2600;&   Vector record pointer field\x1f*NAME!ORNT!USAG!TOPI!MASK\x1f(B(40),4b11)\x1e",
          "1600;&   Coordinate control field\x1f"
          "CCUI!CCIX!CCNC\x1f(b11,2b12)\x1e",
          "2500;&   2-D coordinate field\x1f*YCOO!XCOO\x1f(2b24)\x1e"})
        EXPECT_NE(bytes->find(description), std::string::npos) << description;
    // Latin-1: one byte a letter; national text stands in its own field.
    EXPECT_NE(bytes->find("ATTF"), std::string::npos);
    EXPECT_NE(bytes->find(std::string("\x74\x00\xd6\x1f\x1e", 5)), std::string::npos);
    EXPECT_NE(bytes->find(std::string("\x2d\x01\xd8\x1f\x1e", 5)), std::string::npos);
}

TEST(S57CellWriter, NeighboursShareTheirEdgesAndNodes)
{
    const TemporaryFolder folder;
    S57CellWriter cell({});
    const Line between{{10.5, 50}, {10.5, 50.5}};
    const auto divide = cell.edges(between);
    cell.addLine("DEPCNT", between);
    cell.addLine("DEPCNT", {between.rbegin(), between.rend()});
    for (const Line& rest : {Line{{10.5, 50.5}, {10, 50.5}, {10, 50}, {10.5, 50}},
                             Line{{10.5, 50}, {11, 50}, {11, 50.5}, {10.5, 50.5}}})
        cell.addLine("DEPCNT", rest);
    ASSERT_TRUE(cell.save(folder.path()));
    const auto raw = RawCell::read(folder.path() / "KV5TEST0.000");
    EXPECT_EQ(raw.structure.at("NOED"), 3);
    EXPECT_EQ(raw.structure.at("NOCN"), 2);
    EXPECT_EQ(raw.structure.at("NOGR"), 4);
    EXPECT_EQ(raw.vectors.size(), 5U);
    EXPECT_EQ(raw.walk(raw.features[1].spatials[0]).front().second, 505'000'000);
    EXPECT_EQ(raw.walk(raw.features[0].spatials[0]).front().second, 500'000'000);
}

TEST(S57CellWriter, SplitsWhatOneRecordCannotHold)
{
    const TemporaryFolder folder;
    S57CellWriter cell({});
    Line line;
    std::vector<S57CellWriter::Sounding> soundings;
    for (int i = 0; i < 30'000; ++i) {
        line.push_back({10 + i * 1e-5, 50 + (i % 7) * 1e-4});
        soundings.push_back({line.back(), i % 100 / 10.0});
    }
    cell.addLine("COALNE", line);
    cell.addSoundings(soundings);
    ASSERT_TRUE(cell.save(folder.path()));
    const auto raw = RawCell::read(folder.path() / "KV5TEST0.000");
    std::vector<RawCell::Place> joined;
    for (const auto& pointer : raw.features.front().spatials) {
        const auto places = raw.walk(pointer);
        joined.insert(joined.end(), places.begin() + (joined.empty() ? 0 : 1), places.end());
    }
    ASSERT_EQ(joined.size(), line.size());
    for (std::size_t i = 0; i < line.size(); ++i)
        ASSERT_EQ(joined[i].first, std::llround(line[i].longitude * 1e7)) << i;
    std::size_t read = 0;
    for (const auto& [name, vector] : raw.vectors)
        if (name.first == 110)
            read += vector.places.size();
    EXPECT_EQ(read, soundings.size());
}

TEST(S57CellWriter, RefusesMistakes)
{
    using Make = void (*)(S57CellWriter&);
    struct Case {
        const char* why;
        Make make;
    };
    for (const Case& one :
         {Case{"no such class",
               [](auto& cell) {
                   cell.addPoint("BOYXXX", {10, 50});
               }},
          Case{"no such attribute",
               [](auto& cell) {
                   cell.addPoint("BOYCAR", {10, 50}, {{"COLOR", "3"}});
               }},
          Case{"Greek is not in Latin-1",
               [](auto& cell) {
                   cell.addPoint("LNDRGN", {10, 50}, {{"OBJNAM", "Σ"}});
               }},
          Case{"a terminator inside a value",
               [](auto& cell) {
                   cell.addPoint("LNDRGN", {10, 50}, {{"OBJNAM", "a\x1f"}});
               }},
          Case{"cut off inside a letter",
               [](auto& cell) {
                   cell.addPoint("LNDRGN", {10, 50}, {{"OBJNAM", "a\xc3"}});
               }},
          Case{"a line of one place",
               [](auto& cell) {
                   cell.addLine("COALNE", {{10, 50}, {10, 50}});
               }},
          Case{"a ring of two",
               [](auto& cell) {
                   cell.addArea("LNDARE", {{10, 50}, {11, 50}});
               }},
          Case{"change in a base cell",
               [](auto& cell) {
                   cell.removeFeature(cell.addPoint("BOYCAR", {10, 50}));
               }},
          Case{"relation of a stranger", [](auto& cell) { cell.relate(7, 8); }}}) {
        S57CellWriter cell({});
        cell.addPoint("LNDELV", {10, 50});
        EXPECT_TRUE(cell.bytes());
        one.make(cell);
        EXPECT_FALSE(cell.bytes()) << one.why;
    }
}

TEST(S57CellWriter, UpdatesSayWhatIsMeant)
{
    const TemporaryFolder folder;
    S57CellWriter cell({.name = "KV5TEST2"});
    const auto buoy = cell.addPoint("BOYCAR", {10.1, 50.1}, {{"CATCAM", "1"}});
    const auto rock = cell.addPoint("UWTROC", {10.2, 50.2}, {{"WATLEV", "3"}});
    const Line contour{{10.3, 50}, {10.3, 50.1}, {10.3, 50.2}, {10.3, 50.3}};
    const auto line = cell.addLine("DEPCNT", contour, {{"VALDCO", "5"}});
    ASSERT_TRUE(cell.save(folder.path()));

    auto first = cell.update("20260201");
    first.removeFeature(rock);
    first.changeAttributes(buoy, {{"CATCAM", "2"}, {"OBJNAM", "East"}});
    first.changePlaces(first.isolatedNode({10.1, 50.1}), {3, 1}, {{10.15, 50.15}});
    first.changePlaces(first.edges(contour).front(), {3, 2}, {{10.35, 50.2}});
    const auto topmark = first.addPoint("TOPMAR", {10.4, 50.4}, {{"TOPSHP", "11"}});
    first.changeRelations(buoy, {1, 1}, {topmark});
    ASSERT_TRUE(first.save(folder.path()));

    auto second = first.update("20260301");
    second.changeSpatials(line, {1, 2}, second.edges({{10.3, 50.3}, {10.3, 50.4}}));
    second.changePlaces(second.edges(contour).front(), {1, 1}, {{10.25, 50.05}});
    ASSERT_TRUE(second.save(folder.path()));

    const auto loaded = load(folder.path() / "KV5TEST2.000");
    EXPECT_EQ(loaded.updatesApplied, 2);
    EXPECT_EQ(loaded.cell->parameters().update, "2");
    EXPECT_EQ(loaded.cell->s57Features().size(), 3U);
    const S57Feature& mark = only(*loaded.cell, 14);
    EXPECT_EQ(mark.featureAttributeStringValue(13), "2");
    EXPECT_EQ(mark.featureAttributeStringValue(objectName), "East");
    EXPECT_FLOAT_EQ(mark.s57Coordinate()->longitude, 10.15F);
    EXPECT_EQ(only(*loaded.cell, 144).s57Object()->parent(), &mark);
    const S57Feature& depth = only(*loaded.cell, 43);
    ASSERT_EQ(depth.s57FeatureSpatials().size(), 2U);
    const S57Vector* edge =
        loaded.cell->s57VectorForKey(depth.s57FeatureSpatials().front().recordKey());
    const std::vector<S57Coordinate> expected{{50.05F, 10.25F}, {50.1F, 10.3F}, {50.2F, 10.35F}};
    EXPECT_TRUE(std::equal(edge->s57Coordinates().begin(), edge->s57Coordinates().end(),
                           expected.begin(), expected.end()));

    // A record's version counts its changes: readers refuse an update that skips one.
    const auto raw = RawCell::read(folder.path() / "KV5TEST2.002");
    ASSERT_EQ(raw.features.size(), 1U);
    EXPECT_EQ(raw.features[0].identifier.at("RVER"), 2);
    EXPECT_EQ(raw.features[0].identifier.at("RUIN"), 3);
    const auto before = RawCell::read(folder.path() / "KV5TEST2.001");
    EXPECT_EQ(before.structure.at("NOGR"), 3);
    EXPECT_EQ(before.structure.at("NOIN"), 2);
    EXPECT_EQ(before.structure.at("NOED"), 1);
}

} // namespace
} // namespace kelvox
