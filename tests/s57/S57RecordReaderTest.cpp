#include "s57/ISO8211Wrap.h"
#include "s57/S57Object.h"
#include "support/RawIso.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace kelvox {

namespace {
using raw::littleEndian;

const std::string head = raw::definitions({
    {"0001", raw::description("05", "", "(b12)")},
    {"DSID", raw::description("16", "EDTN!UPDN!ISDT!PROF!PRSP", "(2A,A(8),2b11)")},
    {"DSPM", raw::description("16", "HDAT!VDAT!SDAT!CSCL!COUN!COMF!SOMF", "(3b11,b14,b11,2b14)")},
    {"DSSI", raw::description("16", "DSTR", "(b11)")},
    {"FRID",
     raw::description("16", "RCNM!RCID!PRIM!GRUP!OBJL!RVER!RUIN", "(b11,b14,2b11,2b12,b11)")},
    {"FOID", raw::description("16", "AGEN!FIDN!FIDS", "(b12,b14,b12)")},
    {"ATTF", raw::description("26", "*ATTL!ATVL", "(b12,A)")},
    {"NATF", raw::description("26", "*ATTL!ATVL", "(b12,A)")},
    {"FSPT", raw::description("26", "*NAME!ORNT!USAG!MASK", "(B(40),3b11)")},
    {"VRID", raw::description("16", "RCNM!RCID!RVER!RUIN", "(b11,b14,b12,b11)")},
    {"SG2D", raw::description("25", "*YCOO!XCOO", "(2b24)")},
    {"SG3D", raw::description("25", "*YCOO!XCOO!VE3D", "(3b24)")},
    {"ODDS", raw::description("16", "NAME", "(A)")},
});

std::string number(int n)
{
    return littleEndian(n, 2) + '\x1e';
}

std::string parameters(std::uint32_t comf, int coun = 1, std::uint32_t somf = 10)
{
    return raw::record({{"0001", number(2)},
                        {"DSPM",
                         "\2\3\x17"s + littleEndian(12'000, 4) + static_cast<char>(coun)
                             + littleEndian(comf, 4) + littleEndian(somf, 4) + '\x1e'}});
}

std::string vrid(int name, int id, int instruction = 1)
{
    return littleEndian(name, 1) + littleEndian(id, 4) + littleEndian(1, 2)
        + littleEndian(instruction, 1) + '\x1e';
}

std::string frid(int id, int code, int instruction = 1, int primitive = 1)
{
    return "\x64" + littleEndian(id, 4) + static_cast<char>(primitive) + '\2'
        + littleEndian(code, 2) + littleEndian(1, 2) + static_cast<char>(instruction) + '\x1e';
}

std::string foid(int id)
{
    return littleEndian(550, 2) + littleEndian(id, 4) + littleEndian(7, 2) + '\x1e';
}

std::string coordinates(std::initializer_list<long long> numbers)
{
    std::string bytes;
    for (const long long one : numbers)
        bytes += littleEndian(one, 4);
    return bytes + '\x1e';
}

void load(S57ChartItems& cell, const std::string& records)
{
    const auto note = ISO8211Wrap::load(std::make_shared<S57CatalogRecord>(),
                                        std::span<const char>(head + records), cell);
    ASSERT_TRUE(note);
    EXPECT_FALSE(note->stoppedBy);
}

const S57Vector* vector(const S57ChartItems& cell, int name, std::uint32_t id)
{
    return cell.s57VectorForKey(s57RecordKey(name, id));
}
} // namespace

TEST(S57RecordReader, TakesTheDatasetParameters)
{
    S57ChartItems cell;
    load(cell,
         raw::record({{"0001", number(1)},
                      {"DSID",
                       "2\x1f"
                       "5\x1f"
                       "20260131\1\2\x1e"},
                      {"DSSI", "\2\x1e"}})
             + parameters(10'000'000));
    const auto& p = cell.parameters();
    EXPECT_EQ(p.edition + "/" + p.update + "/" + p.issueDate, "2/5/20260131");
    EXPECT_EQ(p.profile, 1U);
    EXPECT_EQ(p.specification, 2U);
    EXPECT_EQ(p.dataStructure, 2U);
    EXPECT_EQ(p.horizontalDatum, 2U);
    EXPECT_EQ(p.verticalDatum, 3U);
    EXPECT_EQ(p.soundingDatum, 23U);
    EXPECT_EQ(p.compiledScale, 12'000U);
    EXPECT_EQ(p.coordinateMultiplier, 10'000'000U);
    EXPECT_EQ(p.soundingMultiplier, 10U);
    EXPECT_TRUE(p.latLon);
    load(cell, parameters(10'000'000, 2)); // projected co-ordinates
    EXPECT_FALSE(p.latLon);
    EXPECT_EQ(p.edition, "2"); // what a file does not say stays
}

TEST(S57RecordReader, ScalesInSinglePrecision)
{
    S57ChartItems cell;
    load(cell,
         parameters(10'000'000)
             + raw::record({{"0001", number(3)},
                            {"VRID", vrid(120, 1)},
                            {"SG2D", coordinates({503456789, -14567890})}})
             + raw::record({{"0001", number(4)},
                            {"VRID", vrid(110, 1)},
                            {"SG3D", coordinates({503456789, -14567890, 125, 1, 2, -3})}}));
    const auto* node = vector(cell, 120, 1);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->s57Coordinates()[0], (S57Coordinate{50.3456789F, -1.456789F}));
    EXPECT_FALSE(node->hasDepth());
    EXPECT_EQ(node->key(), "120 1");
    const auto* soundings = vector(cell, 110, 1);
    ASSERT_NE(soundings, nullptr);
    EXPECT_TRUE(soundings->hasDepth());
    ASSERT_EQ(soundings->s57Coordinates().size(), 2U);
    EXPECT_EQ(soundings->s57Depth(0).depth, 12.5F);
    EXPECT_EQ(soundings->s57Depth(1).depth, -0.3F);
}

TEST(S57RecordReader, TakesCoordinatesOfAnyFormat)
{
    // Text, another order and an unknown subfield between them.
    const std::string textual = raw::definitions({
        {"0001", raw::description("05", "", "(b12)")},
        {"DSPM", raw::description("16", "COMF!SOMF", "(2b14)")},
        {"VRID", raw::description("16", "RCNM!RCID!RUIN", "(b11,b14,b11)")},
        {"SG3D", raw::description("25", "*YCOO!MORE!XCOO!VE3D", "(I(4),A,2I)")},
        {"SG2D", raw::description("25", "*YCOO", "(b24)")},
    });
    S57ChartItems cell;
    const auto records = raw::record({{"DSPM", littleEndian(10, 4) + littleEndian(2, 4) + '\x1e'}})
        + raw::record({{"0001", number(1)},
                       {"VRID", "\x6e" + littleEndian(1, 4) + "\1\x1e"},
                       {"SG3D",
                        "-015x\x1f"
                        "25\x1f"
                        "7\x1f"
                        "0500\x1f"
                        "5\x1f"
                        "-1\x1f\x1e"}})
        + raw::record({{"0001", number(2)},
                       {"VRID", "\x6e" + littleEndian(2, 4) + "\1\x1e"},
                       {"SG2D", coordinates({1, 2})}});
    ASSERT_TRUE(ISO8211Wrap::load(nullptr, std::span<const char>(textual + records), cell));
    const auto* soundings = vector(cell, 110, 1);
    ASSERT_NE(soundings, nullptr);
    ASSERT_EQ(soundings->s57Coordinates().size(), 2U);
    EXPECT_EQ(soundings->s57Depth(0), (S57Depth{{-1.5F, 2.5F}, 3.5F}));
    EXPECT_EQ(soundings->s57Depth(1), (S57Depth{{50, 0.5F}, -0.5F}));
    // A latitude alone makes no place.
    ASSERT_NE(vector(cell, 110, 2), nullptr);
    EXPECT_TRUE(vector(cell, 110, 2)->s57Coordinates().empty());
}

TEST(S57RecordReader, FillsFeatures)
{
    S57ChartItems cell;
    load(cell,
         raw::record(
             {{"0001", number(1)},
              {"FRID", frid(7, 86)},
              {"FOID", foid(99)},
              {"ODDS", "what\x1f\x1e"},
              {"ATTF", littleEndian(116, 2) + "Caf\xE9\x1f" + littleEndian(179, 2) + "\x1f\x1e"},
              {"NATF", littleEndian(301, 2) + "left out\x1f\x1e"},
              {"FSPT", "\x6e"s + littleEndian(3, 4) + "\xff\xff\xff\x1e"}})
             + raw::record({{"0001", number(2)}, {"FRID", frid(8, 24)}}) // a class not shown
             + raw::record({{"0001", number(3)}})
             + raw::record({{"0001", number(4)}, {"FRID", frid(9, 12345)}, {"FOID", foid(1)}}));
    ASSERT_EQ(cell.s57Features().size(), 1U);
    const S57Feature& feature = *cell.s57Features()[0];
    EXPECT_EQ(feature.key(), "100 7");
    EXPECT_EQ(feature.identificationKey(), "99 7");
    EXPECT_EQ(cell.s57FeatureForIdentification(99, 7), &feature);
    EXPECT_EQ(feature.agency(), 550);
    EXPECT_EQ(feature.geometry(), S57Feature::point);
    EXPECT_EQ(feature.group(), 2);
    EXPECT_EQ(feature.description(), "Obstruction");
    EXPECT_EQ(feature.s57FeatureAttributeCount(), 2U);
    EXPECT_EQ(feature.featureAttributeStringValue(116), "Caf\u00e9");
    EXPECT_EQ(feature.featureAttributeFloatValue(179), std::nullopt); // there, but unknown
    EXPECT_NE(feature.featureAttributeCode(179), nullptr);
    EXPECT_TRUE(feature.hasName());
    const auto& spatial = feature.s57FeatureSpatials()[0];
    EXPECT_EQ(spatial.key(), "110 3");
    EXPECT_EQ(spatial.orient + spatial.usage + spatial.mask, 3 * 255);
}

TEST(S57RecordReader, AppliesUpdatesInPlace)
{
    S57ChartItems cell;
    const std::string base = parameters(10'000'000)
        + raw::record({{"0001", number(1)}, {"VRID", vrid(110, 1)}, {"SG2D", coordinates({1, 2})}})
        + raw::record({{"0001", number(2)}, {"VRID", vrid(110, 2)}, {"SG2D", coordinates({3, 4})}})
        + raw::record({{"0001", number(3)},
                       {"FRID", frid(7, 86)},
                       {"FOID", foid(7)},
                       {"ATTF",
                        littleEndian(116, 2) + "Old\x1f" + littleEndian(179, 2) + "5\x1f\x1e"}})
        + raw::record({{"0001", number(4)}, {"FRID", frid(8, 86)}, {"FOID", foid(8)}});
    load(cell, base);
    load(cell,
         raw::record({{"0001", number(1)}, {"VRID", vrid(110, 1, 2)}}) // delete
             + raw::record(
                 {{"0001", number(2)}, {"VRID", vrid(110, 2, 3)}, {"SG2D", coordinates({5, 6})}})
             + raw::record(
                 {{"0001", number(3)}, {"VRID", vrid(110, 9, 3)}, {"SG2D", coordinates({5, 6})}})
             + raw::record({{"0001", number(4)},
                            {"FRID", frid(7, 86, 3)},
                            {"FOID", foid(7)},
                            {"ATTF",
                             littleEndian(116, 2) + "New\x1f" + littleEndian(179, 2) + "\x7f\x1f"
                                 + littleEndian(187, 2) + "3\x1f\x1e"}})
             + raw::record({{"0001", number(5)}, {"FRID", frid(8, 86, 2)}})
             + raw::record({{"0001", number(6)}, {"FRID", frid(77, 86, 3)}, {"FOID", foid(77)}})
             + raw::record({{"0001", number(7)}, {"FRID", frid(78, 86, 2)}}));
    cell.assemble();
    ASSERT_NE(vector(cell, 110, 1), nullptr); // a deleted one stays stored
    EXPECT_EQ(vector(cell, 110, 2)->s57Coordinates().size(), 2U);
    EXPECT_EQ(vector(cell, 110, 9), nullptr);
    EXPECT_EQ(cell.s57VectorCount(), 2U);
    ASSERT_EQ(cell.s57Features().size(), 1U);
    const S57Feature& feature = *cell.s57Features()[0];
    EXPECT_EQ(feature.recordUpdate(), 3U);
    EXPECT_EQ(feature.featureAttributeStringValue(116), "New");
    EXPECT_EQ(feature.featureAttributeCode(179), nullptr);
    EXPECT_EQ(feature.s57Object()->watlev(), 3);
    EXPECT_EQ(cell.s57FeatureForIdentification(8, 7), nullptr);
    EXPECT_EQ(cell.s57Objects().size(), 1U);
    load(cell, raw::record({{"0001", number(1)}, {"FRID", frid(7, 86, 2)}}));
    cell.assemble();
    EXPECT_TRUE(cell.s57Features().empty());
    EXPECT_TRUE(cell.s57Objects().empty()); // and its display object with it
}

TEST(S57RecordReader, BoundsTheAttributesOfAFeature)
{
    std::string attributes;
    for (int i = 0; i < 20'000; ++i)
        attributes += littleEndian(i, 2) + "\x1f";
    std::string record =
        raw::record({{"0001", number(1)}, {"FRID", frid(1, 86)}, {"FOID", foid(1)}});
    S57ChartItems cell;
    load(cell, record);
    // A longer record than five digits hold says 0 for its length.
    const std::string bytes = "00000 D     00000   5504"
                              "0001"
                              "00003"
                              "00000"
                              "FRID"
                              "00013"
                              "00003"
                              "ATTF"
                              "60001"
                              "00016\x1e"
        + number(2) + frid(1, 86, 3) + attributes + '\x1e';
    load(cell, bytes);
    EXPECT_EQ(cell.s57Features()[0]->s57FeatureAttributeCount(), S57Feature::maximumAttributes);
}

} // namespace kelvox
