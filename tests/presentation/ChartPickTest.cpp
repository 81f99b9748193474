#include "presentation/ChartPick.h"

#include "base/File.h"
#include "presentation/AttributeWords.h"
#include "presentation/LibraryText.h"
#include "presentation/S52Lookup.h"
#include "s57/S57CellLoader.h"
#include "s57/S57CellWriter.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
using Names = std::vector<std::string>;

std::string entry(const std::string& acronym, char geometry, const std::string& table,
                  const std::string& instructions)
{
    return module({field("LUPT", "LU00001NIL" + acronym + geometry + "00005O" + table),
                   field("ATTC", ""), field("INST", instructions)});
}

/// Cells of a few objects around 59.5 N, 10.5 E and what a click among them finds.
class Picked : public testing::Test {
protected:
    Picked()
    {
        std::string colors = field("0001", "00001") + field("COLS", "CS00001NILDAY");
        for (const char* token : {"CHMGD", "CHBLK", "DEPCN", "DEPDW", "DEPVS"})
            colors += field("CCIE", std::string(token) + "0.28~0.31~20~used");
        model.loadPresentationLibrary(
            colors + "****00000\r\n" + symbol("BOYLAT13", "SPA;SW2;PU300,200;PD400,300")
                + entry("BOYLAT", 'P', "PAPER_CHART", "SY(BOYLAT13)")
                + entry("RESARE", 'A', "PLAIN_BOUNDARIES", "LS(DASH,1,CHMGD)")
                + entry("BUAARE", 'A', "PLAIN_BOUNDARIES", "AC(DEPVS)")
                + entry("CBLSUB", 'L', "LINES", "LS(SOLID,1,CHMGD)"),
            {});
    }
    static S57CellWriter::Line box(double half)
    {
        return {{10.5 - half, 59.5 - half},
                {10.5 + half, 59.5 - half},
                {10.5 + half, 59.5 + half},
                {10.5 - half, 59.5 + half}};
    }
    void add(const S57CellWriter& writer)
    {
        const auto loaded = writer.save(folder.path())
            ? S57CellLoader::load(folder.path() / (writer.identification().name + ".000"))
            : failure(Error::Code::CannotOpen, "not written");
        ASSERT_TRUE(loaded) << loaded.error().message;
        S52Lookup::setS52Lupts(*loaded->cell, model);
        cells.push_back(std::make_shared<CellGeometry>(loaded->cell));
    }
    /// Display points away from the middle, y down.
    std::vector<ChartPick::Hit> click(double right, double down, int scale = 20'000)
    {
        S52Render presentation(model);
        presentation.setColorTable(colorTable);
        const auto frame = ViewFrame::at(Position{10.5, 59.5}, scale, 30, 800, 600, 2, 66);
        return ChartPick::at(cells, *presentation.portrayal(), settings, frame,
                             {400 + 2 * right, 300 + 2 * down});
    }
    Names names(const std::vector<ChartPick::Hit>& hits) const
    {
        Names result;
        for (const auto& hit : hits)
            result.push_back(ChartPick::describe(hit, settings).acronym);
        return result;
    }

    TemporaryFolder folder;
    S52Model model;
    RenderSettings settings;
    std::vector<std::shared_ptr<const CellGeometry>> cells;
    int colorTable = 1;
};
} // namespace

TEST_F(Picked, MarksBeforeLinesBeforeTheSmallestArea)
{
    S57CellWriter writer({.name = "KV5TEST1"});
    writer.addArea("M_QUAL", box(0.03), {{"CATZOC", "3"}});
    writer.addArea("DEPARE", box(0.02), {{"DRVAL1", "12"}, {"DRVAL2", "20"}});
    writer.addArea("BUAARE", box(0.01));
    writer.addArea("RESARE", box(0.015));
    writer.addLine("CBLSUB", {{10.49, 59.5}, {10.51, 59.5}});
    writer.addPoint("BOYLAT", {10.5, 59.5}, {{"OBJNAM", "Red 2"}});
    add(writer);
    EXPECT_EQ(names(click(0, 0)),
              (Names{"BOYLAT", "CBLSUB", "BUAARE", "RESARE", "DEPARE", "M_QUAL"}))
        << "deep water and built-up areas are not filled, yet they are there";
    EXPECT_EQ(names(click(0, 60)), (Names{"BUAARE", "RESARE", "DEPARE", "M_QUAL"}));
    settings.showRestrictedAreas = false;
    EXPECT_EQ(names(click(0, 60)), (Names{"BUAARE", "DEPARE", "M_QUAL"}))
        << "what is not shown is not found";
    colorTable = 2;
    EXPECT_EQ(names(click(0, 0)).front(), "BOYLAT")
        << "this library has no dusk, the buoy is there";
}

TEST_F(Picked, TheCellOnTopHidesTheOneBelow)
{
    S57CellWriter fine({.name = "KV5TEST1", .edition = 3, .compiledScale = 10'000});
    fine.addArea("M_COVR", box(0.005), {{"CATCOV", "1"}});
    fine.addArea("DEPARE", box(0.005), {{"DRVAL1", "5"}});
    S57CellWriter coarse({.name = "KV3TEST1", .compiledScale = 90'000});
    coarse.addArea("M_COVR", box(0.05), {{"CATCOV", "1"}});
    coarse.addArea("DEPARE", box(0.05), {{"DRVAL1", "10"}});
    coarse.addPoint("BOYLAT", {10.5, 59.5});
    add(fine);
    add(coarse);
    const auto within = click(0, 0);
    EXPECT_EQ(names(within), (Names{"DEPARE", "M_COVR"}));
    EXPECT_EQ(ChartPick::describe(within.front(), settings).cell, "KV5TEST1");
    EXPECT_EQ(ChartPick::describe(within.front(), settings).edition, "3");
    const auto beside = click(300, 0, 10'000);
    ASSERT_EQ(names(beside), (Names{"DEPARE", "M_COVR"}));
    EXPECT_EQ(ChartPick::describe(beside.front(), settings).cell, "KV3TEST1");
}

TEST_F(Picked, ASoundingTellsItsOwnDepth)
{
    S57CellWriter writer({.name = "KV5TEST1"});
    writer.addSoundings({{{10.5, 59.5}, 12.5}, {{10.52, 59.5}, 3}});
    add(writer);
    const auto hits = click(2, 2);
    ASSERT_EQ(hits.size(), 1U);
    const auto description = ChartPick::describe(hits[0], settings);
    EXPECT_EQ(description.attributes.front().words, "12.5 m");
    EXPECT_NEAR(description.position->latitude, 59.5, 1e-4);
    EXPECT_TRUE(click(0, 100).empty());
}

TEST_F(Picked, TellsAllThatTheChartSays)
{
    S57CellWriter writer({.name = "KV5TEST1", .issueDate = "20260115", .compiledScale = 12'000});
    const auto buoy = writer.addPoint("BOYLAT", {10.5, 59.5},
                                      {{"OBJNAM", "Grønn"},
                                       {"SORDAT", "20040305"},
                                       {"COLOUR", "4,1"},
                                       {"INFORM", "Moved in winter"},
                                       {"TXTDSC", "KVNOTE01.TXT"}});
    writer.relate(buoy, writer.addPoint("TOPMAR", {10.5, 59.5}, {{"TOPSHP", "1"}}));
    ASSERT_TRUE(writeFileAtomically(folder.path() / "kvnote01.txt", "Ile d'Or\xE9\r\n"));
    add(writer);
    const auto hits = click(0, 0);
    ASSERT_EQ(names(hits), Names{"BOYLAT"}) << "this library draws no topmark";
    const auto buoyText = ChartPick::describe(hits[0], settings);
    EXPECT_EQ(buoyText.title, "Grønn");
    EXPECT_EQ(buoyText.className, "Buoy, Lateral");
    EXPECT_EQ(buoyText.information, Names{"Moved in winter"});
    EXPECT_EQ(buoyText.issueDate, "20260115");
    EXPECT_EQ(buoyText.compiledScale, 12'000U);
    const auto words = [&](const char* acronym) {
        for (const auto& attribute : buoyText.attributes)
            if (attribute.acronym == acronym)
                return attribute.words;
        return std::string("missing");
    };
    EXPECT_EQ(words("COLOUR"), "green, white");
    EXPECT_EQ(words("SORDAT"), "5 March 2004");
    EXPECT_TRUE(buoyText.attributes.back().ofRecord);
    ASSERT_EQ(buoyText.textFiles.size(), 1U);
    const auto text = ChartPick::read(buoyText.textFiles[0]);
    ASSERT_TRUE(text);
    EXPECT_EQ(*text, "Ile d'Oré\r\n") << "found whatever the case, and read as Latin-1";
    EXPECT_FALSE(ChartPick::read({"GONE.TXT", {}}));
}

TEST(AttributeWords, ReadAsOneSaysThem)
{
    struct Row {
        int code;
        const char* value;
        int depthUnit;
        const char* words;
    };
    for (const auto& row : std::initializer_list<Row>{
             {87, "5.5", 1, "5.5 m"},
             {87, "-1.5", 0, "-4.9 ft"},
             {87, "9.144", 2, "5 fm"},
             {95, "12", 0, "39.4 ft"},
             {117, "045", 1, "45°"},
             {142, "4.50", 1, "4.5 s"},
             {178, "14", 1, "14 NM"},
             {119, "--0401", 1, "1 April"},
             {86, "202612", 1, "December 2026"},
             {128, "---07", 1, "day 7 of the month"},
             {147, "20041305", 1, "20041305"}, // no thirteenth month
             {147, "2004", 1, "2004"},
             {87, "deep", 1, "deep"},
             {87, "nan", 1, "nan"},
             {116, "12", 1, "12"}, // a name may be a number
             {75, "3,99", 1, "red, 99"},
         })
        EXPECT_EQ(attributeWords(row.code, row.value, row.depthUnit, row.depthUnit == 1), row.words)
            << row.code << ' ' << row.value;
}

} // namespace kelvox
